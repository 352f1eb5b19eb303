/// One key file per category, read from the settings files. A store sets the values and saves the whole file, replaced
/// and synced.
#include <cstring>
#include <map>
#include <stdexcept>

#include <glib.h>

#include "Peer.h"

namespace bench {

namespace {

void check(gboolean done, GError* error) {
    if (done == 0)
        throw std::runtime_error(std::string("GKeyFile: ") + (error != nullptr ? error->message : "failed"));
}

using KeyFile = std::unique_ptr<::GKeyFile, void (*)(::GKeyFile*)>;

class GKeyFilePeer : public Peer {
public:
    GKeyFilePeer(const std::string& settings, const std::vector<Table>& tables)
        : m_settings(settings), m_tables(tables) {}

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
        m_files.clear();
        for (const Table& table : m_tables) {
            KeyFile file(g_key_file_new(), &g_key_file_unref);
            GError* error = nullptr;
            const gboolean loaded = g_key_file_load_from_file(file.get(), (m_settings + table.layout->file).c_str(),
                                                              G_KEY_FILE_NONE, &error);
            check(loaded, error);
            m_files.push_back(std::move(file));
        }
    }

    int readField(int table, const int* indices, const td::Field& field) override {
        const td::CategoryLayout& layout = *m_tables[static_cast<std::size_t>(table)].layout;
        ::GKeyFile* file = m_files[static_cast<std::size_t>(table)].get();
        const std::string section = sectionOf(layout, indices);
        GError* error = nullptr;
        // Hexadecimal values are no integers of a key file.
        if (layout.keyLine == td::KeyLineForm::Hexadecimal5) {
            char* text = g_key_file_get_string(file, section.c_str(), field.key, &error);
            check(text != nullptr ? 1 : 0, error);
            const int value = valueOf(text);
            g_free(text);
            return value;
        }
        const int value = g_key_file_get_integer(file, section.c_str(), field.key, &error);
        check(error == nullptr ? 1 : 0, error);
        return value;
    }

    void readRecord(int table, const int* indices, int* values) override {
        for (const td::Field& field : m_tables[static_cast<std::size_t>(table)].layout->fields)
            *values++ = readField(table, indices, field);
    }

    void store(const std::vector<Change>& changes) override {
        std::map<int, bool> changed;
        for (const Change& change : changes) {
            const td::CategoryLayout& layout = *m_tables[static_cast<std::size_t>(change.table)].layout;
            int indices[td::MAX_DIMENSIONS] = {};
            layout.indicesOf(change.record, indices);
            const std::string section = sectionOf(layout, indices);
            for (int f = 0; f < change.fieldCount; ++f) {
                const td::Field& field = layout.fields[static_cast<std::size_t>(f)];
                g_key_file_set_integer(m_files[static_cast<std::size_t>(change.table)].get(), section.c_str(),
                                       field.key, change.values[field.position]);
            }
            changed[change.table] = true;
        }
        for (const auto& [table, ignored] : changed)
            save(static_cast<std::size_t>(table));
    }

private:
    void save(std::size_t table) {
        gsize size = 0;
        GError* error = nullptr;
        char* text = g_key_file_to_data(m_files[table].get(), &size, &error);
        check(text != nullptr ? 1 : 0, error);
        const auto flags =
            static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
        const gboolean saved = g_file_set_contents_full((m_settings + m_tables[table].layout->file).c_str(), text,
                                                        static_cast<gssize>(size), flags, 0644, &error);
        g_free(text);
        check(saved, error);
    }

    const std::string m_settings;
    const std::vector<Table>& m_tables;
    std::vector<KeyFile> m_files;
};

} // namespace

std::unique_ptr<Peer> makeGKeyFile(const std::string& settings, const std::vector<Table>& tables) {
    return std::make_unique<GKeyFilePeer>(settings, tables);
}

} // namespace bench
