/// What the factory white balance and its shift have in common: which panel bins are in memory, and reading and storing
/// many records at once.
///
/// In factory state (flash field "factory_mode" is "On") all bins are in memory. Otherwise a load reads the bin of this
/// panel only and the records of the other bins are zero, while the file holds the calibration of all. So that none of
/// it is lost,
///   - a store to a record that is not in memory first reads it from the current copy, and is refused if that fails;
///   - a merge of versions reads all bins, and the others are forgotten once the merged file is written;
///   - a file is never made of the table before the missing records were read from the current copy or, without one,
///     from the backup or factory copy.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include <dataModule/common/Log.h>
#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/CategoryOperator.h>

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

constexpr int FIELD_COUNT = 6;

using Indices = std::array<int, AXIS_COUNT>;

/// Whether the set is in factory state; read afresh.
DATAMODULE_API bool inFactoryState();
/// The panel's bin, 0 when none is configured; read afresh. It may be no bin at all.
DATAMODULE_API int panelBin();
/// Checks a list of indices of one dimension, with a log line when it is too long or an entry is out of range.
DATAMODULE_API bool acceptsList(const CategoryLayout& layout, Axis axis, const std::vector<int>& list,
                                std::size_t longest);
/// Checks the corners of a rectangle, with log lines. A start beyond its end is accepted.
DATAMODULE_API bool acceptsCorners(const CategoryLayout& layout, const std::vector<int>& start,
                                   const std::vector<int>& end);
/// The records of the rectangle between two accepted corners, with bin and signal of the start.
DATAMODULE_API std::vector<Indices> recordsBetween(const std::vector<int>& start, const std::vector<int>& end);

} // namespace whitebalance

template <class Self, class Record, class EventType>
class FactoryWhiteBalance : public CategoryOperator<Self, Record, EventType, whitebalance::AXIS_COUNT> {
    using Base = CategoryOperator<Self, Record, EventType, whitebalance::AXIS_COUNT>;

protected:
    using Base::m_criticalSection;

public:
    using Base::loadDataFromCurrentFile;

    /// Reads one bin by the slots of its sections from the open file, whichever copy that is, up to the first failure.
    /// The caller holds the critical section.
    bool loadDataFromCurrentFile(int bin) TD_REQUIRES(m_criticalSection);

    bool loadContents() override TD_REQUIRES(m_criticalSection);
    bool loadDataFromManufactoryFile(const std::vector<int>& dims) override TD_REQUIRES(m_criticalSection);
    /// `list`: colour temperatures, at most 6. The source of `dims` does not matter.
    bool loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, GroupArray& data) override
        TD_EXCLUDES(m_criticalSection);
    /// `list`: colour temperatures, at most 6; `list2`: dynamic ranges, at most 10. Each row goes to all of `list2`.
    bool storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, const std::vector<int>& list2,
                           GroupArray& data) override TD_EXCLUDES(m_criticalSection);
    /// Sources, dynamic ranges and colour temperatures from `start` to `end`; bin and signal are those of `start`.
    bool loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                     SelfDefinedGroupArray& data) override TD_EXCLUDES(m_criticalSection);
    bool storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                      SelfDefinedGroupArray& data) override TD_EXCLUDES(m_criticalSection);

protected:
    /// Layout and messages outlive the operator.
    FactoryWhiteBalance(const CategoryLayout& layout, const WhiteBalanceMessages& messages)
        : Base(layout), m_messages(messages), m_inMemory(static_cast<std::size_t>(layout.recordCount())) {}

    bool completeRecord(const std::vector<int>& dims) override TD_REQUIRES(m_criticalSection);
    bool writeNewFile(bool defaults) override TD_REQUIRES(m_criticalSection);
    bool holdsRecord(int record) const override TD_REQUIRES(m_criticalSection) { return m_inMemory[at(record)]; }

private:
    // In place of the bin that is in memory.
    static constexpr int ALL_BINS = -1;
    static constexpr int NO_BIN = -2;

    static constexpr unsigned ALL_OF_A_BIN = axisBit(whitebalance::SOURCE) | axisBit(whitebalance::DYNAMIC_RANGE) |
                                             axisBit(whitebalance::SIGNAL) | axisBit(whitebalance::COLOUR_TEMPERATURE);

    bool isBin(int bin) const { return bin >= 0 && bin < this->layoutOf().dimensions[whitebalance::BIN].count; }
    static std::size_t at(int index) { return static_cast<std::size_t>(index); }

    bool loadAllBins() TD_REQUIRES(m_criticalSection);
    void forgetOtherBins() TD_REQUIRES(m_criticalSection);
    bool readMissingRecords() TD_REQUIRES(m_criticalSection);
    bool readMissingFromOpenFile() TD_REQUIRES(m_criticalSection);
    bool readSlot(const int* indices) TD_REQUIRES(m_criticalSection);
    void getRow(const int* indices, int (&row)[whitebalance::FIELD_COUNT]) TD_REQUIRES(m_criticalSection);
    void putRow(const int* indices, const int (&row)[whitebalance::FIELD_COUNT]) TD_REQUIRES(m_criticalSection);

    const WhiteBalanceMessages& m_messages;
    /// By record number: whether the table holds what the file is to hold.
    std::vector<bool> m_inMemory TD_GUARDED_BY(m_criticalSection);
    int m_bin TD_GUARDED_BY(m_criticalSection) = ALL_BINS; ///< the one that a load reads
};

// --- loading ---

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadContents() {
    const bool factoryState = whitebalance::inFactoryState();
    const int bin = whitebalance::panelBin();
    m_bin = isBin(bin) ? bin : NO_BIN;
    if (factoryState) {
        m_bin = ALL_BINS;
        TD_INFO("%s", m_messages.loadAllBins);
    }
    // The file that a merge has yet to write holds all bins, whatever the state.
    if (factoryState || this->mergePending() || this->mergeUnwritten())
        return loadAllBins();
    TD_INFO("load factory-wb data in simple mode in user state for bin -- [%d].\n", bin);
    m_inMemory.assign(m_inMemory.size(), false);
    forgetOtherBins();
    // A set in user state starts with what could be read of its bin.
    static_cast<void>(loadDataFromCurrentFile(bin));
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadAllBins() {
    if (!Base::loadContents())
        return false;
    m_inMemory.assign(m_inMemory.size(), true);
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadDataFromCurrentFile(int bin) {
    const SectionStep step(m_criticalSection);
    // A store that was handled has closed the file.
    if (!this->m_file.isOpend() && !this->openCurrent())
        return false;
    if (!isBin(bin)) {
        TD_WARNING(" BIN [%d] is invalid when system starting and loading WB data from file [%s] in USER mode.\n", bin,
                   this->getFileFullPath());
        return false;
    }
    TD_INFO("  BIN is [%d] when when system starting and loading WB data from file [%s] in USER mode.\n", bin,
            this->getFileFullPath());
    const int first[whitebalance::AXIS_COUNT] = {bin, 0, 0, 0, 0};
    for (AxisSweep sweep(this->layoutOf(), first, ALL_OF_A_BIN); !sweep.done(); sweep.next()) {
        if (!readSlot(sweep.indices()))
            return false;
    }
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::readSlot(const int* indices) {
    const CategoryLayout& layout = this->layoutOf();
    const int record = layout.recordIndex(indices);
    const int position = this->contentPosition() + layout.keyLinesOffset(record);
    const std::string id = this->idText(indices);
    if (!this->m_file.setPos(position)) {
        TD_WARNING("set file [%s] to position [%d] bytes failed when searchSection[%1x%1x%1x].\n",
                   this->getFileFullPath(), position, static_cast<unsigned int>(indices[0]),
                   static_cast<unsigned int>(indices[1]), static_cast<unsigned int>(indices[2]));
        TD_WARNING(" dimension info %s is not matched , maybe the file [%s] content is not completed !!!\n", id.c_str(),
                   this->getFileFullPath());
        this->logWhere();
        return false;
    }
    if (!this->readRecord(this->recordAt(record))) {
        TD_WARNING(" read section %s from file [%s] failed, Maybe the file format is wrong!!!\n", id.c_str(),
                   this->getFileFullPath());
        this->logWhere();
        return false;
    }
    m_inMemory[at(record)] = true;
    this->dumpRecord(indices);
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadDataFromManufactoryFile(const std::vector<int>& dims) {
    if (!Base::loadDataFromManufactoryFile(dims))
        return false;
    m_inMemory[at(this->layoutOf().recordIndex(dims.data()))] = true;
    return true;
}

// --- keeping the calibration of the bins that are not in memory ---

template <class Self, class Record, class EventType>
void FactoryWhiteBalance<Self, Record, EventType>::forgetOtherBins() {
    const CategoryLayout& layout = this->layoutOf();
    for (int record = 0; record < layout.recordCount(); ++record) {
        int indices[MAX_DIMENSIONS] = {};
        layout.indicesOf(record, indices);
        if (indices[whitebalance::BIN] == m_bin)
            continue;
        std::fill_n(this->recordAt(record), layout.fieldCount(), 0);
        m_inMemory[at(record)] = false;
    }
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::completeRecord(const std::vector<int>& dims) {
    const std::size_t record = at(this->layoutOf().recordIndex(dims.data()));
    if (!loadDataFromCurrentFile(dims)) {
        TD_WARNING("store to section %s is refused, for its other fields couldn't be read from file [%s].\n",
                   this->idText(dims.data()).c_str(), this->getFileFullPath());
        this->logWhere();
        return false;
    }
    m_inMemory[record] = true;
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::writeNewFile(bool defaults) {
    // What is read here must still be so when it is written.
    this->takeFiles();
    if (!defaults && !readMissingRecords())
        return false;
    if (!Base::writeNewFile(defaults))
        return false;
    if (defaults)
        m_inMemory.assign(m_inMemory.size(), true);
    else if (m_bin != ALL_BINS)
        forgetOtherBins();
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::readMissingRecords() {
    if (std::find(m_inMemory.begin(), m_inMemory.end(), false) == m_inMemory.end())
        return true;
    // The first copy that is there, and only if it verifies, since the new checksum would hide what is damaged in it.
    for (const _LOAD_FILE_MODE mode : {NORMAL_LOAD, BACKUP_LOAD, MANUFACTORY_LOAD}) {
        const std::string path = this->getWorkPath(mode) + this->m_fileName;
        if (FileUtil::checkFile(path.c_str()) && !FileUtil::isStray(path.c_str()))
            return fileVerifies(path.c_str(), this->m_version) && this->loadSummary(path.c_str()) &&
                   readMissingFromOpenFile();
    }
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::readMissingFromOpenFile() {
    for (std::size_t record = 0; record < m_inMemory.size(); ++record) {
        int indices[MAX_DIMENSIONS] = {};
        this->layoutOf().indicesOf(static_cast<int>(record), indices);
        if (!m_inMemory[record] && !readSlot(indices))
            return false;
    }
    return true;
}

// --- many records at once ---

template <class Self, class Record, class EventType>
void FactoryWhiteBalance<Self, Record, EventType>::getRow(const int* indices, int (&row)[whitebalance::FIELD_COUNT]) {
    std::copy_n(this->recordAt(this->layoutOf().recordIndex(indices)), whitebalance::FIELD_COUNT, row);
}

/// A row is a whole record, so nothing has to be read before.
template <class Self, class Record, class EventType>
void FactoryWhiteBalance<Self, Record, EventType>::putRow(const int* indices,
                                                          const int (&row)[whitebalance::FIELD_COUNT]) {
    const int record = this->layoutOf().recordIndex(indices);
    std::copy_n(row, whitebalance::FIELD_COUNT, this->recordAt(record));
    m_inMemory[at(record)] = true;
    this->dumpRecord(indices);
    this->postRecord(indices);
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadDataForGroup(const std::vector<int>& dims,
                                                                    const std::vector<int>& list, GroupArray& data) {
    if (!this->checkRequest(dims) ||
        !whitebalance::acceptsList(this->layoutOf(), whitebalance::COLOUR_TEMPERATURE, list, std::size(data[0])))
        return false;
    TD_INFO("%s", m_messages.groupLoadStart);
    TimeUtil::instance()->start();
    {
        SectionLock lock(m_criticalSection);
        std::vector<int> indices = dims;
        for (int source = 0; source < static_cast<int>(std::size(data)); ++source) {
            indices[whitebalance::SOURCE] = source;
            for (std::size_t i = 0; i < list.size(); ++i) {
                indices[whitebalance::COLOUR_TEMPERATURE] = list[i];
                getRow(indices.data(), data[source][i]);
            }
        }
    }
    TimeUtil::instance()->end();
    TD_INFO("%s", m_messages.groupLoadEnd);
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::storeDataForGroup(const std::vector<int>& dims,
                                                                     const std::vector<int>& list,
                                                                     const std::vector<int>& list2, GroupArray& data) {
    if (!this->getStoreFileFlag()) {
        TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
        return true;
    }
    if (!this->checkRequest(dims) ||
        !whitebalance::acceptsList(this->layoutOf(), whitebalance::COLOUR_TEMPERATURE, list, std::size(data[0])) ||
        !whitebalance::acceptsList(this->layoutOf(), whitebalance::DYNAMIC_RANGE, list2,
                                   std::extent_v<SelfDefinedGroupArray, 1>))
        return false;
    TD_INFO("%s", m_messages.groupStoreStart);
    TimeUtil::instance()->start();
    {
        SectionLock lock(m_criticalSection);
        // Again, as for a single store.
        if (!this->getStoreFileFlag())
            return true;
        std::vector<int> indices = dims;
        for (int source = 0; source < static_cast<int>(std::size(data)); ++source) {
            indices[whitebalance::SOURCE] = source;
            for (std::size_t i = 0; i < list.size(); ++i) {
                indices[whitebalance::COLOUR_TEMPERATURE] = list[i];
                for (const int dynamicRange : list2) {
                    indices[whitebalance::DYNAMIC_RANGE] = dynamicRange;
                    putRow(indices.data(), data[source][i]);
                }
            }
        }
    }
    TD_INFO(m_messages.groupStoreTime, elapsedMilliseconds());
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::loadDataForSelfDefinedGroup(const std::vector<int>& start,
                                                                               const std::vector<int>& end,
                                                                               SelfDefinedGroupArray& data) {
    using namespace whitebalance;
    if (!acceptsCorners(this->layoutOf(), start, end))
        return false;
    TD_INFO("%s", m_messages.rangeLoadStart);
    TimeUtil::instance()->start();
    {
        SectionLock lock(m_criticalSection);
        for (const Indices& i : recordsBetween(start, end))
            getRow(i.data(), data[i[SOURCE]][i[DYNAMIC_RANGE]][i[COLOUR_TEMPERATURE]]);
    }
    TD_INFO("%s", m_messages.rangeLoadEnd);
    TD_INFO(m_messages.rangeLoadTime, elapsedMilliseconds());
    return true;
}

template <class Self, class Record, class EventType>
bool FactoryWhiteBalance<Self, Record, EventType>::storeDataForSelfDefinedGroup(const std::vector<int>& start,
                                                                                const std::vector<int>& end,
                                                                                SelfDefinedGroupArray& data) {
    using namespace whitebalance;
    if (!this->getStoreFileFlag()) {
        TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
        return true;
    }
    if (!acceptsCorners(this->layoutOf(), start, end))
        return false;
    TD_INFO("%s", m_messages.rangeStoreStart);
    TimeUtil::instance()->start();
    {
        SectionLock lock(m_criticalSection);
        // Again, as for a single store.
        if (!this->getStoreFileFlag())
            return true;
        for (const Indices& i : recordsBetween(start, end))
            putRow(i.data(), data[i[SOURCE]][i[DYNAMIC_RANGE]][i[COLOUR_TEMPERATURE]]);
    }
    TD_INFO(m_messages.rangeStoreTime, elapsedMilliseconds());
    return true;
}

} // namespace td
