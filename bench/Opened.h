/// What the rows within this process work on: the library and the peers, opened once on values that may be stored to.
#pragma once

#include <memory>
#include <string>

#include "Library.h"
#include "Rows.h"

namespace bench {

/// The library on the television that is stored to; opened and loaded on first use.
Library& library(const Setting& setting);
/// A peer on its own copy of the values; opened on first use.
Peer& peer(const std::string& name, const Setting& setting);

/// Position of a category in the tables.
int tableOf(td::_DataCategory_t category);

} // namespace bench
