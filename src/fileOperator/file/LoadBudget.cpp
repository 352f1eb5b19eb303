#include "fileOperator/file/LoadBudget.h"

#include "common/Deadline.h"

namespace td {

namespace {

thread_local const LoadBudget* t_budget = nullptr;

} // namespace

LoadBudget::LoadBudget(const timespec& deadline) : m_outer(t_budget), m_deadline(deadline) {
    t_budget = this;
}

LoadBudget::~LoadBudget() {
    t_budget = m_outer;
}

timespec LoadBudget::deadline() {
    return t_budget != nullptr ? t_budget->m_deadline : deadlineIn(MILLISECONDS);
}

} // namespace td
