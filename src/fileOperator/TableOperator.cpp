#include <dataModule/fileOperator/TableOperator.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include <dataModule/common/Deadline.h>
#include <dataModule/common/Event.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/common/Log.h>
#include <dataModule/common/TimeUtil.h>
#include <dataModule/fileOperator/LoadBudget.h>
#include <dataModule/fileOperator/PendingStores.h>
#include <dataModule/fileOperator/TextLayout.h>
#include <dataModule/fileOperator/WrittenSection.h>

namespace td {

namespace {

/// Contents are written in pieces of about this many bytes.
constexpr std::size_t WRITE_PIECE = 65536;
/// Contents are read in pieces of this many bytes, which hold the longest section many times.
constexpr std::size_t READ_PIECE = 16384;

const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

/// The fields of a whole-record answer. It is in record order, which is not always the order of the key lines.
std::vector<const Field*> listedFields(const CategoryLayout& layout) {
    std::vector<const Field*> fields;
    for (const Field& field : layout.fields) {
        if (field.listing != Listing::Hidden)
            fields.push_back(&field);
    }
    std::sort(fields.begin(), fields.end(),
              [](const Field* one, const Field* other) { return one->position < other->position; });
    return fields;
}

std::vector<int> toVector(const CategoryLayout& layout, const int* indices) {
    return {indices, indices + layout.dimensionCount()};
}

} // namespace

TableOperator::TableOperator(const CategoryLayout& layout)
    : AbstractFileOperator(layout.file, layout.version), m_layout(layout), m_names(layout),
      m_listed(listedFields(layout)),
      m_table(static_cast<std::size_t>(layout.recordCount()) * static_cast<std::size_t>(layout.fieldCount())),
      m_section(layout.fields.size()) {
    m_category = layout.category;
    m_dataSize = static_cast<int>(m_table.size() * sizeof(int));
}

std::string TableOperator::idText(const int* indices) const {
    return text::sectionId(m_layout, indices);
}

std::string TableOperator::searchText(const int* indices) const {
    std::string name = idText(indices);
    for (int d = m_layout.dimensionCount() - 1; d > 0; --d)
        name.insert(static_cast<std::size_t>(d) + 1, m_layout.searchSeparator);
    return name;
}

void TableOperator::logIndices(DebugOutput::Level level, const char* format, const std::vector<int>& dims) const {
    if (format == nullptr || static_cast<int>(dims.size()) != m_layout.dimensionCount())
        return;
    int indices[MAX_DIMENSIONS] = {};
    std::copy(dims.begin(), dims.end(), indices);
    TD_LOG(level, format, indices[0], indices[1]);
}

// --- requests ---

bool TableOperator::checkRequest(const std::vector<int>& dims) const {
    const int expected = m_layout.dimensionCount();
    if (static_cast<int>(dims.size()) != expected) {
        TD_WARNING("The dimensions size [%d] is invalid ,expected size is: %d.\n", static_cast<int>(dims.size()),
                   expected);
        return false;
    }
    if (!m_layout.accepts(dims.data())) {
        TD_WARNING("The dimension value is invalid.\n");
        return false;
    }
    return true;
}

bool TableOperator::loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) {
    if (!AbstractFileOperator::loadData(dims, args))
        return false;
    // Not timed: no line tells how long a read took, and two readings of the clock would be half of its work.
    if (!checkRequest(dims))
        return false;
    TableLock lock(m_criticalSection);
    dumpRecord(dims.data());
    const int* record = recordAt(m_layout.recordIndex(dims.data()));
    if (args.empty())
        listFields(record, args);
    else
        getFields(record, args);
    return true;
}

bool TableOperator::storeData(const std::vector<int>& dims, const std::vector<_Argument_t>& args) {
    if (!getStoreFileFlag()) {
        TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
        return true;
    }
    TimeUtil::instance()->start();
    const StoreMessages& messages = m_layout.storeMessages;
    logIndices(DebugOutput::Level::Info, messages.asked, dims);
    if (!checkRequest(dims)) {
        logIndices(DebugOutput::Level::Warning, messages.refused, dims);
        return false;
    }
    {
        SectionLock lock(m_criticalSection);
        // Again: whoever forbade storing meanwhile has dropped what was pending, and this would come after it.
        if (!getStoreFileFlag()) {
            TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
            return true;
        }
        const int record = m_layout.recordIndex(dims.data());
        // While nothing is loaded there is no file to complete it from; the load does that.
        if (isLoaded() && !holdsRecord(record) && !completeUnderStores(record))
            return false;
        bool changed = false;
        const PendingStores::Fields fields = putFields(args, recordAt(record), changed);
        if (changed)
            postRecord(dims.data(), fields);
        else
            TD_INFO("No field value is changed,so NEEDN'T store.\n");
        logIndices(DebugOutput::Level::Info, messages.updated, dims);
        dumpRecord(dims.data());
    }
    TimeUtil::instance()->end();
    if (messages.completed != nullptr)
        TD_INFO(messages.completed, TimeUtil::instance()->getElapsed());
    if (m_layout.applyFlag != nullptr && getApplySettingFlag(PICTURE_GLOBAL, m_layout.applyFlag))
        applySettingForAllSources(dims);
    return true;
}

void TableOperator::listFields(const int* record, std::vector<_Argument_t>& args) const {
    args.reserve(args.size() + m_listed.size());
    for (const Field* field : m_listed)
        args.push_back({field->listing == Listing::Named ? field->argumentName() : nullptr, record[field->position]});
}

void TableOperator::getFields(const int* record, std::vector<_Argument_t>& args) const {
    for (_Argument_t& argument : args) {
        const Field* field = m_names.find(argument.name);
        if (field != nullptr)
            argument.value = record[field->position];
        else
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
    }
}

std::uint64_t TableOperator::putFields(const std::vector<_Argument_t>& args, int* record, bool& changed) const {
    PendingStores::Fields named = 0;
    for (const _Argument_t& argument : args) {
        const Field* field = m_names.find(argument.name);
        if (field == nullptr) {
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
            continue;
        }
        named |= PendingStores::fieldAt(field->position);
        if (record[field->position] == argument.value)
            continue;
        record[field->position] = argument.value;
        changed = true;
    }
    return named;
}

void TableOperator::putField(const char* key, int value, int* record) const {
    const bool byKey = m_layout.mergeNames == MergeNames::Keys;
    const Field* field = byKey ? m_layout.fieldByKey(key) : m_layout.fieldByArgument(key);
    if (field != nullptr)
        record[field->position] = value;
    else if (!byKey)
        TD_WARNING("The field [%s] is invalid for this version.\n", textOrEmpty(key));
}

void TableOperator::dumpRecord(const int* indices) {
    if (enableDebugLog() == 0)
        return;
    const int* record = recordAt(m_layout.recordIndex(indices));
    std::string line = m_layout.dumpPrefix + idText(indices) + ": ";
    const char* separator = "";
    for (const Field& field : m_layout.fields) {
        line += separator;
        line += field.dumpLabel();
        line += " = " + std::to_string(record[field.position]);
        separator = ", ";
    }
    TD_DETAIL("%s%s", line.c_str(), m_layout.dumpEnd);
}

void TableOperator::dumpId(const int* indices) {
    char id[text::LINE_BUFFER];
    if (enableDebugLog() != 0)
        formatId(indices, id, sizeof id);
}

void TableOperator::postRecord(const int* indices, std::uint64_t fields) {
    const int record = m_layout.recordIndex(indices);
    std::unique_ptr<Event> event(makeEvent(toVector(m_layout, indices), recordAt(record)));
    const int id = event->id();
    // While storing is forbidden the worker drops what it gets.
    if (getStoreFileFlag())
        m_pending->stored(record, id, fields);
    if (!Event::postOrDelete(parent(), event.release()))
        m_pending->failed(record, id);
    noteChange(record);
}

// --- what is stored and not on the disk, while the table is loaded anew ---

AbstractFileOperator::KeptStore TableOperator::keptStore(int record, std::uint64_t fields) {
    return {record, fields, std::vector<int>(recordAt(record), recordAt(record) + m_layout.fieldCount())};
}

std::vector<AbstractFileOperator::KeptStore> TableOperator::keptStores() {
    std::vector<KeptStore> kept;
    for (const PendingStores::Store& store : m_pending->all())
        kept.push_back(keptStore(store.record, store.fields));
    return kept;
}

void TableOperator::putFieldsOver(const KeptStore& store, int* record) const {
    for (int position = 0; position < m_layout.fieldCount(); ++position) {
        if ((store.fields & PendingStores::fieldAt(position)) != 0)
            record[position] = store.values[static_cast<std::size_t>(position)];
    }
}

void TableOperator::putBack(const std::vector<KeptStore>& stores, bool post) {
    for (const KeptStore& store : stores) {
        putFieldsOver(store, recordAt(store.record));
        if (!post)
            continue;
        // What is queued was copied from the table as it was.
        m_snapshotFloor.raise(store.record, EventIdGenerator::instance()->peekNextEventId());
        int indices[MAX_DIMENSIONS] = {};
        m_layout.indicesOf(store.record, indices);
        if (holdsRecord(store.record) || completeUnderStores(store.record)) {
            postRecord(indices, store.fields);
            continue;
        }
        const int id = EventIdGenerator::instance()->createNextEventId();
        m_pending->stored(store.record, id, store.fields);
        m_pending->failed(store.record, id);
    }
}

bool TableOperator::completeUnderStores(int record) {
    int indices[MAX_DIMENSIONS] = {};
    m_layout.indicesOf(record, indices);
    const std::vector<PendingStores::Store> stores = m_pending->all();
    const auto store = std::find_if(stores.begin(), stores.end(),
                                    [record](const PendingStores::Store& one) { return one.record == record; });
    const KeptStore kept = keptStore(record, store != stores.end() ? store->fields : 0);
    if (!completeRecord(toVector(m_layout, indices)))
        return false;
    putFieldsOver(kept, recordAt(record));
    return true;
}

void TableOperator::recordRead(const int* indices) {
    const int read = m_layout.recordIndex(indices);
    m_pending->drop(read);
    m_snapshotFloor.raise(read, EventIdGenerator::instance()->peekNextEventId());
}

// --- one record from the factory or current copy ---

bool TableOperator::restoreSetting(const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    SectionLock lock(m_criticalSection);
    return restoreOne(dims);
}

bool TableOperator::restoreOne(const std::vector<int>& dims) {
    const bool restored = loadDataFromManufactoryFile(dims);
    switchToNormal();
    closeIfReleased();
    if (restored) {
        recordRead(dims.data());
        postRecord(dims.data());
    }
    return restored;
}

bool TableOperator::restoreSettingFromCurrent(const std::vector<int>& dims) {
    if (!m_layout.restoresFromCurrent)
        return AbstractFileOperator::restoreSettingFromCurrent(dims);
    if (!checkRequest(dims))
        return false;
    SectionLock lock(m_criticalSection);
    if (!loadDataFromCurrentFile(dims)) {
        TD_WARNING(m_layout.restoreFromCurrentFailed, getFileFullPath());
        logWhere();
        return false;
    }
    // What is still queued for this section was just discarded (invariant 4).
    recordRead(dims.data());
    return true;
}

bool TableOperator::loadDataFromManufactoryFile(const std::vector<int>& dims) {
    const SectionStep step(m_criticalSection);
    dumpId(dims.data());
    if (!m_factoryVerified && !switchToManufactory())
        return false;
    TD_INFO("Load data from file [%s] when restore setting\n", getFileFullPath());
    return readSectionAt(dims);
}

bool TableOperator::loadDataFromCurrentFile(const std::vector<int>& dims) {
    const SectionStep step(m_criticalSection);
    const bool opened = openCurrent();
    TD_INFO("Load data from file [%s] when restore setting from current.\n", getFileFullPath());
    const bool read = opened && readSectionAt(dims);
    closeIfReleased();
    return read;
}

bool TableOperator::readSectionAt(const std::vector<int>& dims) {
    if (!searchSectionId(dims))
        return false;
    if (!sectionIsInFile() || !keysMatch() || !readRecord(recordAt(m_layout.recordIndex(dims.data())))) {
        TD_WARNING("dimension info %s is not matched , maybe the file content is not completed !!!\n",
                   idText(dims.data()).c_str());
        logWhere();
        return false;
    }
    return true;
}

/// The one section of a category without dimensions has no id to tell it, so its keys are compared.
bool TableOperator::keysMatch() {
    if (!m_layout.dimensions.empty())
        return true;
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    char line[text::LINE_BUFFER];
    for (const Field& field : m_layout.fields) {
        char key[text::KEY_WIDTH + 1] = {};
        int value = 0;
        if (!m_file.readLine(line, sizeof line) || !text::parseKeyLine(m_layout.keyLine, line, key, value) ||
            std::strcmp(key, field.key) != 0)
            return false;
    }
    return m_file.setPos(static_cast<int>(position));
}

// --- one record for many ---

bool TableOperator::restoreSettingForAllSource(const std::vector<int>& dims) {
    switch (m_layout.restoreForAllSources.kind) {
    case BulkRestore::Kind::NotOffered:
        return AbstractFileOperator::restoreSettingForAllSource(dims);
    case BulkRestore::Kind::SilentlyTrue:
        return true;
    case BulkRestore::Kind::PostChanged:
    case BulkRestore::Kind::PostEach:
        break;
    }
    if (!checkRequest(dims))
        return false;
    SectionLock lock(m_criticalSection);
    return m_layout.restoreForAllSources.kind == BulkRestore::Kind::PostEach ? restoreEach(dims) : restoreChanged(dims);
}

/// Until the end of its life the factory copy, once it was verified and as long as it is open, need not be again.
struct TableOperator::FactoryReading {
    explicit FactoryReading(TableOperator& reading) : op(reading) {}
    ~FactoryReading() TD_NO_THREAD_SAFETY_ANALYSIS { op.m_factoryVerified = false; }
    FactoryReading(const FactoryReading&) = delete;
    FactoryReading& operator=(const FactoryReading&) = delete;

    bool load(const int* indices) TD_NO_THREAD_SAFETY_ANALYSIS {
        op.m_factoryVerified = op.loadDataFromManufactoryFile(toVector(op.m_layout, indices));
        if (op.m_factoryVerified)
            op.recordRead(indices);
        return op.m_factoryVerified;
    }

    TableOperator& op;
};

bool TableOperator::restoreEach(const std::vector<int>& dims) {
    FactoryReading factory(*this);
    bool restored = true;
    AxisSweep sweep(m_layout, dims.data(), m_layout.restoreForAllSources.axes);
    for (; restored && !sweep.done(); sweep.next()) {
        restored = factory.load(sweep.indices());
        if (restored)
            postRecord(sweep.indices());
    }
    switchToNormal();
    closeIfReleased();
    return restored;
}

bool TableOperator::restoreChanged(const std::vector<int>& dims) {
    FactoryReading factory(*this);
    const int given = m_layout.recordIndex(dims.data());
    for (AxisSweep sweep(m_layout, dims.data(), m_layout.restoreForAllSources.axes); !sweep.done(); sweep.next()) {
        if (!factory.load(sweep.indices())) {
            TD_WARNING("Load data from file [%s] failed when restore setting\n", m_layout.file);
            logWhere();
            closeIfReleased();
            return false;
        }
        if (!sameValues(recordAt(m_layout.recordIndex(sweep.indices())), recordAt(given)))
            postRecord(sweep.indices());
    }
    switchToNormal();
    return true;
}

bool TableOperator::applySettingForAllSources(const std::vector<int>& dims) {
    if (m_layout.applyToAllSources.axes == 0)
        return AbstractFileOperator::applySettingForAllSources(dims);
    return copyToOthers(m_layout.applyToAllSources, dims);
}

bool TableOperator::applySettingForAllMode(const std::vector<int>& dims) {
    if (m_layout.applyToAllModes.axes == 0)
        return AbstractFileOperator::applySettingForAllMode(dims);
    return copyToOthers(m_layout.applyToAllModes, dims);
}

bool TableOperator::sameValues(const int* one, const int* other) const {
    return std::equal(one, one + m_layout.fieldCount(), other);
}

bool TableOperator::copyToOthers(const BulkCopy& copy, const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    std::vector<_Argument_t> none;
    if (!AbstractFileOperator::loadData(dims, none))
        return false;
    if (!getStoreFileFlag()) {
        TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
        return true;
    }
    if (copy.startMessage != nullptr)
        TD_INFO("%s", copy.startMessage);
    TimeUtil::instance()->start();
    {
        SectionLock lock(m_criticalSection);
        dumpRecord(dims.data());
        // Again, as for a single store.
        if (!getStoreFileFlag())
            return true;
        const WriteScope write(*this);
        if (copyRecord(copy, dims.data()))
            writeAtOnce();
        if (copy.writesAtOnce)
            setBackupReq(true);
    }
    TD_INFO(copy.endMessage, elapsedMilliseconds());
    return true;
}

bool TableOperator::copyRecord(const BulkCopy& copy, const int* indices) {
    const int* given = recordAt(m_layout.recordIndex(indices));
    bool anyAtOnce = false;
    for (AxisSweep sweep(m_layout, indices, copy.axes); !sweep.done(); sweep.next()) {
        const int record = m_layout.recordIndex(sweep.indices());
        int* other = recordAt(record);
        if (other == given || (copy.equal != nullptr ? copy.equal(other, given) : sameValues(other, given)))
            continue;
        std::copy_n(given, m_layout.fieldCount(), other);
        dumpRecord(sweep.indices());
        if (!copy.writesAtOnce) {
            postRecord(sweep.indices());
            continue;
        }
        addAtOnce(sweep.indices());
        anyAtOnce = true;
    }
    return anyAtOnce;
}

/// Goes past the queue, so what is queued for the section is out of date afterwards (invariant 4).
void TableOperator::addAtOnce(const int* indices) {
    const int record = m_layout.recordIndex(indices);
    const std::unique_ptr<Event> event(makeEvent(toVector(m_layout, indices), recordAt(record)));
    m_pending->stored(record, event->id(), PendingStores::ALL_FIELDS);
    m_writingAtOnce = true;
    syncSectionToFile(event.get());
    m_snapshotFloor.raise(record, EventIdGenerator::instance()->peekNextEventId());
    noteChange(record);
}

void TableOperator::writeAtOnce() {
    // No checksum makes good what is not all written: that is left to the redo record, or to the backup.
    if (!writeSections()) {
        TD_WARNING("write sections for file [%s] failed!\n", getFileFullPath());
        logWhere();
        return;
    }
    updateCrcCode();
}

// --- between a refresh from the factory copy and the reset of the current one ---

void TableOperator::tableRefreshed() {
    m_changedSinceRefresh.clear();
    m_refreshed = true;
}

void TableOperator::noteChange(int record) {
    if (m_refreshed)
        m_changedSinceRefresh.insert(record);
}

void TableOperator::postChangesSinceRefresh() {
    m_refreshed = false;
    const std::set<int> changed = std::exchange(m_changedSinceRefresh, {});
    m_pending->drop([&changed](int record) { return changed.count(record) == 0; });
    for (const int record : changed) {
        int indices[MAX_DIMENSIONS] = {};
        m_layout.indicesOf(record, indices);
        // A load may have taken the record out of the table again.
        if (holdsRecord(record) || completeUnderStores(record))
            postRecord(indices);
    }
}

// --- groups: categories that have none do nothing ---

bool TableOperator::loadDataForGroup(const std::vector<int>&, const std::vector<int>&, GroupArray&) {
    return true;
}

bool TableOperator::storeDataForGroup(const std::vector<int>&, const std::vector<int>&, const std::vector<int>&,
                                      GroupArray&) {
    return true;
}

bool TableOperator::loadDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                                SelfDefinedGroupArray&) {
    return true;
}

bool TableOperator::storeDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                                 SelfDefinedGroupArray&) {
    return true;
}

// --- writing ---

/// Says what becomes of an event's store, however the step ends.
struct TableOperator::SectionWriting {
    SectionWriting(PendingStores& pendingStores, int writtenRecord, int writtenEvent)
        : pending(pendingStores), record(writtenRecord), event(writtenEvent) {}
    ~SectionWriting() {
        if (!goesOn)
            pending.failed(record, event);
    }
    SectionWriting(const SectionWriting&) = delete;
    SectionWriting& operator=(const SectionWriting&) = delete;

    PendingStores& pending;
    const int record;
    const int event;
    bool goesOn = false;
};

bool TableOperator::syncSectionToFile(Event* event) {
    const SectionStep step(m_criticalSection);
    const bool atOnce = std::exchange(m_writingAtOnce, false);
    const int* record = event != nullptr ? recordOf(*event) : nullptr;
    if (record == nullptr || !checkRequest(event->dimensions()))
        return false;
    const int index = m_layout.recordIndex(event->dimensions().data());
    SectionWriting writing(*m_pending, index, event->id());
    // A write that was begun and never ended with its checksum.
    if (!atOnce)
        writeEnded(false);
    if (mergePending()) {
        // The value is in the table that is about to be written as a whole.
        m_pending->leftToMerge(index, event->id());
        noteSectionSkipped();
        writing.goesOn = true;
        return true;
    }
    // Nor does the queue wait for a process that is stopped: the store is tried again when the lock can be had.
    if (!atOnce)
        m_criticalSection.limitWaits(deadlineIn(LoadBudget::MILLISECONDS));
    if (!makeUpForLoad())
        return false;
    if (!atOnce && m_snapshotFloor.isStale(index, event->id())) {
        // It was taken back or replaced since.
        noteSectionSkipped();
        writing.goesOn = true;
        return true;
    }
    writing.goesOn = writeSnapshot(*event, record, atOnce);
    return writing.goesOn;
}

void TableOperator::writeEnded(bool done) {
    for (const InWrite& write : std::exchange(m_inWrite, {})) {
        if (done)
            m_pending->written(write.record, write.event);
        else
            m_pending->failed(write.record, write.event);
    }
}

bool TableOperator::writeSnapshot(const Event& event, const int* record, bool atOnce) {
    const std::vector<int>& dims = event.dimensions();
    if (mergeUnwritten() && !mergedByOther()) {
        if (!createFile())
            return false;
        noteSectionSkipped();
        return true;
    }
    dumpId(dims.data());
    takeFiles();
    if (!openCurrent()) {
        TD_WARNING("open file [%s] failed for storing data.\n", getFileFullPath());
        logWhere();
        return false;
    }
    if (!searchSectionId(dims) || !sectionIsInFile()) {
        TD_WARNING("search dimension failed , maybe the file content is not completed !!!\n");
        logWhere();
        closeIfReleased();
        return false;
    }
    const int index = m_layout.recordIndex(dims.data());
    bool added = addRecord(record);
    if (added) {
        m_inWrite.push_back({index, event.id()});
        if (!atOnce) {
            addFailed(index);
            added = writeSections();
        }
    }
    if (!added) {
        TD_WARNING("write section %s for file [%s] failed!\n", idText(dims.data()).c_str(), getFileFullPath());
        logWhere();
        if (!atOnce)
            writeEnded(false);
        return false;
    }
    return true;
}

void TableOperator::addFailed(int besides) {
    // So that the redo record stays a small one; what is left follows with the next write, or with the next retry.
    constexpr std::size_t MOST = 256;
    std::vector<int> record(m_layout.fields.size());
    for (const PendingStores::Store& store : m_pending->failedOnes()) {
        if (m_inWrite.size() >= MOST)
            return;
        const int position = contentPosition() + m_layout.keyLinesOffset(store.record);
        // Over what the file holds: the table's other fields may be those of a load that failed halfway.
        if (store.record == besides || !m_file.setPos(position) || !sectionIsInFile() || !readRecord(record.data()) ||
            !m_file.setPos(position))
            continue;
        putFieldsOver(keptStore(store.record, store.fields), record.data());
        if (addRecord(record.data()))
            m_inWrite.push_back({store.record, store.event});
    }
}

bool TableOperator::writeFailed() {
    if (mergeUnwritten() && !mergedByOther())
        return createFile();
    if (!m_pending->hasFailed())
        return true;
    if (!openCurrent())
        return false;
    writeEnded(false);
    const WriteScope write(*this);
    addFailed(-1);
    if (m_inWrite.empty()) {
        errno = ERANGE; // none of them fits its columns
        return false;
    }
    return writeSections() && updateCrcCode();
}

bool TableOperator::sectionIsInFile() {
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    return position + m_layout.keyLinesLength() <= FileUtil::getFileSize(getFileFullPath());
}

int TableOperator::formatId(const int* indices, char* out, int size) {
    const int length = text::formatSectionId(m_layout, indices, out, size);
    if (enableDebugLog() != 0)
        TD_DETAIL("Section ID is: %s", out);
    return length;
}

int TableOperator::formatContent(const int* record, char* out, int size) {
    const int length = text::formatSection(m_layout, record, out, size);
    if (enableDebugLog() != 0)
        TD_DETAIL("section content:\n%s", out);
    return length;
}

bool TableOperator::addRecord(const int* record) {
    char text[text::SECTION_BUFFER];
    const int length = formatContent(record, text, text::SECTION_BUFFER);
    // A widened line would run into the next section (invariant 3).
    return length == m_layout.keyLinesLength() && length < text::SECTION_BUFFER && addSection(text);
}

bool TableOperator::writeRecord(const int* indices, const int* record, bool withHeader) {
    char text[text::SECTION_BUFFER];
    constexpr int SIZE = text::SECTION_BUFFER;
    const int header = withHeader ? formatId(indices, text, SIZE) : 0;
    const int length = formatContent(record, text + header, SIZE - header);
    // A widened line would run into the next section (invariant 3).
    if (length != m_layout.keyLinesLength() || header + length >= SIZE)
        return false;
    return m_file.writeFile(text, true);
}

bool TableOperator::buildComments() {
    m_commentText = text::commentBlock(m_layout);
    return m_file.writeFile(m_commentText.c_str(), true);
}

bool TableOperator::buildContents(bool defaults) {
    const int records = m_layout.recordCount();
    std::string piece;
    piece.reserve(WRITE_PIECE + text::SECTION_BUFFER);
    for (int i = 0; i < records; ++i) {
        if (defaults) {
            for (const Field& field : m_layout.fields)
                recordAt(i)[field.position] = field.defaultValue;
        }
        appendSection(piece, i);
        if (piece.size() < WRITE_PIECE && i + 1 < records)
            continue;
        if (!m_file.writeFile(piece.c_str(), true))
            return false;
        piece.clear();
    }
    return true;
}

void TableOperator::appendSection(std::string& text, int record) {
    int indices[MAX_DIMENSIONS] = {};
    m_layout.indicesOf(record, indices);
    char line[text::LINE_BUFFER];
    text::formatSectionId(m_layout, indices, line, sizeof line);
    text += line;
    bool fits = true;
    for (const Field& field : m_layout.fields) {
        int value = recordAt(record)[field.position];
        if (!text::fitsColumns(m_layout.keyLine, value)) {
            fits = false;
            value = field.defaultValue;
        }
        text::formatKeyLine(m_layout.keyLine, field.key, value, line, sizeof line);
        text += line;
    }
    if (!fits) {
        TD_WARNING("write section %s for file [%s] failed!\n", idText(indices).c_str(), getFileFullPath());
        logWhere();
    }
}

// --- reading ---

bool TableOperator::searchSectionId(const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    if (!isLoaded()) {
        TD_WARNING("search file [%s] failed when searchSection%s because of loading file not finished.\n",
                   getFileFullPath(), searchText(dims.data()).c_str());
        logWhere();
        return false;
    }
    const int position = contentPosition() + m_layout.keyLinesOffset(m_layout.recordIndex(dims.data()));
    if (m_file.setPos(position))
        return true;
    TD_WARNING("set file [%s] to position [%d] bytes failed when searchSection%s.\n", getFileFullPath(), position,
               searchText(dims.data()).c_str());
    logWhere();
    return false;
}

bool TableOperator::readRecord(int* record) {
    char line[text::LINE_BUFFER];
    for (const Field& field : m_layout.fields) {
        if (!m_file.readLine(line, sizeof line))
            return false;
        m_section[static_cast<std::size_t>(field.position)] = text::valueByColumns(m_layout.keyLine, line);
    }
    std::copy(m_section.begin(), m_section.end(), record);
    return true;
}

bool TableOperator::loadContents() {
    int indices[MAX_DIMENSIONS] = {};
    return m_file.isOpend() && (loadWrittenSections(indices) || loadSectionsByLine(indices));
}

bool TableOperator::loadWrittenSections(int* indices) {
    long position = 0;
    if (!m_file.getCurrentPos(position))
        return false;
    const text::WrittenSection section(m_layout);
    const std::size_t length = static_cast<std::size_t>(section.length());
    char piece[READ_PIECE];
    std::size_t kept = 0;
    for (;;) {
        const std::size_t added = m_file.readBytes(piece + kept, sizeof piece - kept);
        const std::size_t count = kept + added;
        std::size_t read = 0;
        while (count - read >= length && loadWrittenSection(section, piece + read, indices))
            read += length;
        position += static_cast<long>(read);
        kept = count - read;
        if (kept == 0 && m_file.reachEnd())
            return true;
        // Something else begins here, or the file ends within a section.
        if (kept >= length || added == 0)
            break;
        std::memmove(piece, piece + read, kept);
    }
    m_file.setPos(static_cast<int>(position));
    return false;
}

bool TableOperator::loadWrittenSection(const text::WrittenSection& section, const char* text, int* last) {
    int indices[MAX_DIMENSIONS] = {};
    if (!section.read(text, indices, m_section.data()))
        return false;
    std::copy_n(indices, MAX_DIMENSIONS, last);
    std::copy(m_section.begin(), m_section.end(), recordAt(m_layout.recordIndex(indices)));
    dumpRecord(indices);
    return true;
}

bool TableOperator::loadSectionsByLine(int* indices) {
    char line[text::LINE_BUFFER];
    while (m_file.isOpend() && m_file.readLine(line, sizeof line)) {
        if (std::strchr(line, '[') == nullptr) {
            TD_WARNING("read section [%s] from file [%s] failed, Maybe the file format is wrong !!!\n", line,
                       getFileFullPath());
            return false;
        }
        if (!text::parseSectionId(m_layout, line, indices)) {
            TD_WARNING("parse section [%s] for file [%s] failed.\n", line, getFileFullPath());
            return false;
        }
        if (!m_layout.accepts(indices)) {
            TD_WARNING("The dimension value is invalid when load content.\n");
            return false;
        }
        if (!readRecord(recordAt(m_layout.recordIndex(indices)))) {
            TD_WARNING("read section [%s] from file [%s] failed, Maybe the file format is wrong !!!\n", line,
                       getFileFullPath());
            return false;
        }
        dumpRecord(indices);
    }
    return m_file.isOpend() && m_file.reachEnd();
}

bool TableOperator::loadContents_OTA() {
    int indices[MAX_DIMENSIONS] = {};
    std::vector<int> dropped(m_layout.fields.size());
    char line[text::LINE_BUFFER];
    bool endOfFile = false;
    bool atHeader = false;
    while (!endOfFile) {
        if (!atHeader && !m_file.readLine(line, sizeof line))
            break;
        atHeader = std::strchr(line, '[') != nullptr;
        if (!atHeader)
            continue;
        if (!text::parseSectionId(m_layout, line, indices)) {
            TD_WARNING("parse section [%s] for file [%s] failed.\n", line, getFileFullPath());
            return false;
        }
        // A section outside the ranges of this version is read and dropped (invariant 6).
        const bool known = m_layout.accepts(indices);
        int* record = known ? recordAt(m_layout.recordIndex(indices)) : dropped.data();
        if (!readRecordByKey(line, record, endOfFile))
            return false;
        if (known)
            dumpRecord(indices);
    }
    return m_file.isOpend() && m_file.reachEnd();
}

bool TableOperator::readRecordByKey(char* line, int* record, bool& endOfFile) {
    while (m_file.readLine(line, text::LINE_BUFFER)) {
        if (std::strchr(line, '[') != nullptr)
            return true;
        char key[text::KEY_WIDTH + 1];
        int value = 0;
        if (text::parseKeyLine(m_layout.keyLine, line, key, value))
            putField(key, value, record);
    }
    endOfFile = true;
    return m_file.isOpend() && m_file.reachEnd();
}

} // namespace td
