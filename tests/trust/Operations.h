/// What the tests do to a set while power fails or calls fail.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "OneCategorySet.h"

namespace td::test {

// The series of values that copies begin with, and those that are stored.
constexpr int FACTORY_SERIES = 1;
constexpr int BACKUP_SERIES = 2;
constexpr int CURRENT_SERIES = 3;
constexpr int FIRST_STORE = 4;
constexpr int SECOND_STORE = 5;
constexpr int THIRD_STORE = 6;
constexpr int LATER_STORE = 7;

/// One process on its way through the steps of an operation.
struct Life {
    explicit Life(const Shape& category) : shape(category) {}

    /// The running set, made if there is none.
    OneCategorySet& set();
    /// Ends the process as a proper shutdown does.
    void end() { m_set.reset(); }

    const Shape& shape;

private:
    std::unique_ptr<OneCategorySet> m_set;
};

/// What a step meets each time anew, as often as there are calls for it.
enum class Trouble {
    None,
    Killed,     ///< the process ends before one of its calls; what follows is another process's
    FailedSync, ///< one sync fails
    NoRecord,   ///< no redo record can be written
};

struct Step {
    enum class Role {
        Preparation, ///< leads up to the operation: nothing fails within it
        Own,         ///< of the operation
        Later,       ///< comes after it
    };
    /// What may be left of the step.
    enum class Pieces {
        One,      ///< all or nothing
        Records,  ///< it stores several records, each in one piece
        Together, ///< several records: by a cut all or nothing, by a failing call each in one piece
    };

    const char* name;
    /// Returns when all is done, queued stores included. Whether it succeeded.
    std::function<bool(Life&)> act;
    Role role = Role::Own;
    Pieces pieces = Pieces::One;
    Trouble trouble = Trouble::None;
    bool removesBackup = false; ///< for a while
};

struct Operation {
    const char* name;
    /// Whether categories of this shape have it.
    std::function<bool(const Shape&)> isOffered;
    /// The disk before.
    std::function<Tree(const Shape&)> disk;
    /// The contents that a start would load from it; none: there is nothing to load.
    std::function<std::optional<std::string>(const CategoryLayout&)> before;
    std::vector<Step> steps;
    /// Whether its own steps have nothing to write.
    bool changesNothing = false;

    Trouble trouble() const;
};

const std::vector<Operation>& operations();

} // namespace td::test
