/// The operators of a manager, which it owns. Changed by init() and stop() only; requests find theirs without a lock.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/IFileOperator.h>

namespace td {

class IDataSeparateManagerInner;
class PendingStores;

class OperatorRegistry {
public:
    using ByCategory = std::map<_DataCategory_t, IFileOperator*>;

    OperatorRegistry() = default;
    OperatorRegistry(const OperatorRegistry&) = delete;
    OperatorRegistry& operator=(const OperatorRegistry&) = delete;

    /// Owns the operator from then on; a second one for the same category is deleted.
    void add(IFileOperator* op);
    /// Who is asked and gets the events; once, after all were added.
    void setParent(IDataSeparateManagerInner* parent);
    /// Deletes the operators and empties the registry by category. The worker must not run.
    void deleteOperators();
    /// Empties the set, and forgets what was pending: for another init(), and at the very end.
    void clear();

    /// Null for a category that is not registered.
    IFileOperator* find(_DataCategory_t category) const;
    const ByCategory& byCategory() const { return m_fileOperators; }
    /// Not after deleteOperators().
    const std::set<const IFileOperator*>& set() const { return m_operatorSet; }
    const std::vector<std::shared_ptr<PendingStores>>& pendingStores() const { return m_pendingStores; }

    /// Walks the operators that are the library's, or derived from its base.
    template <typename Action>
    void forEachOwn(Action action) const {
        for (const auto& [category, op] : m_fileOperators) {
            if (auto* const own = dynamic_cast<AbstractFileOperator*>(op))
                action(*own);
        }
    }

private:
    ByCategory m_fileOperators;                                  ///< owns the operators
    std::set<const IFileOperator*> m_operatorSet;                ///< the same ones
    std::vector<std::shared_ptr<PendingStores>> m_pendingStores; ///< theirs
};

} // namespace td
