/// One table per category, its dimensions the primary key; prepared statements; write-ahead log, synced at each commit;
/// one connection per thread.
#include <map>
#include <stdexcept>

#include <sqlite3.h>

#include "Peer.h"

namespace bench {

namespace {

void check(int result, sqlite3* connection) {
    if (result != SQLITE_OK && result != SQLITE_DONE && result != SQLITE_ROW)
        throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(connection));
}

std::string quoted(const char* name) {
    return std::string(1, '"').append(name).append(1, '"');
}

std::string tableName(const td::CategoryLayout& layout) {
    return quoted(layout.file);
}

std::string dimensionName(int d) {
    return std::string("d").append(std::to_string(d));
}

/// The quoted names of the first `count` fields, each with `suffix`, separated by commas.
std::string fieldList(const td::CategoryLayout& layout, int count, const char* suffix = "") {
    std::string list;
    for (const td::Field& field : layout.fields) {
        if (count-- > 0)
            list.append(list.empty() ? "" : ",").append(quoted(field.key)).append(suffix);
    }
    return list;
}

std::string allFields(const td::CategoryLayout& layout, const char* suffix = "") {
    return fieldList(layout, layout.fieldCount(), suffix);
}

/// "prefix", the dimensions, each with `suffix`, separated by `separator`; empty without dimensions.
std::string dimensionList(const td::CategoryLayout& layout, const char* prefix, const char* suffix,
                          const char* separator) {
    std::string list;
    for (int d = 0; d < layout.dimensionCount(); ++d)
        list.append(d == 0 ? prefix : separator).append(dimensionName(d)).append(suffix);
    return list;
}

std::string selectText(const td::CategoryLayout& layout, const std::string& fields) {
    return std::string("SELECT ").append(fields).append(" FROM ").append(tableName(layout));
}

std::string whereText(const td::CategoryLayout& layout) {
    return dimensionList(layout, " WHERE ", "=?", " AND ");
}

class Statement {
public:
    Statement(sqlite3* connection, const std::string& text) : m_connection(connection) {
        check(sqlite3_prepare_v3(connection, text.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr),
              connection);
    }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void bind(int first, const int* values, int count) {
        for (int i = 0; i < count; ++i)
            sqlite3_bind_int(m_statement, first + i, values[i]);
    }
    bool step() {
        const int result = sqlite3_step(m_statement);
        check(result, m_connection);
        return result == SQLITE_ROW;
    }
    int column(int i) { return sqlite3_column_int(m_statement, i); }
    void reset() { sqlite3_reset(m_statement); }
    void run() {
        step();
        reset();
    }

private:
    sqlite3* m_connection;
    sqlite3_stmt* m_statement = nullptr;
};

class Connection {
public:
    Connection(const std::string& path, const std::vector<Table>& tables) : m_tables(tables) {
        check(sqlite3_open_v2(path.c_str(), &m_connection,
                              SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr),
              m_connection);
        execute("PRAGMA journal_mode=WAL");
        execute("PRAGMA synchronous=FULL");
    }
    ~Connection() {
        m_statements.clear();
        sqlite3_close(m_connection);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void execute(const std::string& text) {
        check(sqlite3_exec(m_connection, text.c_str(), nullptr, nullptr, nullptr), m_connection);
    }
    /// Prepared on first use.
    Statement& prepared(const std::string& text) {
        return m_statements.try_emplace(text, m_connection, text).first->second;
    }
    /// Of the first `count` fields.
    Statement& update(int table, int count) {
        Statement*& found = m_updates[{table, count}];
        if (found == nullptr)
            found = &prepared(std::string("UPDATE ")
                                  .append(tableName(layout(table)))
                                  .append(" SET ")
                                  .append(fieldList(layout(table), count, "=?"))
                                  .append(whereText(layout(table))));
        return *found;
    }
    Statement& selectRecord(int table) {
        Statement*& found = m_records[table];
        if (found == nullptr)
            found = &prepared(selectText(layout(table), allFields(layout(table))) + whereText(layout(table)));
        return *found;
    }
    Statement& selectField(int table, const td::Field& field) {
        Statement*& found = m_fields[&field];
        if (found == nullptr)
            found = &prepared(selectText(layout(table), quoted(field.key)) + whereText(layout(table)));
        return *found;
    }
    const td::CategoryLayout& layout(int table) const { return *m_tables[static_cast<std::size_t>(table)].layout; }

private:
    const std::vector<Table>& m_tables;
    sqlite3* m_connection = nullptr;
    std::map<std::string, Statement> m_statements;
    std::map<std::pair<int, int>, Statement*> m_updates;
    std::map<int, Statement*> m_records;
    std::map<const td::Field*, Statement*> m_fields;
};

class Sqlite : public Peer {
public:
    Sqlite(const std::string& directory, const std::vector<Table>& tables)
        : m_path(directory + "/settings.sqlite"), m_tables(tables) {}

    void create() override {
        Connection connection(m_path, m_tables);
        connection.execute("BEGIN");
        for (const Table& table : m_tables)
            createTable(connection, table);
        connection.execute("COMMIT");
    }

    void load() override {
        open();
        m_sum = 0;
        for (std::size_t i = 0; i < m_tables.size(); ++i) {
            const td::CategoryLayout& layout = *m_tables[i].layout;
            Statement& rows = m_connection->prepared(selectText(layout, allFields(layout)));
            while (rows.step()) {
                for (int f = 0; f < layout.fieldCount(); ++f)
                    m_sum += rows.column(f);
            }
            rows.reset();
        }
    }
    std::int64_t sum() override { return m_sum; }

    void open() override { m_connection = std::make_unique<Connection>(m_path, m_tables); }

    int readField(int table, const int* indices, const td::Field& field) override {
        Connection& connection = ofThread();
        Statement& select = connection.selectField(table, field);
        select.bind(1, indices, connection.layout(table).dimensionCount());
        select.step();
        const int value = select.column(0);
        select.reset();
        return value;
    }

    void readRecord(int table, const int* indices, int* values) override {
        Connection& connection = ofThread();
        Statement& select = connection.selectRecord(table);
        select.bind(1, indices, connection.layout(table).dimensionCount());
        select.step();
        for (int f = 0; f < connection.layout(table).fieldCount(); ++f)
            values[f] = select.column(f);
        select.reset();
    }

    bool readsInParallel() const override { return true; }

    void store(const std::vector<Change>& changes) override {
        m_connection->prepared("BEGIN IMMEDIATE").run();
        for (const Change& change : changes) {
            const td::CategoryLayout& layout = m_connection->layout(change.table);
            int indices[td::MAX_DIMENSIONS] = {};
            layout.indicesOf(change.record, indices);
            Statement& update = m_connection->update(change.table, change.fieldCount);
            for (int f = 0; f < change.fieldCount; ++f)
                update.bind(f + 1, change.values + layout.fields[static_cast<std::size_t>(f)].position, 1);
            update.bind(change.fieldCount + 1, indices, layout.dimensionCount());
            update.run();
        }
        m_connection->prepared("COMMIT").run();
    }

private:
    Connection& ofThread() {
        thread_local std::unique_ptr<Connection> connection;
        thread_local const Sqlite* owner = nullptr;
        if (owner != this) {
            connection = std::make_unique<Connection>(m_path, m_tables);
            owner = this;
        }
        return *connection;
    }

    static void createTable(Connection& connection, const Table& table) {
        const td::CategoryLayout& layout = *table.layout;
        const std::string key = dimensionList(layout, "", "", ",");
        const std::string ending = key.empty() ? ")" : ",PRIMARY KEY(" + key + ")) WITHOUT ROWID";
        connection.execute(std::string("CREATE TABLE ")
                               .append(tableName(layout))
                               .append(dimensionList(layout, "(", " INTEGER", ","))
                               .append(key.empty() ? "(" : ",")
                               .append(allFields(layout, " INTEGER"))
                               .append(ending));
        std::string marks;
        for (int i = 0; i < layout.dimensionCount() + layout.fieldCount(); ++i)
            marks.append(i == 0 ? "?" : ",?");
        Statement& insert = connection.prepared(
            std::string("INSERT INTO ").append(tableName(layout)).append(" VALUES(").append(marks).append(")"));
        for (int record = 0; record < layout.recordCount(); ++record) {
            int indices[td::MAX_DIMENSIONS] = {};
            layout.indicesOf(record, indices);
            insert.bind(1, indices, layout.dimensionCount());
            int parameter = layout.dimensionCount();
            for (const td::Field& field : layout.fields)
                insert.bind(++parameter, table.record(record) + field.position, 1);
            insert.run();
        }
    }

    const std::string m_path;
    const std::vector<Table>& m_tables;
    std::int64_t m_sum = 0;
    std::unique_ptr<Connection> m_connection; ///< for what is stored; readers have one for each thread
};

} // namespace

std::unique_ptr<Peer> makeSqlite(const std::string& directory, const std::vector<Table>& tables) {
    return std::make_unique<Sqlite>(directory, tables);
}

} // namespace bench
