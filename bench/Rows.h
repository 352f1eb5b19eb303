/// The rows of the table as benchmarks named "row/subject": the subjects are "ours", "bound" and the peers.
#pragma once

#include <string>
#include <vector>

#include "Values.h"

namespace bench {

struct Setting {
    std::string directory; ///< of the data
    std::vector<Table> tables;
    bool shortRun = false; ///< leaves out what takes long
};

/// Each registers some rows; `setting` must live until all have run.
void registerColdRows(const Setting& setting);
void registerReadRows(const Setting& setting);
void registerMachineRows(const Setting& setting);
void registerStoreRows(const Setting& setting);

/// Gives up what the rows keep open between them.
void closeAll();

} // namespace bench
