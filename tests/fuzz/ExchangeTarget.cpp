// What dmctl imports: JSON or CSV from anywhere.
#include "Targets.h"

#include <algorithm>

#include <dmctl/exchange/Exchange.h>

namespace td::fuzz {

namespace {

using dmctl::Exchange;
using dmctl::ExchangeCategory;
using dmctl::ExchangeFormat;

bool sameValues(const ExchangeCategory& one, const ExchangeCategory& other) {
    if (one.layout != other.layout || one.count != other.count || one.given != other.given)
        return false;
    for (std::size_t i = 0; i < one.values.size(); ++i) {
        if (one.given[i] && one.values[i] != other.values[i])
            return false;
    }
    return true;
}

/// Categories without a value are in no CSV.
std::vector<ExchangeCategory> withValues(const Exchange& exchange) {
    std::vector<ExchangeCategory> some;
    std::copy_if(exchange.categories.begin(), exchange.categories.end(), std::back_inserter(some),
                 [](const ExchangeCategory& category) { return category.count > 0; });
    return some;
}

void checkAgain(const std::vector<ExchangeCategory>& categories, ExchangeFormat format) {
    const std::string text = exchangeText(format, "current", categories);
    const Exchange again = dmctl::parseExchange(text);
    require(again.faults.empty(), "an export can be imported");
    const std::vector<ExchangeCategory> read = withValues(again);
    require(std::equal(read.begin(), read.end(), categories.begin(), categories.end(), sameValues),
            "an export holds the values that were imported");
    require(exchangeText(format, "current", read) == text, "the same values make the same export");
}

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

} // namespace

void runExchange(std::string_view input) {
    const Exchange exchange = dmctl::parseExchange(input);
    require(exchange.faults.size() <= Exchange::MAX_FAULTS, "no more faults are kept than stated");
    for (const dmctl::ExchangeFault& fault : exchange.faults) {
        require(isPrintable(fault.text), "a fault is a printable text");
        require(isPrintable(fault.place), "its place is a printable text");
    }
    for (const ExchangeCategory& category : exchange.categories)
        require(category.count ==
                    static_cast<std::size_t>(std::count(category.given.begin(), category.given.end(), true)),
                "values are counted as they are given");
    if (!exchange.faults.empty())
        return;
    const std::vector<ExchangeCategory> categories = withValues(exchange);
    checkAgain(categories, ExchangeFormat::AsJson);
    checkAgain(categories, ExchangeFormat::AsCsv);
}

} // namespace td::fuzz
