#include "exchange/Exchange.h"

#include <fmt/core.h>

#include "exchange/Collector.h"
#include "exchange/Csv.h"
#include "exchange/JsonText.h"

namespace td::dmctl {

ExchangeCategory::ExchangeCategory(const CategoryLayout& category)
    : layout(&category), values(static_cast<std::size_t>(category.recordCount()) * category.fields.size()),
      given(values.size()) {}

std::size_t Exchange::count() const {
    std::size_t sum = 0;
    for (const ExchangeCategory& category : categories)
        sum += category.count;
    return sum;
}

std::string exchangeText(ExchangeFormat format, const std::string& copy,
                         const std::vector<ExchangeCategory>& categories) {
    return format == ExchangeFormat::AsCsv ? csvText(categories) : jsonText(copy, categories);
}

Exchange parseExchange(std::string_view bytes) {
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    Exchange result;
    Collector collector(result);
    if (bytes.size() > Exchange::MAX_SIZE) {
        collector.fault(
            "", fmt::format("the export has {} bytes; more than {} are not read", bytes.size(), Exchange::MAX_SIZE));
        return result;
    }
    if (bytes.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) // as spreadsheets write it
        bytes.remove_prefix(BYTE_ORDER_MARK.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && bytes[first] == '{')
        parseJson(bytes, collector);
    else
        parseCsv(bytes, collector);
    return result;
}

} // namespace td::dmctl
