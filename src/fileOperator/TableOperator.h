/// A category's table and everything that is done with it, driven by the category's layout. Records are rows of plain
/// integers here; CategoryOperator puts the record type back on top.
///
/// Threads: data operations may be called from any thread; they take the critical section themselves. Steps marked as
/// requiring it are called with it held. Reads are answered from the table alone; stores change the table and post an
/// event; the worker writes the event's copy of the record.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/fileOperator/CategoryLayout.h>
#include <dataModule/fileOperator/FieldNames.h>
#include <dataModule/platform/DebugOutput.h>

namespace td {

class Event;
namespace text {
class WrittenSection;
} // namespace text

class DATAMODULE_API TableOperator : public AbstractFileOperator {
public:
    // IFileOperator
    bool loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) override TD_EXCLUDES(m_criticalSection);
    bool storeData(const std::vector<int>& dims, const std::vector<_Argument_t>& args) override
        TD_EXCLUDES(m_criticalSection);
    bool restoreSetting(const std::vector<int>& dims) override TD_EXCLUDES(m_criticalSection);
    bool restoreSettingForAllSource(const std::vector<int>& dims) override TD_EXCLUDES(m_criticalSection);
    bool restoreSettingFromCurrent(const std::vector<int>& dims) override TD_EXCLUDES(m_criticalSection);
    bool applySettingForAllSources(const std::vector<int>& dims) override TD_EXCLUDES(m_criticalSection);
    bool applySettingForAllMode(const std::vector<int>& dims) override TD_EXCLUDES(m_criticalSection);
    bool syncSectionToFile(Event* event) override TD_REQUIRES(m_criticalSection);
    bool loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, GroupArray& data) override;
    bool storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, const std::vector<int>& list2,
                           GroupArray& data) override;
    bool loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                     SelfDefinedGroupArray& data) override;
    bool storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                      SelfDefinedGroupArray& data) override;
    bool buildComments() override TD_REQUIRES(m_criticalSection);
    bool buildContents(bool defaults) override TD_REQUIRES(m_criticalSection);
    bool loadContents() override TD_REQUIRES(m_criticalSection);
    bool loadContents_OTA() override TD_REQUIRES(m_criticalSection);
    using AbstractFileOperator::searchSectionId;
    bool searchSectionId(const std::vector<int>& dims) override TD_REQUIRES(m_criticalSection);

    /// Reads one record from the factory copy into the table; that copy stays open. The caller holds the critical
    /// section.
    virtual bool loadDataFromManufactoryFile(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);
    /// Reads one record from the current copy into the table. The caller holds the critical section.
    bool loadDataFromCurrentFile(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);

    const CategoryLayout& layoutOf() const { return m_layout; }

protected:
    /// The layout outlives the operator.
    explicit TableOperator(const CategoryLayout& layout);

    /// The category's event with a copy of `record`; the caller owns it.
    virtual Event* makeEvent(const std::vector<int>& dims, const int* record) = 0;
    /// The record that an event of this category carries; null for any other event.
    virtual const int* recordOf(const Event& event) const = 0;
    /// Whether the table holds the whole record; a table that is always read whole does.
    virtual bool holdsRecord(int /*record*/) const TD_REQUIRES(m_criticalSection) { return true; }
    /// Reads a record that it does not hold from the current copy. False when that cannot be done.
    virtual bool completeRecord(const std::vector<int>&) TD_REQUIRES(m_criticalSection) { return true; }

    std::vector<KeptStore> keptStores() override TD_REQUIRES(m_criticalSection);
    void putBack(const std::vector<KeptStore>& stores, bool post) override TD_REQUIRES(m_criticalSection);
    void writeEnded(bool done) override TD_REQUIRES(m_criticalSection);
    bool writeFailed() override TD_REQUIRES(m_criticalSection);
    void postChangesSinceRefresh() override TD_REQUIRES(m_criticalSection);
    void tableRefreshed() override TD_REQUIRES(m_criticalSection);

    // --- the steps behind the typed members of CategoryOperator ---

    bool acceptsIndices(const int* indices) const { return m_layout.accepts(indices); }
    int formatId(const int* indices, char* out, int size);
    int formatContent(const int* record, char* out, int size);
    bool writeRecord(const int* indices, const int* record, bool withHeader) TD_REQUIRES(m_criticalSection);
    /// Reads the key lines of one section by position; `record` is untouched on failure.
    bool readRecord(int* record) TD_REQUIRES(m_criticalSection);
    /// Reads the key lines of one section by key, up to the next header line, which is left in `line` (LINE_BUFFER
    /// bytes), or the end of the file.
    bool readRecordByKey(char* line, int* record, bool& endOfFile) TD_REQUIRES(m_criticalSection);
    void listFields(const int* record, std::vector<_Argument_t>& args) const;
    void getFields(const int* record, std::vector<_Argument_t>& args) const;
    /// The fields that were named, a bit for each (PendingStores::Fields).
    std::uint64_t putFields(const std::vector<_Argument_t>& args, int* record, bool& changed) const;
    void putField(const char* key, int value, int* record) const;
    /// Logs one record of the table, if the detail log is on.
    void dumpRecord(const int* indices) TD_REQUIRES(m_criticalSection);
    /// Logs the id of the section that is about to be read or written, if the detail log is on.
    void dumpId(const int* indices);

    /// The record in the table; its indices have been checked.
    int* recordAt(int record) TD_REQUIRES(m_criticalSection) {
        return m_table.data() + static_cast<std::size_t>(record) * static_cast<std::size_t>(m_layout.fieldCount());
    }
    /// Checks number and range of a request's indices, with a log line when they are wrong.
    bool checkRequest(const std::vector<int>& dims) const;
    /// Posts a snapshot of the record, of which these fields were stored (PendingStores::Fields).
    void postRecord(const int* indices, std::uint64_t fields = ~std::uint64_t{0}) TD_REQUIRES(m_criticalSection);
    /// What logs call the section: its id with brackets.
    std::string idText(const int* indices) const;

private:
    /// The section as lines about a search name it.
    std::string searchText(const int* indices) const;
    /// Logs a line about the indices of a request, if there is such a line and they are as many as there should be.
    void logIndices(DebugOutput::Level level, const char* format, const std::vector<int>& dims) const;
    bool sameValues(const int* one, const int* other) const;
    bool copyToOthers(const BulkCopy& copy, const std::vector<int>& dims) TD_EXCLUDES(m_criticalSection);
    /// Copies the record to the others that the copy visits. Whether some are to be written at once.
    bool copyRecord(const BulkCopy& copy, const int* indices) TD_REQUIRES(m_criticalSection);
    /// Writes what was added.
    void writeAtOnce() TD_REQUIRES(m_criticalSection);
    /// Adds the record's section to those that writeSections() is to write.
    bool addRecord(const int* record) TD_REQUIRES(m_criticalSection);
    /// The same, at their places, for the records whose writes failed, but for that of the write that takes them along.
    void addFailed(int besides) TD_REQUIRES(m_criticalSection);
    /// Makes sure that the table holds the whole record, under what was stored in it.
    bool completeUnderStores(int record) TD_REQUIRES(m_criticalSection);
    /// The fields of the store that is pending for the record, as the table holds them.
    KeptStore keptStore(int record, std::uint64_t fields) TD_REQUIRES(m_criticalSection);
    void putFieldsOver(const KeptStore& store, int* record) const;
    /// The record was read from a copy: what was stored before is given up.
    void recordRead(const int* indices) TD_REQUIRES(m_criticalSection);
    struct SectionWriting;
    void addAtOnce(const int* indices) TD_REQUIRES(m_criticalSection);
    struct FactoryReading;
    bool restoreOne(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);
    bool restoreChanged(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);
    bool restoreEach(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);
    /// Writes the snapshot unless it is out of date.
    bool writeSnapshot(const Event& event, const int* record, bool atOnce) TD_REQUIRES(m_criticalSection);
    /// Positions the open file at the section and reads it into the table.
    bool readSectionAt(const std::vector<int>& dims) TD_REQUIRES(m_criticalSection);
    bool keysMatch() TD_REQUIRES(m_criticalSection);
    /// Whether the file holds the whole section that starts at the current position.
    bool sectionIsInFile() TD_REQUIRES(m_criticalSection);
    /// Appends a section; values that do not fit their columns are replaced by the defaults, with a log line.
    void appendSection(std::string& text, int record) TD_REQUIRES(m_criticalSection);
    void noteChange(int record) TD_REQUIRES(m_criticalSection);
    /// Loads sections from the current position on as long as they stand as they are written. Whether that was all; if
    /// not, the file stands at the first that is otherwise, and `indices` are those of the section before it.
    bool loadWrittenSections(int* indices) TD_REQUIRES(m_criticalSection);
    bool loadWrittenSection(const text::WrittenSection& section, const char* text, int* last)
        TD_REQUIRES(m_criticalSection);
    /// Loads the sections from the current position on, in whatever form. A header that leaves an index open takes that
    /// of the section before, at first from `indices`.
    bool loadSectionsByLine(int* indices) TD_REQUIRES(m_criticalSection);

    const CategoryLayout& m_layout;
    const FieldNames m_names;
    const std::vector<const Field*> m_listed; ///< in a whole-record answer
    std::vector<int> m_table TD_GUARDED_BY(m_criticalSection);
    std::vector<int> m_section TD_GUARDED_BY(m_criticalSection); ///< the record being read, until it is whole
    /// Between a refresh from the factory copy and the reset of the current one: the records stored meanwhile.
    std::set<int> m_changedSinceRefresh TD_GUARDED_BY(m_criticalSection);
    /// What is being written: it is on the disk when the checksum is.
    struct InWrite {
        int record = 0;
        int event = 0;
    };
    std::vector<InWrite> m_inWrite TD_GUARDED_BY(m_criticalSection);
    bool m_writingAtOnce TD_GUARDED_BY(m_criticalSection) = false; ///< the snapshot to be written is the newest
    bool m_refreshed TD_GUARDED_BY(m_criticalSection) = false;
    bool m_factoryVerified TD_GUARDED_BY(m_criticalSection) = false; ///< the open file is the factory copy
};

} // namespace td
