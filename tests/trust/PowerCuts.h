/// The states in which a cut of power may leave a disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "DiskModel.h"

namespace td::test {

/// How much of what is possible is tried.
struct CutEffort {
    /// Up to so many pending changes every combination of lost and done is tried, and up to half as many with each
    /// write torn in every way as well.
    std::size_t exhaustive = 6;
    /// Up to so many, all that is done in order, and all that lacks or has one change only.
    std::size_t ordered = 24;
    /// Random combinations per cut where not all are tried.
    std::size_t randomPerCut = 24;
    /// Distinct states that are visited at most, chosen at random; 0: all.
    std::size_t mostStates = 0;
    std::uint64_t seed = 1;
};

/// Cuts between two numbers of events done, both included. Trees that differ only below `leftOut` are the same.
struct CutRange {
    std::size_t first;
    std::size_t last;
    std::string leftOut = {};
};

/// One state.
struct CutState {
    std::size_t events; ///< done before the cut
    Tree tree;
    std::vector<DiskEvent> pending;
    std::vector<Fate> fates;

    /// What happened, one line per pending change.
    std::string text() const;
};

/// Visits the distinct states that a cut may leave, starting from a disk on which all of `start` is sure. Returns how
/// many were visited.
std::size_t forEachCut(const Tree& start, const std::vector<DiskEvent>& events, const CutRange& range,
                       const CutEffort& effort, const std::function<void(const CutState&)>& visit);

} // namespace td::test
