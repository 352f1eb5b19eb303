/// Lines of the detail log that show a record, for a log reader; nothing while that log is off.
#pragma once

#include "fileOperator/CategoryLayout.h"

namespace td {

/// The process-wide switch, as clients set it.
int detailLog();
void setDetailLog(int on);
bool detailLogIsOn();
/// Logs one record. Hold no table's lock.
void dumpRecord(const CategoryLayout& layout, const int* indices, const int* record);

} // namespace td
