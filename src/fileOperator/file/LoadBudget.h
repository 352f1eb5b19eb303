/// How long the loads on a thread wait for locks that other processes hold: one budget for a load of all files, or for
/// a single one.
#pragma once

#include <ctime>

namespace td {

/// For the length of a block the loads of the calling thread share this deadline.
class LoadBudget {
public:
    static constexpr int MILLISECONDS = 3000;

    explicit LoadBudget(const timespec& deadline);
    ~LoadBudget();
    LoadBudget(const LoadBudget&) = delete;
    LoadBudget& operator=(const LoadBudget&) = delete;

    /// The thread's deadline, or that of a load that begins now.
    static timespec deadline();

private:
    const LoadBudget* const m_outer;
    const timespec m_deadline;
};

} // namespace td
