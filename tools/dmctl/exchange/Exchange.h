/// Settings outside their files: what export writes and import reads, as JSON or as CSV. Pure functions over buffers,
/// which take any bytes.
///
/// CSV (RFC 4180): the header line category,index1,...,index5,field,value, then one row per field of a record. Indices
/// beyond the category's dimensions are empty.
/// JSON: {"format", "formatVersion", "copy", "categories": [{"category", "version", "records": [{"record": [index...],
/// "fields": {name: value...}}...]}...]}. Only "format", "formatVersion", "category" and "fields" have to be there, and
/// "record" where the category has dimensions.
/// An index is a value's name or number. Any selection of records and fields, in any order, is an export.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "fileOperator/CategoryLayout.h"

namespace td::dmctl {

/// Values of one category.
struct ExchangeCategory {
    const CategoryLayout* layout = nullptr;
    std::vector<int> values; ///< row-major by record and position, the whole table
    std::vector<bool> given; ///< whether the export has the value
    std::size_t count = 0;   ///< values given

    explicit ExchangeCategory(const CategoryLayout& category);
};

/// Something that an export must not hold, and where: "line 3" of a CSV, the JSON pointer in a JSON.
struct ExchangeFault {
    std::string place;
    std::string text;
};

struct Exchange {
    /// Reading ends after so many faults.
    static constexpr std::size_t MAX_FAULTS = 1000;
    /// Larger exports are refused; one of all categories has less than half of it.
    static constexpr std::size_t MAX_SIZE = 64U << 20U;

    std::vector<ExchangeCategory> categories; ///< in the order of their first mention
    std::vector<ExchangeFault> faults;        ///< in the order of their places; none: all of it may be imported
    bool cutShort = false;                    ///< there may be more faults

    std::size_t count() const;
};

enum class ExchangeFormat { AsJson, AsCsv };

/// The text of an export of the values given. `copy` says where they come from.
std::string exchangeText(ExchangeFormat format, const std::string& copy,
                         const std::vector<ExchangeCategory>& categories);
/// Reads an export of either format; one that begins with '{' is JSON.
Exchange parseExchange(std::string_view bytes);

} // namespace td::dmctl
