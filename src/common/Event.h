/// A stored record on its way to the file. Whoever holds the pointer owns the event: the poster until the worker has
/// taken it, then the worker, which deletes it after handling. The operator is not owned and must outlive the event.
#pragma once

#include <vector>

#include <dataModule/Export.h>

namespace td {

class IFileOperator;
class IDataSeparateManagerInner;

class DATAMODULE_API Event {
public:
    /// Takes the next event id and copies `dims`.
    Event(IFileOperator* op, const std::vector<int>& dims);
    /// The same id, operator and dimensions.
    Event(const Event& other);
    /// Takes over id and operator; the dimensions of the target stay.
    Event& operator=(const Event& other);
    virtual ~Event();

    /// Writes the record's section and the checksum under the operator's critical section, then asks for a backup.
    /// True without writing when the operator may not write files. False without an operator or when a write failed.
    bool handle();
    /// The same id.
    bool operator==(const Event& other) const;

    int id() const { return m_id; }
    /// Whose record it carries.
    IFileOperator* op() const { return m_operator; }
    const std::vector<int>& dimensions() const { return m_dims; }

    /// Hands `event` to `parent`, or deletes it when there is no parent or the post is refused. Whether it was posted.
    static bool postOrDelete(IDataSeparateManagerInner* parent, Event* event);

private:
    int m_id;
    IFileOperator* m_operator;
    std::vector<int> m_dims;
};

} // namespace td
