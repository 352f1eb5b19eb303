/// A change of a category's current file: its state before, what the request will make of it, the proof that the file
/// holds that, and the answer that says what changed.
///
/// The order: the constructor; put() and copyTo() for all that will change; the requests to the library; prove(); then
/// report().
#pragma once

#include <string>
#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "FileTable.h"
#include "Selection.h"
#include "Session.h"
#include "ui/Output.h"

namespace td::dmctl {

class Change {
public:
    /// Loads the category in a started session. Throws Failure when its current file has faults even then.
    Change(Session& session, const CategoryLayout& layout);

    const CategoryLayout& layout() const { return m_layout; }
    /// A field of a record will have this value; it was asked for.
    void put(const Record& record, const Field& field, int value);
    /// All fields of a record will be those of another table; they were asked for.
    void put(const Record& record, const FileTable& values);
    /// The record will be copied to those that the copy visits; whether that was asked for, or comes with a change.
    void copyTo(const Record& record, const BulkCopy& copy, bool asked);

    /// Waits until the library has written what was stored, ends the session and reads the file again. Throws Failure
    /// when it does not hold what it should.
    void prove();
    /// Prints what changed. `applied`: the flag that made a change of one record go to others, or null.
    void report(const Options& options, const char* applied = nullptr) const;

private:
    std::size_t numberOf(const Record& record) const;
    void waitStored();
    bool changed(const Record& record, const Field& field) const;
    std::vector<Record> changedRecords() const;
    /// Changed records of which no value was asked for.
    std::size_t changedOthers() const;
    Json asJson(const char* applied) const;
    void print(const char* applied) const;

    Session& m_session;
    const CategoryLayout& m_layout;
    FileTable m_before;
    FileTable m_after;           ///< what the file is to hold
    std::vector<bool> m_touched; ///< by record
    std::vector<bool> m_asked;   ///< by record
    std::size_t m_unchanged = 0; ///< of the values asked for
};

} // namespace td::dmctl
