/// Categories of the tests' own, for what otherwise only large ones do: of the same records and operations, with few
/// enough of them that thousands of files can be tried.
#pragma once

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "fileOperator/CategoryLayout.h"

namespace td::test {

/// PICTURE_MODE with all its sources: a copy to all of them writes many sections at once.
const CategoryLayout& fewModes();
AbstractFileOperator* makeFewModes();

/// PICTURE_FACTORY_WB, whose records are stored in groups.
const CategoryLayout& fewBalances();
AbstractFileOperator* makeFewBalances();

} // namespace td::test
