/// Records in a store of keys and values: the key is the category and the indices, the value the row of integers in
/// the order of the record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "Peer.h"

namespace bench {

struct Key {
    unsigned char bytes[1 + td::MAX_DIMENSIONS] = {};
    std::size_t size = 0;

    Key(int table, const td::CategoryLayout& layout, const int* indices) {
        bytes[size++] = static_cast<unsigned char>(table);
        for (int d = 0; d < layout.dimensionCount(); ++d)
            bytes[size++] = static_cast<unsigned char>(indices[d]);
    }
};

inline std::size_t valueSize(const td::CategoryLayout& layout) {
    return static_cast<std::size_t>(layout.fieldCount()) * sizeof(int);
}

inline int fieldOf(const void* value, const td::Field& field) {
    int result = 0;
    std::memcpy(&result, static_cast<const char*>(value) + sizeof(int) * static_cast<std::size_t>(field.position),
                sizeof result);
    return result;
}

inline std::int64_t sumOfValue(const void* value, std::size_t size) {
    std::int64_t sum = 0;
    for (std::size_t at = 0; at < size; at += sizeof(int)) {
        int number = 0;
        std::memcpy(&number, static_cast<const char*>(value) + at, sizeof number);
        sum += number;
    }
    return sum;
}

/// Calls put(key, value, size) for every record of the tables.
template <class Put>
void putAll(const std::vector<Table>& tables, Put put) {
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const td::CategoryLayout& layout = *tables[i].layout;
        for (int record = 0; record < layout.recordCount(); ++record) {
            int indices[td::MAX_DIMENSIONS] = {};
            layout.indicesOf(record, indices);
            put(Key(static_cast<int>(i), layout, indices), tables[i].record(record), valueSize(layout));
        }
    }
}

/// The same for every change.
template <class Put>
void putEach(const std::vector<Table>& tables, const std::vector<Change>& changes, Put put) {
    for (const Change& change : changes) {
        const td::CategoryLayout& layout = *tables[static_cast<std::size_t>(change.table)].layout;
        int indices[td::MAX_DIMENSIONS] = {};
        layout.indicesOf(change.record, indices);
        put(Key(change.table, layout, indices), change.values, valueSize(layout));
    }
}

} // namespace bench
