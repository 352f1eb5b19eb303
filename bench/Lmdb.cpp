/// One environment and one database. A reading thread keeps its transaction, reset after each read and renewed before
/// the next; commits are synced, as they are by default.
#include <stdexcept>

#include <lmdb.h>

#include "KeyValue.h"

namespace bench {

namespace {

constexpr std::size_t MAP_SIZE = 64U << 20U;

void check(int result) {
    if (result != MDB_SUCCESS)
        throw std::runtime_error(std::string("LMDB: ") + mdb_strerror(result));
}

MDB_val toValue(const void* data, std::size_t size) {
    return {size, const_cast<void*>(data)};
}

auto putting(MDB_txn* transaction, MDB_dbi database) {
    return [=](const Key& key, const int* data, std::size_t size) {
        MDB_val name = toValue(key.bytes, key.size);
        MDB_val value = toValue(data, size);
        check(mdb_put(transaction, database, &name, &value, 0));
    };
}

class Environment {
public:
    explicit Environment(const std::string& directory) {
        check(mdb_env_create(&m_environment));
        check(mdb_env_set_mapsize(m_environment, MAP_SIZE));
        check(mdb_env_open(m_environment, (directory + "/settings.lmdb").c_str(), MDB_NOSUBDIR, 0644));
        MDB_txn* transaction = begin(0);
        check(mdb_dbi_open(transaction, nullptr, 0, &m_database));
        check(mdb_txn_commit(transaction));
    }
    ~Environment() { mdb_env_close(m_environment); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    MDB_txn* begin(unsigned int flags) {
        MDB_txn* transaction = nullptr;
        check(mdb_txn_begin(m_environment, nullptr, flags, &transaction));
        return transaction;
    }
    MDB_dbi database() const { return m_database; }

private:
    MDB_env* m_environment = nullptr;
    MDB_dbi m_database = 0;
};

/// A reading transaction, kept by its thread; the main thread's outlives the peer, so it keeps the environment open.
class Reader {
public:
    explicit Reader(const std::shared_ptr<Environment>& environment)
        : m_environment(environment), m_transaction(environment->begin(MDB_RDONLY)) {
        mdb_txn_reset(m_transaction);
    }
    ~Reader() { mdb_txn_abort(m_transaction); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    MDB_txn* transaction() const { return m_transaction; }

private:
    const std::shared_ptr<Environment> m_environment;
    MDB_txn* m_transaction;
};

class Lmdb : public Peer {
public:
    Lmdb(const std::string& directory, const std::vector<Table>& tables) : m_directory(directory), m_tables(tables) {}

    void create() override {
        Environment environment(m_directory);
        MDB_txn* transaction = environment.begin(0);
        putAll(m_tables, putting(transaction, environment.database()));
        check(mdb_txn_commit(transaction));
    }

    void load() override {
        open();
        MDB_txn* transaction = m_environment->begin(MDB_RDONLY);
        MDB_cursor* cursor = nullptr;
        check(mdb_cursor_open(transaction, m_environment->database(), &cursor));
        m_sum = 0;
        MDB_val key;
        MDB_val value;
        while (mdb_cursor_get(cursor, &key, &value, MDB_NEXT) == MDB_SUCCESS)
            m_sum += sumOfValue(value.mv_data, value.mv_size);
        mdb_cursor_close(cursor);
        mdb_txn_abort(transaction);
    }
    std::int64_t sum() override { return m_sum; }

    void open() override { m_environment = std::make_shared<Environment>(m_directory); }

    int readField(int table, const int* indices, const td::Field& field) override {
        return withValue(table, indices, [&](const MDB_val& value) { return fieldOf(value.mv_data, field); });
    }

    void readRecord(int table, const int* indices, int* values) override {
        withValue(table, indices, [&](const MDB_val& value) {
            std::memcpy(values, value.mv_data, value.mv_size);
            return 0;
        });
    }

    bool readsInParallel() const override { return true; }

    void store(const std::vector<Change>& changes) override {
        MDB_txn* transaction = m_environment->begin(0);
        putEach(m_tables, changes, putting(transaction, m_environment->database()));
        check(mdb_txn_commit(transaction));
    }

private:
    template <class Use>
    int withValue(int table, const int* indices, Use use) {
        thread_local const Reader reader(m_environment);
        const Key key(table, *m_tables[static_cast<std::size_t>(table)].layout, indices);
        MDB_val name = toValue(key.bytes, key.size);
        MDB_val value;
        check(mdb_txn_renew(reader.transaction()));
        check(mdb_get(reader.transaction(), m_environment->database(), &name, &value));
        const int result = use(value);
        mdb_txn_reset(reader.transaction());
        return result;
    }

    const std::string m_directory;
    const std::vector<Table>& m_tables;
    std::int64_t m_sum = 0;
    std::shared_ptr<Environment> m_environment;
};

} // namespace

std::unique_ptr<Peer> makeLmdb(const std::string& directory, const std::vector<Table>& tables) {
    return std::make_unique<Lmdb>(directory, tables);
}

} // namespace bench
