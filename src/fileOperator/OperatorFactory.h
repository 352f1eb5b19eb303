/// The categories: their layouts, and the making of their operators. Any thread.
#pragma once

#include <vector>

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

/// A new operator for the category, owned by the caller; null for a value that is no category.
AbstractFileOperator* createOperator(_DataCategory_t category);
/// The layout of a category; null for a value that is no category.
const CategoryLayout* layoutOf(_DataCategory_t category);
/// The layouts of all categories, in ascending category order.
std::vector<const CategoryLayout*> allLayouts();

} // namespace td
