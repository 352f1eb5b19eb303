#include <dataModule/fileOperator/FactoryWhiteBalance.h>

#include <cstring>

#include <dataModule/common/SystemPaths.h>
#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/FlashFieldStore.h>

namespace td::whitebalance {

bool inFactoryState() {
    constexpr const char* FIELD = "factory_mode";
    // Four characters tell "On" from every longer text.
    char value[4 + 1] = {};
    if (FlashFieldStore::readField(FIELD, value, sizeof value))
        TD_INFO("load field -- '%s' from flash success, value = %s\n", FIELD, value);
    else
        TD_WARNING("load field -- '%s' from flash failed.\n", FIELD);
    return std::strcmp(value, "On") == 0;
}

int panelBin() {
    const std::string path = underRootPrefix(paths::FACTORY_SERVICE_FILE);
    int bin = 0;
    if (!ConfigReader::readInt(path.c_str(), "FactoryWB", "BIN", bin))
        TD_WARNING("load field -- 'BIN' failed from file [%s], use default value (0).\n", path.c_str());
    return bin;
}

bool acceptsList(const CategoryLayout& layout, Axis axis, const std::vector<int>& list, std::size_t longest) {
    const int count = layout.dimensions[axis].count;
    const bool accepted = list.size() <= longest && std::all_of(list.begin(), list.end(), [count](int index) {
                              return index >= 0 && index < count;
                          });
    if (!accepted)
        TD_WARNING("The dimension value is invalid.\n");
    return accepted;
}

bool acceptsCorners(const CategoryLayout& layout, const std::vector<int>& start, const std::vector<int>& end) {
    if (start.size() != AXIS_COUNT || end.size() != AXIS_COUNT) {
        TD_WARNING("The dimensions nStartDim size [%d] or nEndDim size [%d] is invalid ,expected size is: %d.\n",
                   static_cast<int>(start.size()), static_cast<int>(end.size()), AXIS_COUNT);
        return false;
    }
    TD_INFO("bin_s[%d] source_s[%d] dr_s[%d] sig_s[%d] color_tmp_s[%d].\n", start[BIN], start[SOURCE],
            start[DYNAMIC_RANGE], start[SIGNAL], start[COLOUR_TEMPERATURE]);
    TD_INFO("bin_e[%d] source_e[%d] dr_e[%d] sig_e[%d] color_tmp_e[%d].\n", end[BIN], end[SOURCE], end[DYNAMIC_RANGE],
            end[SIGNAL], end[COLOUR_TEMPERATURE]);
    if (!layout.accepts(start.data())) {
        TD_WARNING("The group start dimension value is invalid.\n");
        return false;
    }
    if (!layout.accepts(end.data())) {
        TD_WARNING("The group end dimension value is invalid.\n");
        return false;
    }
    return true;
}

std::vector<Indices> recordsBetween(const std::vector<int>& start, const std::vector<int>& end) {
    std::vector<Indices> records;
    for (int source = start[SOURCE]; source <= end[SOURCE]; ++source) {
        for (int range = start[DYNAMIC_RANGE]; range <= end[DYNAMIC_RANGE]; ++range) {
            for (int colour = start[COLOUR_TEMPERATURE]; colour <= end[COLOUR_TEMPERATURE]; ++colour)
                records.push_back({start[BIN], source, range, start[SIGNAL], colour});
        }
    }
    return records;
}

} // namespace td::whitebalance
