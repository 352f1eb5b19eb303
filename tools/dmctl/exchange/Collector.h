/// What the readers of both formats share: what an index stands for, and the values of an export taken one by one.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "exchange/Exchange.h"
#include "Names.h"

namespace td::dmctl {

/// The index that a word stands for; a number stands for itself even where names are numbers. Throws UsageError.
int indexNamed(const Dimension& dimension, const std::string& word);
/// The index texts of a category, by dimension: the value's name, or its number where the name would not be read as it.
using IndexTexts = std::vector<std::vector<std::string>>;
IndexTexts indexTextsOf(const CategoryLayout& layout);

template <typename Action>
void forEachGiven(const ExchangeCategory& category, int record, Action action) {
    for (const Field& field : category.layout->fields) {
        const std::size_t cell = cellOf(*category.layout, record, field);
        if (category.given[cell])
            action(field, category.values[cell]);
    }
}

/// Takes the values of an export one by one. Its operations throw UsageError for what cannot be imported.
class Collector {
public:
    /// A category that is in the export, with the names that were looked up before.
    struct Known {
        std::size_t place = 0; ///< among the categories of the result
        const CategoryLayout* layout = nullptr;
        std::unordered_map<std::string, int> records;
        std::unordered_map<std::string, const Field*> fields;
    };

    explicit Collector(Exchange& result) : m_result(result) {}

    bool isFull() const { return m_result.cutShort; }
    void fault(const std::string& place, const std::string& text);
    Known& category(const std::string& word);
    int record(Known& known, const Words& indices);
    const Field& field(Known& known, const std::string& word);
    void put(const Known& known, int record, const Field& field, long long value);

private:
    Known* knownOf(const CategoryLayout& layout);

    Exchange& m_result;
    std::vector<std::unique_ptr<Known>> m_known;
    std::unordered_map<std::string, Known*> m_byWord;
};

} // namespace td::dmctl
