/// While it lives the calling thread is not cancelled: a pthread_cancel() takes effect afterwards. A cancellation
/// within a call would leave files and locks as they happen to be, and end the process where it meets a destructor or a
/// handler of exceptions. Lives on the stack, around what may wait for the system: files, other threads, the log.
#pragma once

#include <pthread.h>

namespace td {

class NoCancel {
public:
    NoCancel() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
    ~NoCancel() { pthread_setcancelstate(m_before, nullptr); }
    NoCancel(const NoCancel&) = delete;
    NoCancel& operator=(const NoCancel&) = delete;

private:
    int m_before = PTHREAD_CANCEL_ENABLE;
};

} // namespace td
