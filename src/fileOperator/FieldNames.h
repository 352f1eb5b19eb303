/// Finds the fields of a layout by the names that requests use, without a walk over all of them.
#pragma once

#include <cstddef>
#include <vector>

#include "fileOperator/CategoryLayout.h"

namespace td {

class FieldNames {
public:
    /// The layout must outlive it.
    explicit FieldNames(const CategoryLayout& layout);
    /// The field that requests name so, or null (also for null).
    const Field* find(const char* name) const;

private:
    /// Where the search for a name begins. Two names rarely begin at the same place.
    std::size_t startOf(const char* name) const;
    std::size_t next(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    /// A hash table, a power of two in size and never more than half full; searched on from a name's start to the next
    /// slot that is empty.
    std::vector<const Field*> m_slots;
};

} // namespace td
