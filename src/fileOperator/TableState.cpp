#include "fileOperator/TableState.h"

#include <algorithm>
#include <utility>

#include <dataModule/common/Event.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/fileOperator/TableOperator.h>

#include "common/Log.h"
#include "fileOperator/text/TextLayout.h"

namespace td {

namespace {

int nextEvent() {
    return EventIdGenerator::instance()->peekNextEventId();
}

/// It is in record order, which is not always the order of the key lines.
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

} // namespace

TableState::TableState(const CategoryLayout& categoryLayout)
    : layout(categoryLayout), names(categoryLayout), listed(listedFields(categoryLayout)),
      table(categoryLayout.recordCount(), categoryLayout.fieldCount()) {}

TableState::~TableState() = default;

void TableState::attach(TableOperator& owner) {
    op = &owner;
    files = &owner.state();
    files->contents = this;
}

std::vector<int> TableState::indicesOf(int record) const {
    int indices[MAX_DIMENSIONS] = {};
    layout.indicesOf(record, indices);
    return {indices, indices + layout.dimensionCount()};
}

void TableState::enter() {
    table.mutex.enter();
}

void TableState::leave() {
    table.mutex.leave();
}

// --- stores ---

void TableState::copyRecord(int record, int* values) {
    const TableLock lock(table.mutex);
    std::copy_n(table.rows.at(record), layout.fieldCount(), values);
}

bool TableState::copyFields(int record, std::vector<_Argument_t>& args) {
    bool areKnown = true;
    const TableLock lock(table.mutex);
    const int* const row = table.rows.at(record);
    for (_Argument_t& argument : args) {
        const Field* const field = names.find(argument.name);
        if (field != nullptr)
            argument.value = row[field->position];
        else
            areKnown = false;
    }
    return areKnown;
}

TableState::Stored TableState::store(int record, const int* values, FieldSet fields) {
    const NoCancel noCancel;
    for (;;) {
        {
            const TableLock lock(table.mutex);
            // Whoever forbade storing meanwhile has dropped what was pending, and this would come after it.
            if (!op->getStoreFileFlag())
                return Stored::Forbidden;
            // While nothing is loaded there is no file to complete it from; the load does that.
            if (!files->isLoaded() || table.rows.holds(record))
                return storeLocked(record, values, fields) ? Stored::Changed : Stored::Unchanged;
        }
        const SectionLock lock(files->lock);
        if (!complete(record))
            return Stored::Refused;
    }
}

bool TableState::storeLocked(int record, const int* values, FieldSet fields) {
    const int* const row = table.rows.at(record);
    bool changed = fields == ALL_FIELDS;
    for (int position = 0; position < layout.fieldCount(); ++position)
        changed = changed || ((fields & fieldBit(position)) != 0 && row[position] != values[position]);
    // What is a change of the values that are being loaded shows when they are there.
    if (table.storedMeanwhile)
        (*table.storedMeanwhile)[record] |= fields;
    if (!changed)
        return false;
    table.rows.put(record, values, fields);
    post(record, fields);
    return true;
}

void TableState::post(int record, FieldSet fields) {
    std::unique_ptr<Event> event(op->makeEvent(indicesOf(record), table.rows.at(record)));
    const int id = event->id();
    // While storing is forbidden the worker drops what it gets.
    if (op->getStoreFileFlag())
        pending->stored(record, id, fields);
    if (!Event::postOrDelete(files->parent, event.release()))
        pending->failed(record, id);
    noteChange(record);
}

void TableState::noteChange(int record) {
    if (table.storedSinceRefresh)
        table.storedSinceRefresh->insert(record);
}

void TableState::takeRecord(int record, const int* values, bool posts) {
    const TableLock lock(table.mutex);
    table.rows.put(record, values);
    // What is queued for the record was just discarded (invariant 4).
    pending->drop(record);
    table.floor.raise(record, nextEvent());
    if (posts)
        post(record, ALL_FIELDS);
}

void TableState::putRecord(int record, const int* values) {
    const TableLock lock(table.mutex);
    table.rows.put(record, values);
}

bool TableState::complete(int record) {
    const auto isThere = [&] {
        const TableLock lock(table.mutex);
        return table.rows.holds(record);
    };
    if (isThere())
        return true;
    int read[MAX_FIELDS] = {};
    const std::vector<int> indices = indicesOf(record);
    if (!readFromCurrent(indices, read)) {
        TD_WARNING("store to section %s is refused, for its other fields couldn't be read from file [%s].\n",
                   text::sectionId(layout, indices.data()).c_str(), files->file.path().load());
        files->logWhere();
        return false;
    }
    const TableLock lock(table.mutex);
    Rows& rows = table.rows;
    if (rows.holds(record))
        return true;
    int stored[MAX_FIELDS] = {};
    std::copy_n(rows.at(record), layout.fieldCount(), stored);
    rows.put(record, read);
    rows.put(record, stored, pending->fieldsOf(record));
    return true;
}

bool TableState::copyToOthers(const BulkCopy& copy, const int* indices) {
    const NoCancel noCancel;
    int given[MAX_FIELDS] = {};
    std::vector<InWrite> atOnce;
    {
        // What is copied while a load is under way would be half of one table and half of another.
        const auto mayCopy = [&]() TD_REQUIRES(table.mutex) { return !copy.writesAtOnce && !table.storedMeanwhile; };
        const TableLock lock(table.mutex);
        if (!op->getStoreFileFlag())
            return false;
        if (mayCopy()) {
            copyInTable(copy, indices, given, atOnce);
            return true;
        }
    }
    const SectionLock fileLock(files->lock);
    const auto copyNow = [&] {
        const TableLock lock(table.mutex);
        const bool mayStore = op->getStoreFileFlag();
        if (mayStore)
            copyInTable(copy, indices, given, atOnce);
        return mayStore;
    };
    try {
        if (!copyNow())
            return false;
        if (!atOnce.empty())
            writeAtOnce(atOnce, given);
    } catch (...) {
        for (const InWrite& store : atOnce)
            pending->failed(store.record, store.event);
        throw;
    }
    return true;
}

void TableState::copyInTable(const BulkCopy& copy, const int* indices, int* given, std::vector<InWrite>& atOnce) {
    Rows& rows = table.rows;
    const int from = layout.recordIndex(indices);
    std::copy_n(rows.at(from), layout.fieldCount(), given);
    for (AxisSweep sweep(layout, indices, copy.axes); !sweep.done(); sweep.next()) {
        const int record = layout.recordIndex(sweep.indices());
        const int* const other = rows.at(record);
        const bool isEqual =
            copy.equal != nullptr ? copy.equal(other, given) : std::equal(given, given + layout.fieldCount(), other);
        if (record == from || isEqual)
            continue;
        rows.put(record, given);
        if (!copy.writesAtOnce) {
            post(record, ALL_FIELDS);
            continue;
        }
        // Goes past the queue, so what is queued for the record is out of date from here on (invariant 4).
        atOnce.push_back({record, EventIdGenerator::instance()->createNextEventId()});
        pending->stored(record, atOnce.back().event, ALL_FIELDS);
        table.floor.raise(record, nextEvent());
        noteChange(record);
    }
}

// --- loads ---

void TableState::beginLoad() {
    const TableLock lock(table.mutex);
    m_load = Load{table.rows, nextEvent()};
    table.storedMeanwhile.emplace();
}

std::map<int, FieldSet> TableState::storesToKeep(Loaded how) const {
    std::map<int, FieldSet> stores = *table.storedMeanwhile;
    if (how == Loaded::Kept) {
        for (const PendingStores::Store& store : pending->all())
            stores[store.record] |= store.fields;
    }
    return stores;
}

void TableState::endLoad(Loaded how) {
    std::set<int> unreadable;
    int missing = 0;
    // A record that a store named some fields of, and that the load did not read, is read for it.
    while (how != Loaded::Failed && !publish(how, unreadable, missing)) {
        int read[MAX_FIELDS] = {};
        if (files->openCurrent() && fitsFile(missing) && reader().readKeyLines(read))
            m_load->rows.put(missing, read);
        else
            unreadable.insert(missing);
    }
    m_load.reset();
    const TableLock lock(table.mutex);
    table.storedMeanwhile.reset();
}

bool TableState::publish(Loaded how, const std::set<int>& unreadable, int& missing) {
    const TableLock lock(table.mutex);
    const std::map<int, FieldSet> stores = storesToKeep(how);
    Rows& loaded = m_load->rows;
    for (const auto& [record, fields] : stores) {
        missing = record;
        if (how != Loaded::AsItIs && !loaded.holds(record) && fields != ALL_FIELDS && unreadable.count(record) == 0)
            return false;
    }
    if (how == Loaded::Dropped) {
        table.floor.raiseAll(nextEvent());
        pending->dropBefore(m_load->firstEvent);
    }
    for (const auto& [record, fields] : stores) {
        loaded.put(record, table.rows.at(record), fields);
    }
    std::swap(table.rows, loaded);
    if (how == Loaded::AsItIs)
        return true;
    for (const auto& [record, fields] : stores) {
        // What is queued was copied from the table as it was.
        table.floor.raise(record, nextEvent());
        if (unreadable.count(record) == 0) {
            post(record, fields);
            continue;
        }
        const int id = EventIdGenerator::instance()->createNextEventId();
        pending->stored(record, id, fields);
        pending->failed(record, id);
    }
    return true;
}

void TableState::fileMade(bool defaults) {
    const TableLock lock(table.mutex);
    // The table is on the disk as it was when the contents were built (invariant 4).
    table.floor.raiseAll(m_builtBefore);
    if (defaults)
        pending->dropBefore(m_builtBefore);
    else
        pending->allWrittenBefore(m_builtBefore);
}

void TableState::giveUpStores() {
    const TableLock lock(table.mutex);
    table.floor.raiseAll(nextEvent());
    pending->drop();
}

// --- between a refresh from the factory copy and the reset of the current one ---

void TableState::refreshed() {
    const TableLock lock(table.mutex);
    table.storedSinceRefresh.emplace();
}

void TableState::currentWasReset() {
    std::set<int> changed;
    {
        const TableLock lock(table.mutex);
        table.floor.raiseAll(nextEvent());
        if (table.storedSinceRefresh)
            changed = std::move(*table.storedSinceRefresh);
        table.storedSinceRefresh.reset();
        pending->drop([&changed](int record) { return changed.count(record) == 0; });
    }
    for (const int record : changed) {
        // A load may have taken the record out of the table again.
        if (!complete(record))
            continue;
        const TableLock lock(table.mutex);
        post(record, ALL_FIELDS);
    }
}

} // namespace td
