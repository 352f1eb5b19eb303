/// The values that belong to one of several processes which store at the same time: the others leave them alone, so it
/// knows what must be in the files.
#pragma once

#include <string>
#include <tuple>
#include <vector>

#include <dataModule/DataTypes.h>

#include "fileOperator/CategoryLayout.h"
#include "fileOperator/OperatorFactory.h"

namespace td::test {

/// One value of a category: the numbers go through all fields of all records.
struct OwnValue {
    _DataCategory_t category;
    int index;

    const CategoryLayout& layout() const { return *layoutOf(category); }
    std::vector<int> dims() const {
        int indices[MAX_DIMENSIONS] = {};
        layout().indicesOf(index / layout().fieldCount(), indices);
        return {indices, indices + layout().dimensionCount()};
    }
    const char* field() const {
        return layout().fields[static_cast<std::size_t>(index % layout().fieldCount())].argumentName();
    }
    std::string text() const { return std::string(layout().file) + " " + std::to_string(index); }
    bool operator<(const OwnValue& other) const {
        return std::tie(category, index) < std::tie(other.category, other.index);
    }
};

/// What processes store that end while they do; the first one's first value they wait for.
constexpr _DataCategory_t LEAVING_CATEGORIES[] = {SOUND_MODE, PICTURE_WB_2_POINT, SOUND_DELAY, PICTURE_YRANGE};

constexpr int PROCESSES = 3;

/// Some values of the process with that number, in its scope. A section belongs to one process: what is stored of it is
/// written whole.
inline std::vector<OwnValue> ownValues(_DS_Scope_t scope, int number) {
    const std::vector<_DataCategory_t> shared{PICTURE_MODE,   PICTURE_MODE_EX,    PICTURE_COLOR_TUNER,
                                              PICTURE_YRANGE, SOUND_EQ,           SOUND_DELAY,
                                              SOUND_PEQ,      PICTURE_WB_2_POINT, SOUND_MODE};
    const std::vector<_DataCategory_t> geometry{PICTURE_FACTORY_OVERSCAN, PICTURE_FACTORY_ASPECT,
                                                PICTURE_FACTORY_SCALING, PICTURE_FACTORY_SCALING_PIP};
    std::vector<OwnValue> values;
    const auto add = [&](_DataCategory_t category) {
        const CategoryLayout& layout = *layoutOf(category);
        for (int record = number; record < layout.recordCount() && record < 4 * PROCESSES; record += PROCESSES)
            values.push_back({category, record * layout.fieldCount()});
    };
    if (scope != DS_SCOPE_DVBMAIN) {
        for (const _DataCategory_t category : shared)
            add(category);
    }
    if (scope != DS_SCOPE_BIZ) {
        for (const _DataCategory_t category : geometry)
            add(category);
    }
    return values;
}

} // namespace td::test
