#include "dataSeparate/OperatorRegistry.h"

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "fileOperator/file/Loading.h"
#include "fileOperator/table/PendingStores.h"

namespace td {

void OperatorRegistry::add(IFileOperator* op) {
    std::unique_ptr<IFileOperator> owned(op);
    const auto [entry, inserted] = m_fileOperators.emplace(op->getDataCategory(), op);
    if (!inserted && entry->second != op)
        return;
    static_cast<void>(owned.release());
    m_operatorSet.insert(op);
}

void OperatorRegistry::setParent(IDataSeparateManagerInner* parent) {
    forEachOwn([&](AbstractFileOperator& op) {
        op.setParent(parent);
        if (auto stores = op.state().contents->pendingStores())
            m_pendingStores.push_back(std::move(stores));
    });
}

void OperatorRegistry::deleteOperators() {
    // A merge asks its own operator and, through the manager, others: none may go while one runs.
    forEachOwn([](AbstractFileOperator& op) { op.waitForMerge(); });
    // What a merge did not write goes with the queue; those who wait for it hear of it.
    for (const auto& stores : m_pendingStores)
        stores->drop();
    for (auto& [category, op] : m_fileOperators) {
        delete op;
        op = nullptr;
    }
    m_fileOperators.clear();
}

void OperatorRegistry::clear() {
    m_operatorSet.clear();
    m_pendingStores.clear();
}

IFileOperator* OperatorRegistry::find(_DataCategory_t category) const {
    const auto entry = m_fileOperators.find(category);
    return entry == m_fileOperators.end() ? nullptr : entry->second;
}

} // namespace td
