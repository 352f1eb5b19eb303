#include "fileOperator/FieldNames.h"

#include <cstring>

namespace td {

FieldNames::FieldNames(const CategoryLayout& layout) {
    std::size_t size = 1;
    while (size < 2 * layout.fields.size() + 1)
        size *= 2;
    m_slots.resize(size);
    for (const Field& field : layout.fields) {
        // Of fields with the same name the first is found.
        if (find(field.argumentName()) != nullptr)
            continue;
        std::size_t slot = startOf(field.argumentName());
        while (m_slots[slot] != nullptr)
            slot = next(slot);
        m_slots[slot] = &field;
    }
}

const Field* FieldNames::find(const char* name) const {
    if (name == nullptr)
        return nullptr;
    std::size_t slot = startOf(name);
    while (m_slots[slot] != nullptr && std::strcmp(m_slots[slot]->argumentName(), name) != 0)
        slot = next(slot);
    return m_slots[slot];
}

std::size_t FieldNames::startOf(const char* name) const {
    const auto at = [name](std::size_t i) { return std::size_t{static_cast<unsigned char>(name[i])}; };
    const std::size_t length = std::strlen(name);
    const std::size_t last = length > 0 ? length - 1 : 0;
    return (length + at(0) + 5 * at(length / 2) + 11 * at(last)) & (m_slots.size() - 1);
}

} // namespace td
