#include <dataModule/fileOperator/FactoryWhiteBalance.h>

#include <algorithm>
#include <iterator>
#include <memory>

#include <dataModule/common/TimeUtil.h>

#include "common/Log.h"
#include "fileOperator/factoryPicture/BinTable.h"

namespace td {

using namespace whitebalance;

namespace {

using Rows = std::vector<BinTable::Row>;

/// Checks a list of indices of one dimension, with a log line when it is too long or an entry is out of range.
bool acceptsList(const CategoryLayout& layout, Axis axis, const std::vector<int>& list, std::size_t longest) {
    const int count = layout.dimensions[axis].count;
    const bool accepted = list.size() <= longest && std::all_of(list.begin(), list.end(), [count](int index) {
                              return index >= 0 && index < count;
                          });
    if (!accepted)
        TD_WARNING("The dimension value is invalid.\n");
    return accepted;
}

/// Checks the corners of a rectangle, with log lines. A start beyond its end is accepted.
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

/// The rows of a group: those of `colours` for every source, each for all of `ranges`.
Rows rowsOf(const CategoryLayout& layout, const std::vector<int>& dims, const std::vector<int>& colours,
            const std::vector<int>& ranges, GroupArray& data) {
    Rows rows;
    for (int source = 0; source < static_cast<int>(std::size(data)); ++source) {
        for (std::size_t i = 0; i < colours.size(); ++i) {
            for (const int range : ranges) {
                const int indices[AXIS_COUNT] = {dims[BIN], source, range, dims[SIGNAL], colours[i]};
                rows.push_back({layout.recordIndex(indices), data[source][i]});
            }
        }
    }
    return rows;
}

/// Those of the rectangle between two accepted corners, with bin and signal of the start.
Rows rowsBetween(const CategoryLayout& layout, const std::vector<int>& start, const std::vector<int>& end,
                 SelfDefinedGroupArray& data) {
    Rows rows;
    for (int source = start[SOURCE]; source <= end[SOURCE]; ++source) {
        for (int range = start[DYNAMIC_RANGE]; range <= end[DYNAMIC_RANGE]; ++range) {
            for (int colour = start[COLOUR_TEMPERATURE]; colour <= end[COLOUR_TEMPERATURE]; ++colour) {
                const int indices[AXIS_COUNT] = {start[BIN], source, range, start[SIGNAL], colour};
                rows.push_back({layout.recordIndex(indices), data[source][range][colour]});
            }
        }
    }
    return rows;
}

bool isForbidden(AbstractFileOperator& op) {
    if (op.getStoreFileFlag())
        return false;
    TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
    return true;
}

} // namespace

FactoryWhiteBalance::FactoryWhiteBalance(const CategoryLayout& layout, const WhiteBalanceMessages& messages)
    : TableOperator(std::make_unique<BinTable>(layout, messages)) {}

BinTable& FactoryWhiteBalance::bins() const {
    return static_cast<BinTable&>(table());
}

bool FactoryWhiteBalance::loadDataFromCurrentFile(int bin) {
    const SectionStep step(state().lock);
    return bins().readBin(bin);
}

bool FactoryWhiteBalance::storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list,
                                            const std::vector<int>& list2, GroupArray& data) {
    if (isForbidden(*this))
        return true;
    if (!checkRequest(dims) || !acceptsList(layoutOf(), COLOUR_TEMPERATURE, list, std::size(data[0])) ||
        !acceptsList(layoutOf(), DYNAMIC_RANGE, list2, std::extent_v<SelfDefinedGroupArray, 1>))
        return false;
    TD_INFO("%s", bins().messages.groupStoreStart);
    TimeUtil::instance()->start();
    if (bins().store(rowsOf(layoutOf(), dims, list, list2, data)))
        TD_INFO(bins().messages.groupStoreTime, elapsedMilliseconds());
    return true;
}

bool FactoryWhiteBalance::loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list,
                                           GroupArray& data) {
    if (!checkRequest(dims) || !acceptsList(layoutOf(), COLOUR_TEMPERATURE, list, std::size(data[0])))
        return false;
    TD_INFO("%s", bins().messages.groupLoadStart);
    TimeUtil::instance()->start();
    bins().load(rowsOf(layoutOf(), dims, list, {dims[DYNAMIC_RANGE]}, data));
    TimeUtil::instance()->end();
    TD_INFO("%s", bins().messages.groupLoadEnd);
    return true;
}

bool FactoryWhiteBalance::loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                                      SelfDefinedGroupArray& data) {
    if (!acceptsCorners(layoutOf(), start, end))
        return false;
    TD_INFO("%s", bins().messages.rangeLoadStart);
    TimeUtil::instance()->start();
    bins().load(rowsBetween(layoutOf(), start, end, data));
    TD_INFO("%s", bins().messages.rangeLoadEnd);
    TD_INFO(bins().messages.rangeLoadTime, elapsedMilliseconds());
    return true;
}

bool FactoryWhiteBalance::storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                                       SelfDefinedGroupArray& data) {
    if (isForbidden(*this))
        return true;
    if (!acceptsCorners(layoutOf(), start, end))
        return false;
    TD_INFO("%s", bins().messages.rangeStoreStart);
    TimeUtil::instance()->start();
    if (bins().store(rowsBetween(layoutOf(), start, end, data)))
        TD_INFO(bins().messages.rangeStoreTime, elapsedMilliseconds());
    return true;
}

} // namespace td
