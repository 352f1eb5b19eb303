/// One tree per category, read from the settings files. A store puts the values and writes the whole file anew; nothing
/// in the library syncs it, so this peer does.
#include <fstream>
#include <map>
#include <stdexcept>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "Peer.h"

namespace bench {

namespace {

using boost::property_tree::ptree;

class PropertyTree : public Peer {
public:
    PropertyTree(const std::string& settings, const std::vector<Table>& tables)
        : m_settings(settings), m_tables(tables) {}

    void load() override { open(); }

    std::int64_t sum() override {
        std::int64_t sum = 0;
        for (const ptree& tree : m_trees) {
            for (const auto& [section, keys] : tree) {
                if (section == "Summary")
                    continue;
                for (const auto& [key, value] : keys)
                    sum += valueOf(value.data());
            }
        }
        return sum;
    }

    void open() override {
        m_trees.assign(m_tables.size(), ptree());
        for (std::size_t i = 0; i < m_tables.size(); ++i)
            boost::property_tree::read_ini(path(i), m_trees[i]);
    }

    int readField(int table, const int* indices, const td::Field& field) override {
        const auto i = static_cast<std::size_t>(table);
        const std::string name = sectionOf(*m_tables[i].layout, indices) + "." + field.key;
        return m_trees[i].get<int>(name);
    }

    void readRecord(int table, const int* indices, int* values) override {
        const auto i = static_cast<std::size_t>(table);
        const ptree& section = m_trees[i].get_child(sectionOf(*m_tables[i].layout, indices));
        for (const td::Field& field : m_tables[i].layout->fields)
            *values++ = section.get<int>(field.key);
    }

    bool readsInParallel() const override { return true; }

    void store(const std::vector<Change>& changes) override {
        std::map<std::size_t, bool> changed;
        for (const Change& change : changes) {
            const auto i = static_cast<std::size_t>(change.table);
            int indices[td::MAX_DIMENSIONS] = {};
            m_tables[i].layout->indicesOf(change.record, indices);
            ptree& section = m_trees[i].get_child(sectionOf(*m_tables[i].layout, indices));
            for (int f = 0; f < change.fieldCount; ++f) {
                const td::Field& field = m_tables[i].layout->fields[static_cast<std::size_t>(f)];
                section.put(field.key, change.values[field.position]);
            }
            changed[i] = true;
        }
        for (const auto& [i, ignored] : changed) {
            boost::property_tree::write_ini(path(i), m_trees[i]);
            const int descriptor = ::open(path(i).c_str(), O_WRONLY | O_CLOEXEC);
            if (descriptor < 0 || fsync(descriptor) != 0)
                throw std::runtime_error("PropertyTree: cannot sync");
            close(descriptor);
        }
    }

private:
    std::string path(std::size_t table) const { return m_settings + m_tables[table].layout->file; }

    const std::string m_settings;
    const std::vector<Table>& m_tables;
    std::vector<ptree> m_trees;
};

} // namespace

std::unique_ptr<Peer> makePropertyTree(const std::string& settings, const std::vector<Table>& tables) {
    return std::make_unique<PropertyTree>(settings, tables);
}

} // namespace bench
