#include "fileOperator/ValueDump.h"

#include <atomic>
#include <string>

#include "common/Log.h"
#include "fileOperator/text/TextLayout.h"

namespace td {

namespace {

std::atomic<int> g_detailLog{0};

} // namespace

bool detailLogIsOn() {
    return g_detailLog != 0;
}

int detailLog() {
    return g_detailLog;
}

void setDetailLog(int on) {
    g_detailLog = on;
}

void dumpRecord(const CategoryLayout& layout, const int* indices, const int* record) {
    if (!detailLogIsOn())
        return;
    std::string line = layout.dumpPrefix + text::sectionId(layout, indices) + ": ";
    const char* separator = "";
    for (const Field& field : layout.fields) {
        line += separator;
        line += field.dumpLabel();
        line += " = " + std::to_string(record[field.position]);
        separator = ", ";
    }
    TD_DETAIL("%s%s", line.c_str(), layout.dumpEnd);
}

} // namespace td
