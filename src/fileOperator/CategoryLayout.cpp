#include <dataModule/fileOperator/CategoryLayout.h>

#include <cstring>
#include <iterator>

#include <dataModule/fileOperator/TextLayout.h>

namespace td {

namespace {

/// Most names differ in the first character already, which saves the call.
bool sameName(const char* one, const char* other) {
    return *one == *other && std::strcmp(one, other) == 0;
}

constexpr const char* CATEGORY_NAMES[] = {
#define DATAMODULE_NAME(value, name, operatorClass) #name,
    DATAMODULE_CATEGORY_LIST(DATAMODULE_NAME)
#undef DATAMODULE_NAME
};
static_assert(std::size(CATEGORY_NAMES) == CATEGORY_COUNT, "the list of categories has no gap");

} // namespace

const char* categoryName(_DataCategory_t category) {
    const int value = category;
    return value >= 0 && value < CATEGORY_COUNT ? CATEGORY_NAMES[value] : "UNKNOWN_CATAGORY";
}

int CategoryLayout::recordCount() const {
    int count = 1;
    for (const Dimension& dimension : dimensions)
        count *= dimension.count;
    return count;
}

bool CategoryLayout::accepts(const int* indices) const {
    for (const Dimension& dimension : dimensions) {
        const int index = *indices++;
        if (index < 0 || index >= dimension.count)
            return false;
    }
    return true;
}

int CategoryLayout::recordIndex(const int* indices) const {
    int record = 0;
    for (const Dimension& dimension : dimensions)
        record = record * dimension.count + *indices++;
    return record;
}

void CategoryLayout::indicesOf(int record, int* indices) const {
    for (int d = dimensionCount() - 1; d >= 0; --d) {
        const int count = dimensions[static_cast<std::size_t>(d)].count;
        indices[d] = record % count;
        record /= count;
    }
}

const Field* CategoryLayout::fieldByArgument(const char* name) const {
    if (name == nullptr)
        return nullptr;
    for (const Field& field : fields) {
        if (sameName(field.argumentName(), name))
            return &field;
    }
    return nullptr;
}

const Field* CategoryLayout::fieldByKey(const char* key) const {
    if (key == nullptr)
        return nullptr;
    for (const Field& field : fields) {
        if (sameName(field.key, key))
            return &field;
    }
    return nullptr;
}

int CategoryLayout::headerLength() const {
    const int id = dimensions.empty() ? static_cast<int>(std::strlen(GLOBAL_SECTION)) : dimensionCount();
    return id + static_cast<int>(std::strlen("[]\n"));
}

int CategoryLayout::lineLength() const {
    return text::keyLineLength(keyLine);
}

AxisSweep::AxisSweep(const CategoryLayout& layout, const int* given, unsigned axes) : m_layout(layout), m_axes(axes) {
    for (int d = 0; d < layout.dimensionCount(); ++d)
        m_indices[d] = sweeps(d) ? 0 : given[d];
}

void AxisSweep::next() {
    for (int d = m_layout.dimensionCount() - 1; d >= 0; --d) {
        if (!sweeps(d))
            continue;
        if (++m_indices[d] < m_layout.dimensions[static_cast<std::size_t>(d)].count)
            return;
        m_indices[d] = 0;
    }
    m_done = true;
}

} // namespace td
