/// An export as CSV (RFC 4180).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"

namespace td::dmctl {

class Collector;

std::string csvText(const std::vector<ExchangeCategory>& categories);
/// What is wrong becomes faults of the collector.
void parseCsv(std::string_view bytes, Collector& collector);

} // namespace td::dmctl
