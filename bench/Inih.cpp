/// One INIReader per category, read from the settings files. The library only reads.
#include <stdexcept>

#include <INIReader.h>

#include "Peer.h"

namespace bench {

namespace {

class Inih : public Peer {
public:
    Inih(const std::string& settings, const std::vector<Table>& tables) : m_settings(settings), m_tables(tables) {}

    void load() override { open(); }

    std::int64_t sum() override {
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < m_tables.size(); ++i) {
            const td::CategoryLayout& layout = *m_tables[i].layout;
            for (int record = 0; record < layout.recordCount(); ++record) {
                int indices[td::MAX_DIMENSIONS] = {};
                layout.indicesOf(record, indices);
                for (const td::Field& field : layout.fields)
                    sum += readField(static_cast<int>(i), indices, field);
            }
        }
        return sum;
    }

    void open() override {
        m_readers.clear();
        for (const Table& table : m_tables) {
            m_readers.emplace_back(m_settings + table.layout->file);
            if (m_readers.back().ParseError() != 0)
                throw std::runtime_error(std::string("inih: cannot read ") + table.layout->file);
        }
    }

    int readField(int table, const int* indices, const td::Field& field) override {
        const auto i = static_cast<std::size_t>(table);
        // Not GetInteger, which takes the leading zeros for the sign of an octal number.
        return valueOf(m_readers[i].Get(sectionOf(*m_tables[i].layout, indices), field.key, ""));
    }

    void readRecord(int table, const int* indices, int* values) override {
        for (const td::Field& field : m_tables[static_cast<std::size_t>(table)].layout->fields)
            *values++ = readField(table, indices, field);
    }

    bool readsInParallel() const override { return true; }

    void store(const std::vector<Change>&) override { throw std::logic_error("inih only reads"); }
    bool stores() const override { return false; }

private:
    const std::string m_settings;
    const std::vector<Table>& m_tables;
    std::vector<INIReader> m_readers;
};

} // namespace

std::unique_ptr<Peer> makeInih(const std::string& settings, const std::vector<Table>& tables) {
    return std::make_unique<Inih>(settings, tables);
}

} // namespace bench
