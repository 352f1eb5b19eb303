/// Which categories belong together: those that a process registers, and those of one type.
#pragma once

#include <span>

#include <dataModule/DataTypes.h>

namespace td {

/// The categories of a scope in the order in which their operators are made.
std::span<const _DataCategory_t> categoriesIn(_DS_Scope_t scope);

/// Whether the typed operations of that type reach the category: the categories from 48 on have no type.
bool isOfType(_DataCategory_t category, _DS_Type_t type);

} // namespace td
