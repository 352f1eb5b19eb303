#include "fileOperator/table/RecordTable.h"

#include <algorithm>

namespace td {

Rows::Rows(int records, int fields)
    : m_fields(static_cast<std::size_t>(fields)), m_values(static_cast<std::size_t>(records) * m_fields),
      m_held(static_cast<std::size_t>(records), true) {}

bool Rows::holdsAll() const {
    return std::find(m_held.begin(), m_held.end(), false) == m_held.end();
}

void Rows::put(int record, const int* values) {
    std::copy_n(values, m_fields, at(record));
    m_held[static_cast<std::size_t>(record)] = true;
}

void Rows::put(int record, const int* values, FieldSet fields) {
    int* const row = at(record);
    for (int position = 0; position < static_cast<int>(m_fields); ++position) {
        if ((fields & fieldBit(position)) != 0)
            row[position] = values[position];
    }
    if (fields == ALL_FIELDS)
        m_held[static_cast<std::size_t>(record)] = true;
}

void Rows::forget(int record) {
    std::fill_n(at(record), m_fields, 0);
    m_held[static_cast<std::size_t>(record)] = false;
}

} // namespace td
