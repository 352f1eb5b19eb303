#include "fileOperator/CategoryLayout.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>

#include "fileOperator/text/TextLayout.h"

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

/// Records of the largest table that is taken for a sensible one.
constexpr std::int64_t MOST_RECORDS = 1000000;

bool isWord(const char* text, std::size_t longest) {
    return text != nullptr && *text != '\0' && std::strlen(text) <= longest &&
           std::strpbrk(text, " \t\r\n[]#=/") == nullptr;
}

/// What is wrong with the dimensions, or empty.
std::string wrongDimensions(const std::vector<Dimension>& dimensions) {
    if (dimensions.size() > static_cast<std::size_t>(MAX_DIMENSIONS))
        return "has too many dimensions";
    std::int64_t records = 1;
    for (const Dimension& dimension : dimensions) {
        const int most = dimension.digits == DigitForm::Hexadecimal ? 16 : 36;
        if (dimension.name == nullptr || dimension.heading == nullptr)
            return "has a dimension without a name or heading";
        if (dimension.count < 1 || dimension.count > most)
            return std::string("has a dimension [") + dimension.name + "] that one character cannot count";
        records *= dimension.count;
    }
    return records > MOST_RECORDS ? "has too many records" : "";
}

std::string wrongFields(const CategoryLayout& layout) {
    if (layout.fields.empty() || layout.fieldCount() > MAX_FIELDS)
        return "has no fields, or too many";
    std::set<std::string> keys;
    std::set<int> positions;
    for (const Field& field : layout.fields) {
        if (!isWord(field.key, static_cast<std::size_t>(text::keyWidth(layout.keyLine))))
            return std::string("has a key [") + (field.key != nullptr ? field.key : "") +
                   "] that does not fit its column";
        if (field.position < 0 || field.position >= layout.fieldCount() || !positions.insert(field.position).second ||
            !keys.insert(field.key).second)
            return std::string("has the field [") + field.key + "] in the place, or by the name, of another";
        if (!text::fitsColumns(layout.keyLine, field.defaultValue))
            return std::string("has a default of [") + field.key + "] that does not fit its columns";
    }
    return layout.sectionLength() >= text::SECTION_BUFFER ? "has sections that are too long" : "";
}

} // namespace

const char* categoryName(_DataCategory_t category) {
    const int value = category;
    return value >= 0 && value < CATEGORY_COUNT ? CATEGORY_NAMES[value] : "UNKNOWN_CATAGORY";
}

bool CategoryLayout::checked() const {
    std::string wrong = wrongDimensions(dimensions);
    if (wrong.empty())
        wrong = wrongFields(*this);
    const unsigned axes = applyToAllSources.axes | applyToAllModes.axes | restoreForAllSources.axes;
    if (wrong.empty() && axes >> static_cast<unsigned>(dimensionCount()) != 0)
        wrong = "sweeps over a dimension that it has not";
    if (wrong.empty() &&
        (!isWord(file, std::size_t{255}) || !isWord(version, text::VERSION_WIDTH - 1) || purpose == nullptr))
        wrong = "has no usable file name, version or purpose";
    if (!wrong.empty())
        throw std::logic_error(std::string("the layout of ") + categoryName(category) + " " + wrong);
    return true;
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
