#include "Table.h"

#include <string>

#include <fmt/core.h>

#include "inspect/FileInspection.h"

#include "Names.h"

namespace td::dmctl {

Table::Table(const Session& session, const CategoryLayout& layout, Copy copy) : m_layout(layout) {
    const std::string path = session.path(layout, copy);
    std::string bytes;
    std::string reason;
    if (!readFile(path, bytes, reason))
        throw Failure(fmt::format("the {} copy {} cannot be read: {}", copyName(copy), path, reason));
    const FileInspection inspection = inspectFile(layout, bytes);
    if (!inspection.isGood())
        throw Failure(fmt::format("the {} copy {} has faults; what is wrong says: dmctl {}verify {}", copyName(copy),
                                  path, session.rootOption(), categoryName(layout)));
    // A copy without faults has every section once and in order.
    const std::size_t fields = layout.fields.size();
    m_values.resize(inspection.sections.size() * fields);
    for (std::size_t i = 0; i < inspection.sections.size(); ++i)
        readInspected(layout, bytes, inspection.sections[i], m_values.data() + i * fields);
}

} // namespace td::dmctl
