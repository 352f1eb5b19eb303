/// One database, shared by all threads; writes are synced, several at once as one batch.
#include <stdexcept>

#include <leveldb/db.h>
#include <leveldb/write_batch.h>

#include "KeyValue.h"

namespace bench {

namespace {

void check(const leveldb::Status& status) {
    if (!status.ok())
        throw std::runtime_error("LevelDB: " + status.ToString());
}

leveldb::Slice toSlice(const Key& key) {
    return {reinterpret_cast<const char*>(key.bytes), key.size};
}

auto putting(leveldb::WriteBatch& batch) {
    return [&batch](const Key& key, const int* data, std::size_t size) {
        batch.Put(toSlice(key), {reinterpret_cast<const char*>(data), size});
    };
}

class LevelDb : public Peer {
public:
    LevelDb(const std::string& directory, const std::vector<Table>& tables)
        : m_path(directory + "/settings.leveldb"), m_tables(tables) {}

    void create() override {
        const auto database = opened();
        leveldb::WriteBatch batch;
        putAll(m_tables, putting(batch));
        check(database->Write(synced(), &batch));
    }

    void load() override {
        open();
        const std::unique_ptr<leveldb::Iterator> at(m_database->NewIterator(leveldb::ReadOptions()));
        m_sum = 0;
        for (at->SeekToFirst(); at->Valid(); at->Next())
            m_sum += sumOfValue(at->value().data(), at->value().size());
        check(at->status());
    }
    std::int64_t sum() override { return m_sum; }

    void open() override { m_database = opened(); }

    int readField(int table, const int* indices, const td::Field& field) override {
        return fieldOf(get(table, indices).data(), field);
    }

    void readRecord(int table, const int* indices, int* values) override {
        const std::string& value = get(table, indices);
        std::memcpy(values, value.data(), value.size());
    }

    bool readsInParallel() const override { return true; }

    void store(const std::vector<Change>& changes) override {
        leveldb::WriteBatch batch;
        putEach(m_tables, changes, putting(batch));
        check(m_database->Write(synced(), &batch));
    }

private:
    std::unique_ptr<leveldb::DB> opened() const {
        leveldb::Options options;
        options.create_if_missing = true;
        leveldb::DB* database = nullptr;
        check(leveldb::DB::Open(options, m_path, &database));
        return std::unique_ptr<leveldb::DB>(database);
    }

    static leveldb::WriteOptions synced() {
        leveldb::WriteOptions options;
        options.sync = true;
        return options;
    }

    const std::string& get(int table, const int* indices) {
        thread_local std::string value;
        const Key key(table, *m_tables[static_cast<std::size_t>(table)].layout, indices);
        check(m_database->Get(leveldb::ReadOptions(), toSlice(key), &value));
        return value;
    }

    const std::string m_path;
    const std::vector<Table>& m_tables;
    std::int64_t m_sum = 0;
    std::unique_ptr<leveldb::DB> m_database;
};

} // namespace

std::unique_ptr<Peer> makeLevelDb(const std::string& directory, const std::vector<Table>& tables) {
    return std::make_unique<LevelDb>(directory, tables);
}

} // namespace bench
