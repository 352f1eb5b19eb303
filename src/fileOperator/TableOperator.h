/// A category's table and everything that is done with it, driven by the category's layout. Records are rows of plain
/// integers here; CategoryOperator puts the record type back on top.
///
/// Threads: data operations may be called from any thread. Reads are answered from the table alone; stores change the
/// table and post an event, and wait for no write; the worker writes the event's copy of the record. Steps are called
/// with the critical section held, or hold the lock of the files for their own length.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <dataModule/fileOperator/AbstractFileOperator.h>

namespace td {

struct BulkCopy;
struct CategoryLayout;
class TableState;

class DATAMODULE_API TableOperator : public AbstractFileOperator {
public:
    ~TableOperator() override;

    // IFileOperator
    bool loadData(const std::vector<int>& dims, std::vector<_Argument_t>& args) override;
    bool storeData(const std::vector<int>& dims, const std::vector<_Argument_t>& args) override;
    bool restoreSetting(const std::vector<int>& dims) override;
    bool restoreSettingForAllSource(const std::vector<int>& dims) override;
    bool restoreSettingFromCurrent(const std::vector<int>& dims) override;
    bool applySettingForAllSources(const std::vector<int>& dims) override;
    bool applySettingForAllMode(const std::vector<int>& dims) override;
    bool syncSectionToFile(Event* event) override;
    bool loadDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, GroupArray& data) override;
    bool storeDataForGroup(const std::vector<int>& dims, const std::vector<int>& list, const std::vector<int>& list2,
                           GroupArray& data) override;
    bool loadDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                     SelfDefinedGroupArray& data) override;
    bool storeDataForSelfDefinedGroup(const std::vector<int>& start, const std::vector<int>& end,
                                      SelfDefinedGroupArray& data) override;
    bool buildComments() override;
    bool buildContents(bool defaults) override;
    bool loadContents() override;
    bool loadContents_OTA() override;
    using AbstractFileOperator::searchSectionId;
    bool searchSectionId(const std::vector<int>& dims) override;

    /// Reads one record from the factory copy into the table; that copy stays open. The caller holds the critical
    /// section.
    bool loadDataFromManufactoryFile(const std::vector<int>& dims);
    /// Reads one record from the current copy into the table. The caller holds the critical section.
    bool loadDataFromCurrentFile(const std::vector<int>& dims);

    const CategoryLayout& layoutOf() const;

protected:
    /// The layout outlives the operator.
    explicit TableOperator(const CategoryLayout& layout);
    /// With a table of the category's own kind.
    explicit TableOperator(std::unique_ptr<TableState> table);

    /// The category's event with a copy of `record`; the caller owns it.
    virtual Event* makeEvent(const std::vector<int>& dims, const int* record) = 0;
    /// The record that an event of this category carries; null for any other event.
    virtual const int* recordOf(const Event& event) const = 0;

    // --- the steps behind the typed members of CategoryOperator ---

    bool acceptsIndices(const int* indices) const;
    int formatId(const int* indices, char* out, int size);
    bool parseId(const char* line, int* indices) const;
    int formatContent(const int* record, char* out, int size);
    bool writeRecord(const int* indices, const int* record, bool withHeader);
    /// Reads the key lines of one section by position; `record` is untouched on failure.
    bool readRecord(int* record);
    /// Reads the key lines of one section by key, up to the next header line, which is left in `line` (128 bytes), or
    /// the end of the file.
    bool readRecordByKey(char* line, int* record, bool& endOfFile);
    void listFields(const int* record, std::vector<_Argument_t>& args) const;
    void getFields(const int* record, std::vector<_Argument_t>& args) const;
    void putFields(const std::vector<_Argument_t>& args, int* record, bool& changed) const;
    void putField(const char* key, int value, int* record) const;
    /// Logs one record of the table, if the detail log is on.
    void dumpValues(const int* indices);

    /// Checks number and range of a request's indices, with a log line when they are wrong.
    bool checkRequest(const std::vector<int>& dims) const;
    TableState& table() const { return *m_table; }

private:
    friend class TableState;

    /// The section as lines about a search name it.
    std::string searchText(const int* indices) const;
    /// Logs the id of the section that is about to be read or written, if the detail log is on.
    void dumpId(const int* indices);
    bool copyToOthers(const BulkCopy& copy, const std::vector<int>& dims);
    bool restoreEach(const std::vector<int>& dims);
    bool restoreChanged(const std::vector<int>& dims);

    const std::unique_ptr<TableState> m_table;
};

} // namespace td
