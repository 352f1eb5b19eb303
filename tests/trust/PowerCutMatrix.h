/// The worst that a cut of power does to each operation on each shape of category.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "Operations.h"
#include "PowerCuts.h"

namespace td::test {

/// What a cut may cost, rising.
enum class Loss {
    Nothing,
    LastStore,  ///< records that were being written have their old value
    LastBackup, ///< all is as in the last backup
};

/// The words for it.
const char* textOf(Loss loss);
/// What these words stand for; Nothing if they are none of these.
Loss lossOf(const std::string& text);

/// The worst that was found, and the first state that led to it.
struct Worst {
    Loss loss = Loss::Nothing;
    std::string state;
};
std::ostream& operator<<(std::ostream& stream, const Worst& worst);

struct CellResult {
    Worst during;                 ///< cut while the operation runs
    Worst later;                  ///< cut while what follows on it runs
    Worst after;                  ///< cut after it, or what follows, has returned
    std::size_t states = 0;       ///< loaded after one cut
    std::size_t secondStates = 0; ///< loaded after another cut while that load was recovering
    /// What is beyond any loss: a category that does not load, a record that is neither old nor new, a later store that
    /// is not kept. With the state that led to it.
    std::vector<std::string> faults;
};

struct CellEffort {
    CutEffort first;
    CutEffort second;
    /// Every so many states the load is recorded and cut as well.
    std::size_t secondEvery = 1;
};

CellResult runCell(const Operation& operation, const Shape& shape, const CellEffort& effort);

} // namespace td::test
