/// The values of a category as one copy of its file holds them.
#pragma once

#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "Selection.h"
#include "Session.h"

namespace td::dmctl {

class Table {
public:
    /// Reads a copy. Throws Failure when it is missing or has faults.
    Table(const Session& session, const CategoryLayout& layout, Copy copy);

    /// The integers of a record, in their places; fieldCount() of them.
    int* at(const Record& record) { return m_values.data() + offset(record); }
    const int* at(const Record& record) const { return m_values.data() + offset(record); }
    int value(const Record& record, const Field& field) const { return at(record)[field.position]; }

private:
    std::size_t offset(const Record& record) const {
        return static_cast<std::size_t>(m_layout.recordIndex(record.data())) * m_layout.fields.size();
    }

    const CategoryLayout& m_layout;
    std::vector<int> m_values;
};

} // namespace td::dmctl
