#include "SmallCategories.h"

#include <cstddef>
#include <vector>

#include <dataModule/common/RecordEvent.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/fileOperator/FactoryWhiteBalance.h>
#include <dataModule/UserPictureRecords.h>

#include "fileOperator/factoryPicture/BinTable.h"
#include "fileOperator/OperatorFactory.h"

namespace td::test {
namespace {

CategoryLayout withFewer(_DataCategory_t category, const std::vector<int>& counts) {
    CategoryLayout layout = *layoutOf(category);
    for (std::size_t dimension = 0; dimension < counts.size(); ++dimension)
        layout.dimensions[dimension].count = counts[dimension];
    return layout;
}

class FewModes;
using FewModesEvent = RecordEvent<FewModes, _UsrPicMode_t>;

class FewModes final : public CategoryOperator<FewModes, _UsrPicMode_t, FewModesEvent, 3> {
public:
    FewModes() : CategoryOperator(fewModes()) {}
};

constexpr WhiteBalanceMessages MESSAGES{"", "", "", "", "", "", "", "", "", ""};

class FewBalances;
using FewBalancesEvent = RecordEvent<FewBalances, _factory_pic_wb>;

class FewBalances final
    : public CategoryOperator<FewBalances, _factory_pic_wb, FewBalancesEvent, 5, FactoryWhiteBalance> {
public:
    FewBalances() : CategoryOperator(fewBalances(), MESSAGES) {}
};

} // namespace

const CategoryLayout& fewModes() {
    static const CategoryLayout layout = withFewer(PICTURE_MODE, {16, 2, 1});
    return layout;
}

AbstractFileOperator* makeFewModes() {
    return new FewModes;
}

const CategoryLayout& fewBalances() {
    static const CategoryLayout layout = withFewer(PICTURE_FACTORY_WB, {2, 2, 2, 1, 2});
    return layout;
}

AbstractFileOperator* makeFewBalances() {
    return new FewBalances;
}

} // namespace td::test
