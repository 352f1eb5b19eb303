/// What the factory white balance and its shift have in common: which panel bins are in memory, and reading and storing
/// many records at once.
///
/// In factory state (flash field "factory_mode" is "On") all bins are in memory. Otherwise a load reads the bin of this
/// panel only and the records of the other bins are zero, while the file holds the calibration of all. So that none of
/// it is lost,
///   - a store to a record that is not in memory first reads it from the current copy, and is refused if that fails:
///   the
///     one store that may wait for a write, or for another process;
///   - a merge of versions reads all bins, and the others are forgotten once the merged file is written;
///   - a file is never made of the table before the missing records were read from the current copy or, without one,
///     from the backup or factory copy.
#pragma once

#include <vector>

#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class BinTable;
struct WhiteBalanceMessages;

class DATAMODULE_API FactoryWhiteBalance : public TableOperator {
public:
    using TableOperator::loadDataFromCurrentFile;

    /// Reads one bin by the slots of its sections from the open file, whichever copy that is, up to the first failure.
    /// The caller holds the critical section.
    bool loadDataFromCurrentFile(int bin);

    /// `list`: colour temperatures, at most 6. The source of `dims` does not matter.
    bool loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, GroupArray& data) override;
    /// `list`: colour temperatures, at most 6; `list2`: dynamic ranges, at most 10. Each row goes to all of `list2`.
    bool storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, const std::vector<int>& list2,
                           GroupArray& data) override;
    /// Sources, dynamic ranges and colour temperatures from `start` to `end`; bin and signal are those of `start`.
    bool loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                     SelfDefinedGroupArray& data) override;
    bool storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                      SelfDefinedGroupArray& data) override;

protected:
    /// Layout and messages outlive the operator.
    FactoryWhiteBalance(const CategoryLayout& layout, const WhiteBalanceMessages& messages);

private:
    BinTable& bins() const;
};

} // namespace td
