/// The table of a factory white balance, which need not hold all bins.
#pragma once

#include "fileOperator/TableState.h"

namespace td {

/// The log lines in which the two tables differ. Those that tell a time are formats and take milliseconds.
struct WhiteBalanceMessages {
    const char* loadAllBins;
    const char* groupLoadStart;
    const char* groupLoadEnd;
    const char* groupStoreStart;
    const char* groupStoreTime;
    const char* rangeLoadStart;
    const char* rangeLoadEnd;
    const char* rangeLoadTime;
    const char* rangeStoreStart;
    const char* rangeStoreTime;
};

namespace whitebalance {

/// Dimensions of both tables, in order.
enum Axis { BIN, SOURCE, DYNAMIC_RANGE, SIGNAL, COLOUR_TEMPERATURE, AXIS_COUNT };

} // namespace whitebalance

class BinTable : public TableState {
public:
    BinTable(const CategoryLayout& categoryLayout, const WhiteBalanceMessages& logLines)
        : TableState(categoryLayout), messages(logLines) {}

    bool readContents() override;
    bool prepareFile(bool defaults) override;
    void fileMade(bool defaults) override;

    /// Reads one bin from the open file, up to the first failure; during a load into what is being loaded.
    bool readBin(int bin);

    /// A whole record of a request: nothing has to be read before it is stored.
    struct Row {
        int record;
        int* values;
    };
    void load(const std::vector<Row>& rows);
    /// All of them, or none when storing is not allowed any more: then false.
    bool store(const std::vector<Row>& rows);

    const WhiteBalanceMessages& messages;

private:
    // In place of the bin that is in memory.
    static constexpr int ALL_BINS = -1;
    static constexpr int NO_BIN = -2;

    bool isBin(int bin) const { return bin >= 0 && bin < layout.dimensions[whitebalance::BIN].count; }
    int binOf(int record) const { return indicesOf(record)[whitebalance::BIN]; }
    /// Reads those of the records that `isWanted` picks from the slots of their sections.
    template <class Wanted>
    bool readSlots(Wanted isWanted);
    bool readSlot(int record, int* values);

    int m_bin = ALL_BINS; ///< the one that a load reads; guarded by the category's lock
};

} // namespace td
