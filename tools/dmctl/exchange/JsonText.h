/// An export as JSON.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"

namespace td::dmctl {

class Collector;

std::string jsonText(const std::string& copy, const std::vector<ExchangeCategory>& categories);
/// What is wrong becomes faults of the collector.
void parseJson(std::string_view bytes, Collector& collector);

} // namespace td::dmctl
