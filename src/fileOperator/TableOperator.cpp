#include <dataModule/fileOperator/TableOperator.h>

#include <algorithm>
#include <utility>

#include <dataModule/common/Event.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/common/TimeUtil.h>

#include "common/Log.h"
#include "fileOperator/TableState.h"
#include "fileOperator/text/TextLayout.h"
#include "fileOperator/ValueDump.h"

namespace td {

namespace {

const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

/// Logs a line about the indices of a request, if there is such a line and they are as many as there should be.
void logIndices(DebugOutput::Level level, const char* format, const CategoryLayout& layout,
                const std::vector<int>& dims) {
    if (format == nullptr || static_cast<int>(dims.size()) != layout.dimensionCount())
        return;
    int indices[MAX_DIMENSIONS] = {};
    std::copy(dims.begin(), dims.end(), indices);
    TD_LOG(level, format, indices[0], indices[1]);
}

bool sameValues(const CategoryLayout& layout, const int* one, const int* other) {
    return std::equal(one, one + layout.fieldCount(), other);
}

bool isForbidden(TableOperator& op) {
    if (op.getStoreFileFlag())
        return false;
    TD_INFO("store flag is false (maybe in store mode), so discard this request.\n");
    return true;
}

/// Reads records from the factory copy, which is verified once and stays open.
class FactoryReading {
public:
    FactoryReading(TableOperator& op, TableState& table) : m_op(op), m_table(table) {}

    bool read(const std::vector<int>& dims, int* record) {
        m_isOpen = m_isOpen || m_op.switchToManufactory();
        if (!m_isOpen)
            return false;
        TD_INFO("Load data from file [%s] when restore setting\n", m_op.getFileFullPath());
        m_isOpen = m_table.readSection(dims, record);
        return m_isOpen;
    }

private:
    TableOperator& m_op;
    TableState& m_table;
    bool m_isOpen = false;
};

} // namespace

TableOperator::TableOperator(const CategoryLayout& layout) : TableOperator(std::make_unique<TableState>(layout)) {}

TableOperator::TableOperator(std::unique_ptr<TableState> table)
    : AbstractFileOperator(table->layout.file, table->layout.version), m_table(std::move(table)) {
    m_table->attach(*this);
    declare(layoutOf().category, static_cast<int>(m_table->table.rows.bytes()));
}

/// A thread that writes a merged file needs the table.
TableOperator::~TableOperator() {
    waitForMerge();
}

const CategoryLayout& TableOperator::layoutOf() const {
    return m_table->layout;
}

std::string TableOperator::searchText(const int* indices) const {
    std::string name = text::sectionId(layoutOf(), indices);
    for (int d = layoutOf().dimensionCount() - 1; d > 0; --d)
        name.insert(static_cast<std::size_t>(d) + 1, layoutOf().searchSeparator);
    return name;
}

// --- requests ---

bool TableOperator::checkRequest(const std::vector<int>& dims) const {
    const int expected = layoutOf().dimensionCount();
    if (static_cast<int>(dims.size()) != expected) {
        TD_WARNING("The dimensions size [%d] is invalid ,expected size is: %d.\n", static_cast<int>(dims.size()),
                   expected);
        return false;
    }
    if (!layoutOf().accepts(dims.data())) {
        TD_WARNING("The dimension value is invalid.\n");
        return false;
    }
    return true;
}

bool TableOperator::loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) {
    if (!state().isLoaded())
        return AbstractFileOperator::loadData(dims, args);
    // Not timed: no line tells how long a read took, and two readings of the clock would be half of its work.
    const CategoryLayout& layout = m_table->layout;
    if ((dims.size() != layout.dimensions.size() || !layout.accepts(dims.data())) && !checkRequest(dims))
        return false;
    const int record = layout.recordIndex(dims.data());
    if (detailLogIsOn())
        dumpValues(dims.data());
    if (args.empty()) {
        int values[MAX_FIELDS];
        m_table->copyRecord(record, values);
        listFields(values, args);
        return true;
    }
    if (m_table->copyFields(record, args))
        return true;
    for (const _Argument_t& argument : args) {
        if (m_table->names.find(argument.name) == nullptr)
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
    }
    return true;
}

bool TableOperator::storeData(const std::vector<int>& dims, const std::vector<_Argument_t>& args) {
    if (isForbidden(*this))
        return true;
    TimeUtil::instance()->start();
    const CategoryLayout& layout = layoutOf();
    const StoreMessages& messages = layout.storeMessages;
    logIndices(DebugOutput::Level::Info, messages.asked, layout, dims);
    if (!checkRequest(dims)) {
        logIndices(DebugOutput::Level::Warning, messages.refused, layout, dims);
        return false;
    }
    int values[MAX_FIELDS];
    FieldSet fields = 0;
    for (const _Argument_t& argument : args) {
        const Field* const field = m_table->names.find(argument.name);
        if (field == nullptr) {
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
            continue;
        }
        values[field->position] = argument.value;
        fields |= fieldBit(field->position);
    }
    const TableState::Stored stored = m_table->store(layout.recordIndex(dims.data()), values, fields);
    if (stored == TableState::Stored::Refused)
        return false;
    if (stored == TableState::Stored::Forbidden)
        return isForbidden(*this);
    if (stored == TableState::Stored::Unchanged)
        TD_INFO("No field value is changed,so NEEDN'T store.\n");
    logIndices(DebugOutput::Level::Info, messages.updated, layout, dims);
    dumpValues(dims.data());
    TimeUtil::instance()->end();
    if (messages.completed != nullptr)
        TD_INFO(messages.completed, TimeUtil::instance()->getElapsed());
    if (layout.applyFlag != nullptr && getApplySettingFlag(PICTURE_GLOBAL, layout.applyFlag))
        applySettingForAllSources(dims);
    return true;
}

void TableOperator::listFields(const int* record, std::vector<_Argument_t>& args) const {
    args.reserve(args.size() + m_table->listed.size());
    for (const Field* field : m_table->listed)
        args.push_back({field->listing == Listing::Named ? field->argumentName() : nullptr, record[field->position]});
}

void TableOperator::getFields(const int* record, std::vector<_Argument_t>& args) const {
    for (_Argument_t& argument : args) {
        const Field* field = m_table->names.find(argument.name);
        if (field != nullptr)
            argument.value = record[field->position];
        else
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
    }
}

void TableOperator::putFields(const std::vector<_Argument_t>& args, int* record, bool& changed) const {
    for (const _Argument_t& argument : args) {
        const Field* const field = m_table->names.find(argument.name);
        if (field == nullptr) {
            TD_WARNING("The field [%s] is invalid.\n", textOrEmpty(argument.name));
            continue;
        }
        changed = changed || record[field->position] != argument.value;
        record[field->position] = argument.value;
    }
}

void TableOperator::putField(const char* key, int value, int* record) const {
    putFieldByKey(layoutOf(), key, value, record);
}

void TableOperator::dumpValues(const int* indices) {
    if (!detailLogIsOn())
        return;
    int record[MAX_FIELDS] = {};
    m_table->copyRecord(layoutOf().recordIndex(indices), record);
    dumpRecord(layoutOf(), indices, record);
}

void TableOperator::dumpId(const int* indices) {
    char id[text::LINE_BUFFER];
    if (detailLogIsOn())
        formatId(indices, id, sizeof id);
}

// --- one record from the factory or current copy ---

bool TableOperator::restoreSetting(const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    const SectionLock lock(state().lock);
    int record[MAX_FIELDS] = {};
    dumpId(dims.data());
    const bool restored = FactoryReading(*this, *m_table).read(dims, record);
    switchToNormal();
    state().closeIfReleased();
    if (restored)
        m_table->takeRecord(layoutOf().recordIndex(dims.data()), record, true);
    return restored;
}

bool TableOperator::restoreSettingFromCurrent(const std::vector<int>& dims) {
    if (!layoutOf().restoresFromCurrent)
        return AbstractFileOperator::restoreSettingFromCurrent(dims);
    if (!checkRequest(dims))
        return false;
    const SectionLock lock(state().lock);
    int record[MAX_FIELDS] = {};
    if (!m_table->readFromCurrent(dims, record)) {
        TD_WARNING(layoutOf().restoreFromCurrentFailed, getFileFullPath());
        logWhere();
        return false;
    }
    m_table->takeRecord(layoutOf().recordIndex(dims.data()), record, false);
    return true;
}

bool TableOperator::loadDataFromManufactoryFile(const std::vector<int>& dims) {
    const SectionStep step(state().lock);
    int record[MAX_FIELDS] = {};
    dumpId(dims.data());
    if (!checkRequest(dims) || !FactoryReading(*this, *m_table).read(dims, record))
        return false;
    m_table->putRecord(layoutOf().recordIndex(dims.data()), record);
    return true;
}

bool TableOperator::loadDataFromCurrentFile(const std::vector<int>& dims) {
    const SectionStep step(state().lock);
    int record[MAX_FIELDS] = {};
    if (!checkRequest(dims) || !m_table->readFromCurrent(dims, record))
        return false;
    m_table->putRecord(layoutOf().recordIndex(dims.data()), record);
    return true;
}

// --- one record for many ---

bool TableOperator::restoreSettingForAllSource(const std::vector<int>& dims) {
    switch (layoutOf().restoreForAllSources.kind) {
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
    const SectionLock lock(state().lock);
    return layoutOf().restoreForAllSources.kind == BulkRestore::Kind::PostEach ? restoreEach(dims)
                                                                               : restoreChanged(dims);
}

bool TableOperator::restoreEach(const std::vector<int>& dims) {
    FactoryReading factory(*this, *m_table);
    int record[MAX_FIELDS] = {};
    bool restored = true;
    for (AxisSweep sweep(layoutOf(), dims.data(), layoutOf().restoreForAllSources.axes); restored && !sweep.done();
         sweep.next()) {
        dumpId(sweep.indices());
        restored = factory.read(m_table->indicesOf(layoutOf().recordIndex(sweep.indices())), record);
        if (restored)
            m_table->takeRecord(layoutOf().recordIndex(sweep.indices()), record, true);
    }
    switchToNormal();
    state().closeIfReleased();
    return restored;
}

bool TableOperator::restoreChanged(const std::vector<int>& dims) {
    FactoryReading factory(*this, *m_table);
    const int given = layoutOf().recordIndex(dims.data());
    int record[MAX_FIELDS] = {};
    int addressed[MAX_FIELDS] = {};
    for (AxisSweep sweep(layoutOf(), dims.data(), layoutOf().restoreForAllSources.axes); !sweep.done(); sweep.next()) {
        const int swept = layoutOf().recordIndex(sweep.indices());
        dumpId(sweep.indices());
        if (!factory.read(m_table->indicesOf(layoutOf().recordIndex(sweep.indices())), record)) {
            TD_WARNING("Load data from file [%s] failed when restore setting\n", layoutOf().file);
            logWhere();
            state().closeIfReleased();
            return false;
        }
        m_table->copyRecord(given, addressed);
        m_table->takeRecord(swept, record, swept != given && !sameValues(layoutOf(), record, addressed));
    }
    switchToNormal();
    return true;
}

bool TableOperator::applySettingForAllSources(const std::vector<int>& dims) {
    if (layoutOf().applyToAllSources.axes == 0)
        return AbstractFileOperator::applySettingForAllSources(dims);
    return copyToOthers(layoutOf().applyToAllSources, dims);
}

bool TableOperator::applySettingForAllMode(const std::vector<int>& dims) {
    if (layoutOf().applyToAllModes.axes == 0)
        return AbstractFileOperator::applySettingForAllMode(dims);
    return copyToOthers(layoutOf().applyToAllModes, dims);
}

bool TableOperator::copyToOthers(const BulkCopy& copy, const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    std::vector<_Argument_t> none;
    if (!AbstractFileOperator::loadData(dims, none))
        return false;
    if (isForbidden(*this))
        return true;
    if (copy.startMessage != nullptr)
        TD_INFO("%s", copy.startMessage);
    TimeUtil::instance()->start();
    dumpValues(dims.data());
    if (!m_table->copyToOthers(copy, dims.data()))
        return true;
    if (copy.writesAtOnce)
        setBackupReq(true);
    TD_INFO(copy.endMessage, elapsedMilliseconds());
    return true;
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

// --- steps of the files ---

bool TableOperator::syncSectionToFile(Event* event) {
    const SectionStep step(state().lock);
    const int* const record = event != nullptr ? recordOf(*event) : nullptr;
    return record != nullptr && checkRequest(event->dimensions()) && m_table->beginWrite(*event, record);
}

int TableOperator::formatId(const int* indices, char* out, int size) {
    const int length = text::formatSectionId(layoutOf(), indices, out, size);
    if (detailLogIsOn())
        TD_DETAIL("Section ID is: %s", out);
    return length;
}

int TableOperator::formatContent(const int* record, char* out, int size) {
    const int length = text::formatSection(layoutOf(), record, out, size);
    if (detailLogIsOn())
        TD_DETAIL("section content:\n%s", out);
    return length;
}

bool TableOperator::acceptsIndices(const int* indices) const {
    return layoutOf().accepts(indices);
}

bool TableOperator::parseId(const char* line, int* indices) const {
    return text::parseSectionId(layoutOf(), line, indices);
}

bool TableOperator::writeRecord(const int* indices, const int* record, bool withHeader) {
    char text[text::SECTION_BUFFER];
    constexpr int SIZE = text::SECTION_BUFFER;
    const int header = withHeader ? formatId(indices, text, SIZE) : 0;
    const int length = formatContent(record, text + header, SIZE - header);
    // A widened line would run into the next section (invariant 3).
    if (length != layoutOf().keyLinesLength() || header + length >= SIZE)
        return false;
    return openedFile().writeFile(text, true);
}

bool TableOperator::buildComments() {
    commentText() = text::commentBlock(layoutOf());
    return openedFile().writeFile(commentText().c_str(), true);
}

bool TableOperator::buildContents(bool defaults) {
    return m_table->buildContents(defaults);
}

bool TableOperator::searchSectionId(const std::vector<int>& dims) {
    if (!checkRequest(dims))
        return false;
    if (isLoaded())
        return m_table->seek(dims.data());
    TD_WARNING("search file [%s] failed when searchSection%s because of loading file not finished.\n",
               getFileFullPath(), searchText(dims.data()).c_str());
    logWhere();
    return false;
}

bool TableOperator::loadContents() {
    return m_table->readContents();
}

bool TableOperator::loadContents_OTA() {
    return m_table->readContentsByKey();
}

bool TableOperator::readRecord(int* record) {
    return m_table->reader().readKeyLines(record);
}

bool TableOperator::readRecordByKey(char* line, int* record, bool& endOfFile) {
    return m_table->reader().readByKey(line, record, endOfFile);
}

} // namespace td
