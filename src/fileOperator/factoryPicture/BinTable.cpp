#include "fileOperator/factoryPicture/BinTable.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <dataModule/fileOperator/TableOperator.h>
#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/FlashFieldStore.h>

#include "common/Log.h"
#include "common/SystemPaths.h"
#include "fileOperator/file/Loading.h"
#include "fileOperator/text/TextLayout.h"
#include "fileOperator/ValueDump.h"

namespace td {

namespace {

/// Whether the set is in factory state; read afresh.
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

/// The panel's bin, 0 when none is configured; read afresh. It may be no bin at all.
int panelBin() {
    const std::string path = underRootPrefix(paths::FACTORY_SERVICE_FILE);
    int bin = 0;
    if (!ConfigReader::readInt(path.c_str(), "FactoryWB", "BIN", bin))
        TD_WARNING("load field -- 'BIN' failed from file [%s], use default value (0).\n", path.c_str());
    return bin;
}

} // namespace

// --- loading ---

bool BinTable::readContents() {
    const bool factoryState = inFactoryState();
    const int bin = panelBin();
    m_bin = isBin(bin) ? bin : NO_BIN;
    if (factoryState) {
        m_bin = ALL_BINS;
        TD_INFO("%s", messages.loadAllBins);
    }
    // The file that a merge has yet to write holds all bins, whatever the state.
    const bool readsAll = factoryState || files->merge.isUnderWay() || files->merge.isUnwritten();
    bool read = true;
    const auto readRows = [&] {
        if (readsAll) {
            read = reader().readAll(loadedRows());
            if (read)
                loadedRows().holdAll();
            return true;
        }
        TD_INFO("load factory-wb data in simple mode in user state for bin -- [%d].\n", bin);
        loadedRows().holdNone();
        for (int record = 0; record < layout.recordCount(); ++record) {
            if (binOf(record) != m_bin)
                loadedRows().forget(record);
        }
        // A set in user state starts with what could be read of its bin.
        static_cast<void>(readBin(bin));
        return true;
    };
    if (isLoading())
        readRows();
    else
        loadContentsBy(*files, Loaded::AsItIs, readRows);
    return read;
}

bool BinTable::readBin(int bin) {
    const char* const path = files->file.path();
    // A store that was handled has closed the file.
    if (!files->file.stream().isOpend() && !files->openCurrent())
        return false;
    if (!isBin(bin)) {
        TD_WARNING(" BIN [%d] is invalid when system starting and loading WB data from file [%s] in USER mode.\n", bin,
                   path);
        return false;
    }
    TD_INFO("  BIN is [%d] when when system starting and loading WB data from file [%s] in USER mode.\n", bin, path);
    return readSlots([&](int record) { return binOf(record) == bin; });
}

template <class Wanted>
bool BinTable::readSlots(Wanted isWanted) {
    for (int record = 0; record < layout.recordCount(); ++record) {
        int values[MAX_FIELDS] = {};
        if (!isWanted(record))
            continue;
        if (!readSlot(record, values))
            return false;
        if (isLoading())
            loadedRows().put(record, values);
        else
            putRecord(record, values);
        dumpRecord(layout, indicesOf(record).data(), values);
    }
    return true;
}

bool BinTable::readSlot(int record, int* values) {
    const int position = files->file.contentPosition() + layout.keyLinesOffset(record);
    const std::vector<int> indices = indicesOf(record);
    const std::string id = text::sectionId(layout, indices.data());
    const char* const path = files->file.path();
    if (!files->file.stream().setPos(position)) {
        TD_WARNING("set file [%s] to position [%d] bytes failed when searchSection[%1x%1x%1x].\n", path, position,
                   static_cast<unsigned int>(indices[0]), static_cast<unsigned int>(indices[1]),
                   static_cast<unsigned int>(indices[2]));
        TD_WARNING(" dimension info %s is not matched , maybe the file [%s] content is not completed !!!\n", id.c_str(),
                   path);
    } else if (reader().readKeyLines(values)) {
        return true;
    } else {
        TD_WARNING(" read section %s from file [%s] failed, Maybe the file format is wrong!!!\n", id.c_str(), path);
    }
    files->logWhere();
    return false;
}

// --- keeping the calibration of the bins that are not in memory ---

bool BinTable::prepareFile(bool defaults) {
    const auto isMissing = [this](int record) {
        const TableLock lock(table.mutex);
        return !table.rows.holds(record);
    };
    const auto holdsAll = [this] {
        const TableLock lock(table.mutex);
        return table.rows.holdsAll();
    };
    if (defaults || holdsAll())
        return true;
    // The first copy that is there, and only if it verifies, since the new checksum would hide what is damaged in it.
    for (const _LOAD_FILE_MODE mode : {NORMAL_LOAD, BACKUP_LOAD, MANUFACTORY_LOAD}) {
        const std::string path = files->pathOf(mode);
        if (FileUtil::checkFile(path.c_str()) && !FileUtil::isStray(path.c_str()))
            return fileVerifies(path.c_str(), files->name.version) && op->loadSummary(path.c_str()) &&
                   readSlots(isMissing);
    }
    return true;
}

void BinTable::fileMade(bool defaults) {
    TableState::fileMade(defaults);
    const TableLock lock(table.mutex);
    if (defaults || m_bin == ALL_BINS)
        return;
    for (int record = 0; record < layout.recordCount(); ++record) {
        // What was stored while the file was made may have to be written from here once more.
        if (binOf(record) != m_bin && pending->fieldsOf(record) == 0)
            table.rows.forget(record);
    }
}

// --- many records at once ---

void BinTable::load(const std::vector<Row>& rows) {
    const TableLock lock(table.mutex);
    for (const Row& row : rows)
        std::copy_n(table.rows.at(row.record), layout.fieldCount(), row.values);
}

bool BinTable::store(const std::vector<Row>& rows) {
    const NoCancel noCancel;
    {
        const TableLock lock(table.mutex);
        if (!op->getStoreFileFlag())
            return false;
        for (const Row& row : rows)
            storeLocked(row.record, row.values, ALL_FIELDS);
    }
    for (const Row& row : rows)
        dumpRecord(layout, indicesOf(row.record).data(), row.values);
    return true;
}

} // namespace td
