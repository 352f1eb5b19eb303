/// A category's table with all that is done with it: what is stored on its way to the file, what is read on its way to
/// the table. TableOperator is the door to it.
///
/// The table's lock guards the table; the category's lock guards the files, and comes first. Stores and reads take only
/// the table's, so they wait for no write.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "fileOperator/FieldNames.h"
#include "fileOperator/file/CategoryState.h"
#include "fileOperator/SectionReader.h"
#include "fileOperator/table/PendingStores.h"
#include "fileOperator/table/RecordTable.h"

namespace td {

class Event;
class TableOperator;

class TableState : public Contents {
public:
    /// The layout outlives it.
    explicit TableState(const CategoryLayout& layout);
    ~TableState() override;
    /// Whose table it is; before anything else is called.
    void attach(TableOperator& owner);

    // Contents
    void enter() override;
    void leave() override;
    void beginLoad() override;
    void endLoad(Loaded how) override;
    void fileMade(bool defaults) override;
    void giveUpStores() override;
    void refreshed() override;
    void currentWasReset() override;
    bool writeFailed() override;
    bool hasFailed() const override { return pending->hasFailed(); }
    void mergeFailed() override { pending->mergeFailed(); }
    std::shared_ptr<PendingStores> pendingStores() const override { return pending; }

    // --- records; these take the table's lock ---

    /// A copy of the record, of as many values as it has fields.
    void copyRecord(int record, int* values);
    /// Fills in the named fields. False when a name is none of a field.
    bool copyFields(int record, std::vector<_Argument_t>& args);
    /// Stores those fields of one record, of which `values` has as many as the record: changes it, and posts its event.
    /// Unchanged: it had these values. Refused, with log lines: its other fields are not in the table and could not be
    /// read from the file. Forbidden: storing is not allowed any more.
    enum class Stored { Changed, Unchanged, Refused, Forbidden };
    Stored store(int record, const int* values, FieldSet fields);
    void putRecord(int record, const int* values);
    /// The whole record was read from a copy, in place of what was stored in it before; with `posts` it is written to
    /// the current copy too.
    void takeRecord(int record, const int* values, bool posts);
    /// Copies the record to the others that the copy visits and that differ. False when storing is not allowed any
    /// more.
    bool copyToOthers(const BulkCopy& copy, const int* indices);
    /// Posts a copy of the record, of which these fields were stored. The caller has the table's lock.
    void post(int record, FieldSet fields) TD_REQUIRES(table.mutex);

    // --- reading files; the caller holds the category's lock ---

    SectionReader reader() { return {layout, files->file.stream(), files->file.path()}; }
    /// Reads the open file's sections from the current position on, as a load does.
    virtual bool readContents();
    bool readContentsByKey();
    /// Positions the open file at the record's key lines; with log lines when that fails.
    bool seek(const int* indices);
    /// Reads one record from the open file, of a category that is loaded.
    bool readSection(const std::vector<int>& dims, int* record);
    bool readFromCurrent(const std::vector<int>& dims, int* record);
    /// Makes sure that the table holds the whole record, under what was stored in it.
    bool complete(int record);

    // --- writing files; the caller holds the category's lock ---

    /// Begins the write of an event's record, which updateCrcCode() ends.
    bool beginWrite(const Event& event, const int* record);
    bool buildContents(bool defaults);

    std::vector<int> indicesOf(int record) const;

    const CategoryLayout& layout;
    const FieldNames names;
    const std::vector<const Field*> listed; ///< in a whole-record answer
    TableOperator* op = nullptr;
    CategoryState* files = nullptr;
    const std::shared_ptr<PendingStores> pending = std::make_shared<PendingStores>();
    RecordTable table;

protected:
    bool isLoading() const { return m_load.has_value(); }
    /// Where a load reads to.
    Rows& loadedRows() { return m_load->rows; }
    /// Changes the fields of the record, and posts its event. False when it had these values; a store of all fields is
    /// one always.
    bool storeLocked(int record, const int* values, FieldSet fields) TD_REQUIRES(table.mutex);

private:
    struct Load {
        Rows rows;
        int firstEvent; ///< that was not stored before it began
    };
    class StoresInWrite;
    /// What a write takes along.
    struct InWrite {
        int record = 0;
        int event = 0;
    };
    /// Writes these values to all of them at once, past the queue, and their checksum. The caller holds the category's
    /// lock.
    void writeAtOnce(const std::vector<InWrite>& atOnce, const int* values);
    /// Changes the others in the table, to what becomes `given`. What is to be written at once goes to `atOnce`.
    void copyInTable(const BulkCopy& copy, const int* indices, int* given, std::vector<InWrite>& atOnce)
        TD_REQUIRES(table.mutex);
    bool writeEvent(const Event& event, const int* record);
    /// What stays of the table's values over those that were read, by record.
    std::map<int, FieldSet> storesToKeep(Loaded how) const TD_REQUIRES(table.mutex);
    /// Takes over what was loaded, unless a record that is to be kept in part has yet to be read: that becomes
    /// `missing`.
    bool publish(Loaded how, const std::set<int>& unreadable, int& missing) TD_EXCLUDES(table.mutex);
    void noteChange(int record) TD_REQUIRES(table.mutex);
    /// Adds the record's section to a write.
    bool addSection(SectionWrite& write, int record, const int* values);
    /// The same for the records whose writes failed, but for that of the write that takes them along.
    void addFailed(SectionWrite& write, StoresInWrite& stores, int besides);
    bool fitsFile(int record);

    std::optional<Load> m_load; ///< guarded by the category's lock
    int m_builtBefore = 0;      ///< the same; the first event that the contents built last do not have
};

} // namespace td
