/// Measurements that each need a process of their own: a cold start, memory, threads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Values.h"

namespace bench {

struct Outcome {
    double seconds = 0;
    std::int64_t sum = 0;   ///< of all values read
    long residentBytes = 0; ///< growth
    long threads = 0;       ///< that are left
    long syncs = 0;
};

/// Runs `task` of `subject` in a new process. Throws when that fails.
Outcome inNewProcess(const std::string& task, const std::string& subject, const std::string& directory);

/// What the new process does; its exit status.
int runColdTask(const std::string& task, const std::string& subject, const std::string& directory,
                const std::vector<Table>& tables);

// Below the directory of the data.
constexpr const char* PRISTINE = "/pristine"; ///< a television that is only read
constexpr const char* WORK = "/work";         ///< one that is stored to
constexpr const char* NEW = "/new";           ///< one that is created

} // namespace bench
