// A table's way to its file and back: TableState's half that works on the open file.

#include <algorithm>
#include <cerrno>

#include <dataModule/common/Event.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/fileOperator/TableOperator.h>

#include "common/Deadline.h"
#include "common/Log.h"
#include "fileOperator/file/LoadBudget.h"
#include "fileOperator/file/Loading.h"
#include "fileOperator/file/NewFile.h"
#include "fileOperator/TableState.h"
#include "fileOperator/text/TextLayout.h"

namespace td {

namespace {

/// Contents are written in pieces of about this many bytes.
constexpr std::size_t WRITE_PIECE = 65536;

/// Appends a section. Whether its values fit their columns; those that do not are replaced by the defaults.
bool appendSection(const CategoryLayout& layout, const int* indices, const int* record, std::string& text) {
    char line[text::LINE_BUFFER];
    text::formatSectionId(layout, indices, line, sizeof line);
    text += line;
    bool fits = true;
    for (const Field& field : layout.fields) {
        int value = record[field.position];
        if (!text::fitsColumns(layout.keyLine, value)) {
            fits = false;
            value = field.defaultValue;
        }
        text::formatKeyLine(layout.keyLine, field.key, value, line, sizeof line);
        text += line;
    }
    return fits;
}

} // namespace

// --- reading ---

bool TableState::readContents() {
    const bool isPart = isLoading();
    bool read = false;
    const auto readRows = [&] {
        read = reader().readAll(loadedRows());
        return true;
    };
    return isPart ? readRows() && read : loadContentsBy(*files, Loaded::AsItIs, readRows) && read;
}

bool TableState::readContentsByKey() {
    const bool isPart = isLoading();
    bool read = false;
    const auto readRows = [&] {
        read = reader().readAllByKey(loadedRows());
        return true;
    };
    return isPart ? readRows() && read : loadContentsBy(*files, Loaded::AsItIs, readRows) && read;
}

bool TableState::seek(const int* indices) {
    const int position = files->file.contentPosition() + layout.keyLinesOffset(layout.recordIndex(indices));
    if (files->file.stream().setPos(position))
        return true;
    TD_WARNING("set file [%s] to position [%d] bytes failed when searchSection%s.\n", files->file.path().load(),
               position, op->searchText(indices).c_str());
    files->logWhere();
    return false;
}

bool TableState::readSection(const std::vector<int>& dims, int* record) {
    if (!op->searchSectionId(dims))
        return false;
    SectionReader sections = reader();
    if (sections.holdsKeyLines() && sections.keysMatch() && sections.readKeyLines(record))
        return true;
    TD_WARNING("dimension info %s is not matched , maybe the file content is not completed !!!\n",
               text::sectionId(layout, dims.data()).c_str());
    files->logWhere();
    return false;
}

bool TableState::readFromCurrent(const std::vector<int>& dims, int* record) {
    const bool opened = files->openCurrent();
    TD_INFO("Load data from file [%s] when restore setting from current.\n", files->file.path().load());
    const bool read = opened && readSection(dims, record);
    files->closeIfReleased();
    return read;
}

// --- writing ---

/// The stores that one write takes along: on the disk when its checksum is, failed however else it ends.
class TableState::StoresInWrite : public WriteResult {
public:
    explicit StoresInWrite(std::shared_ptr<PendingStores> pendingStores) : m_pending(std::move(pendingStores)) {}

    void add(int record, int event) { m_stores.push_back({record, event}); }
    std::size_t count() const { return m_stores.size(); }
    void ended(bool isOnDisk) override {
        for (const InWrite& store : m_stores) {
            if (isOnDisk)
                m_pending->written(store.record, store.event);
            else
                m_pending->failed(store.record, store.event);
        }
        m_stores.clear();
    }
    /// Somebody else writes them, or nobody has to.
    void leaveToMerge() {
        for (const InWrite& store : m_stores)
            m_pending->leftToMerge(store.record, store.event);
        m_stores.clear();
    }
    void leave() { m_stores.clear(); }

private:
    const std::shared_ptr<PendingStores> m_pending;
    std::vector<InWrite> m_stores;
};

bool TableState::fitsFile(int record) {
    FileUtil& stream = files->file.stream();
    return stream.setPos(files->file.contentPosition() + layout.keyLinesOffset(record)) && reader().holdsKeyLines();
}

bool TableState::addSection(SectionWrite& write, int record, const int* values) {
    char text[text::SECTION_BUFFER];
    const int length = op->formatContent(values, text, text::SECTION_BUFFER);
    // A widened line would run into the next section (invariant 3).
    if (length != layout.keyLinesLength() || length >= text::SECTION_BUFFER)
        return false;
    write.add(files->file.contentPosition() + layout.keyLinesOffset(record), text);
    return true;
}

void TableState::addFailed(SectionWrite& write, StoresInWrite& stores, int besides) {
    // So that the redo record stays a small one; what is left follows with the next write, or with the next retry.
    constexpr std::size_t MOST = 256;
    for (const PendingStores::Store& store : pending->failedOnes()) {
        if (stores.count() >= MOST)
            return;
        int values[MAX_FIELDS] = {};
        // Over what the file holds: the table's other fields may not be those of this file.
        if (store.record == besides || !fitsFile(store.record) || !reader().readKeyLines(values))
            continue;
        {
            const TableLock lock(table.mutex);
            const int* const row = table.rows.at(store.record);
            for (int position = 0; position < layout.fieldCount(); ++position)
                values[position] = (store.fields & fieldBit(position)) != 0 ? row[position] : values[position];
        }
        if (addSection(write, store.record, values))
            stores.add(store.record, store.event);
    }
}

bool TableState::beginWrite(const Event& event, const int* record) {
    try {
        return writeEvent(event, record);
    } catch (...) {
        pending->failed(layout.recordIndex(event.dimensions().data()), event.id());
        throw;
    }
}

bool TableState::writeEvent(const Event& event, const int* record) {
    const std::vector<int>& dims = event.dimensions();
    const int index = layout.recordIndex(dims.data());
    // One that was begun and never ended with its checksum has failed.
    files->write.reset();
    auto result = std::make_unique<StoresInWrite>(pending);
    StoresInWrite& stores = *result;
    SectionWrite write(files->file, std::move(result));
    stores.add(index, event.id());
    const auto nothingToWrite = [&] {
        files->write.emplace(files->file);
        return true;
    };
    if (files->merge.isUnderWay()) {
        // The value is in the table that is about to be written as a whole.
        stores.leaveToMerge();
        return nothingToWrite();
    }
    // Nor does the queue wait for a process that is stopped: the store is tried again when the lock can be had.
    files->lock.limitWaits(deadlineIn(LoadBudget::MILLISECONDS));
    if (!makeUpForLoad(*files))
        return false;
    bool isStale = false;
    {
        const TableLock lock(table.mutex);
        isStale = table.floor.isStale(index, event.id());
    }
    // It was taken back or replaced since; or the whole table is written, with it.
    if (isStale || (files->merge.isUnwritten() && !wasMergedByOther(*files))) {
        if (!isStale && !op->createFile())
            return false;
        stores.leave();
        return nothingToWrite();
    }
    op->dumpId(dims.data());
    files->takeFiles();
    if (!files->openCurrent()) {
        TD_WARNING("open file [%s] failed for storing data.\n", files->file.path().load());
        files->logWhere();
        return false;
    }
    if (!op->searchSectionId(dims) || !fitsFile(index)) {
        TD_WARNING("search dimension failed , maybe the file content is not completed !!!\n");
        files->logWhere();
        files->closeIfReleased();
        return false;
    }
    bool begun = addSection(write, index, record);
    if (begun) {
        addFailed(write, stores, index);
        begun = write.begin();
    }
    if (!begun) {
        TD_WARNING("write section %s for file [%s] failed!\n", text::sectionId(layout, dims.data()).c_str(),
                   files->file.path().load());
        files->logWhere();
        return false;
    }
    files->write = std::move(write);
    return true;
}

/// Goes past the queue; the checksum, and the sync, are one for all.
void TableState::writeAtOnce(const std::vector<InWrite>& atOnce, const int* values) {
    auto result = std::make_unique<StoresInWrite>(pending);
    StoresInWrite& stores = *result;
    files->write.reset();
    SectionWrite write(files->file, std::move(result));
    for (const InWrite& store : atOnce)
        stores.add(store.record, store.event);
    if (files->merge.isUnderWay()) {
        stores.leaveToMerge();
        return;
    }
    if (!makeUpForLoad(*files))
        return;
    if (files->merge.isUnwritten() && !wasMergedByOther(*files)) {
        if (op->createFile())
            stores.leave();
        return;
    }
    files->takeFiles();
    const bool opened = files->openCurrent();
    const char* const path = files->file.path();
    stores.leave();
    for (const InWrite& store : atOnce) {
        // The others go on.
        const std::vector<int> indices = indicesOf(store.record);
        op->dumpId(indices.data());
        if (!opened) {
            TD_WARNING("open file [%s] failed for storing data.\n", path);
        } else if (!fitsFile(store.record)) {
            TD_WARNING("search dimension failed , maybe the file content is not completed !!!\n");
        } else if (!addSection(write, store.record, values)) {
            TD_WARNING("write section %s for file [%s] failed!\n", text::sectionId(layout, indices.data()).c_str(),
                       path);
        } else {
            stores.add(store.record, store.event);
            continue;
        }
        files->logWhere();
        pending->failed(store.record, store.event);
    }
    if (write.isEmpty())
        return;
    // No checksum makes good what is not all written: that is left to the redo record, or to the backup.
    if (!write.begin()) {
        TD_WARNING("write sections for file [%s] failed!\n", path);
        files->logWhere();
        return;
    }
    files->write = std::move(write);
    op->updateCrcCode();
}

bool TableState::writeFailed() {
    if (!pending->hasFailed())
        return true;
    if (!files->openCurrent())
        return false;
    files->write.reset();
    auto result = std::make_unique<StoresInWrite>(pending);
    StoresInWrite& stores = *result;
    SectionWrite write(files->file, std::move(result));
    addFailed(write, stores, -1);
    if (write.isEmpty()) {
        errno = ERANGE; // none of them fits its columns
        return false;
    }
    if (!write.begin())
        return false;
    files->write = std::move(write);
    return op->updateCrcCode();
}

bool TableState::buildContents(bool defaults) {
    // Written from a copy: what is stored meanwhile is written after it.
    const auto copyOfTable = [&] {
        const TableLock lock(table.mutex);
        for (int record = 0; defaults && record < table.rows.count(); ++record) {
            int values[MAX_FIELDS] = {};
            for (const Field& field : layout.fields)
                values[field.position] = field.defaultValue;
            table.rows.put(record, values);
        }
        m_builtBefore = EventIdGenerator::instance()->peekNextEventId();
        return table.rows;
    };
    const Rows rows = copyOfTable();
    std::string piece;
    piece.reserve(WRITE_PIECE + text::SECTION_BUFFER);
    for (int record = 0; record < rows.count(); ++record) {
        const std::vector<int> indices = indicesOf(record);
        if (!appendSection(layout, indices.data(), rows.at(record), piece)) {
            TD_WARNING("write section %s for file [%s] failed!\n", text::sectionId(layout, indices.data()).c_str(),
                       files->file.path().load());
            files->logWhere();
        }
        if (piece.size() < WRITE_PIECE && record + 1 < rows.count())
            continue;
        if (!files->file.stream().writeFile(piece.c_str(), true))
            return false;
        piece.clear();
    }
    return true;
}

} // namespace td
