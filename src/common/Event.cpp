#include <dataModule/common/Event.h>

#include <memory>

#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>

namespace td {

namespace {

/// One write of an operator's file: under its critical section, and followed by a request for a backup however the
/// write ends.
class FileWrite {
public:
    explicit FileWrite(IFileOperator& op) : m_operator(op) { m_operator.enterCriticalSection(); }
    ~FileWrite() {
        m_operator.leaveCriticalSection();
        m_operator.setBackupReq(true);
    }
    FileWrite(const FileWrite&) = delete;
    FileWrite& operator=(const FileWrite&) = delete;

private:
    IFileOperator& m_operator;
};

} // namespace

Event::Event(IFileOperator* op, const std::vector<int>& dims)
    : m_id(EventIdGenerator::instance()->createNextEventId()), m_operator(op), m_dims(dims) {}

Event::Event(const Event& other) = default;

// The dimensions say which section the target is for; they are its own.
Event& Event::operator=(const Event& other) {
    if (this == &other)
        return *this;
    m_id = other.m_id;
    m_operator = other.m_operator;
    return *this;
}

Event::~Event() = default;

bool Event::handle() {
    if (m_operator == nullptr)
        return false;
    if (!m_operator->getStoreFileFlag())
        return true;
    const FileWrite write(*m_operator);
    return m_operator->syncSectionToFile(this) && m_operator->updateCrcCode();
}

void IFileOperator::handleEvents(Event* const* events, bool* handled, int count) {
    for (int i = 0; i < count; ++i)
        handled[i] = events[i]->handle();
}

bool Event::operator==(const Event& other) const {
    return m_id == other.m_id;
}

bool Event::postOrDelete(IDataSeparateManagerInner* parent, Event* event) {
    std::unique_ptr<Event> owned(event);
    if (parent == nullptr || parent->postEvent(event) == 0)
        return false;
    // The worker may have deleted it by now: only the claim is given up.
    static_cast<void>(owned.release());
    return true;
}

} // namespace td
