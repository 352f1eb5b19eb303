#include "Exchange.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <memory>
#include <unordered_map>
#include <utility>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "fileOperator/text/TextLayout.h"
#include "Names.h"
#include "Output.h"

namespace td::dmctl {

namespace {

/// Members by name: the order of an export does not matter.
using Document = nlohmann::json;

constexpr const char* FORMAT = "settings of a television";
constexpr int FORMAT_VERSION = 1;
/// Cells of a CSV row: category, indices, field, value.
constexpr std::size_t CELLS = MAX_DIMENSIONS + 3;
/// Longer words are names of nothing and are not looked up.
constexpr std::size_t LONGEST_NAME = 64;

// --- writing ---

/// The index that a word stands for; a number stands for itself even where names are numbers.
int indexNamed(const Dimension& dimension, const std::string& word) {
    int number = 0;
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, number);
    if (!word.empty() && parsed.ptr == end) {
        if (parsed.ec != std::errc() || number < 0 || number >= dimension.count)
            throw UsageError(fmt::format("{} is no value of dimension {}; its values are 0 to {}", word, dimension.name,
                                         dimension.count - 1));
        return number;
    }
    std::vector<int> found;
    for (int i = 0; i < dimension.count; ++i) {
        if (sameName(valueName(dimension, i), word))
            found.push_back(i);
    }
    if (found.size() == 1)
        return found.front();
    if (found.size() > 1)
        throw UsageError(fmt::format("{} stands for {} and {} of dimension {}; give the number", word, found[0],
                                     found[1], dimension.name));
    throw UsageError(unknownWord(fmt::format("value of dimension {}", dimension.name), word, valueNames(dimension),
                                 "its values are"));
}

/// What stands for an index: the value's name, or its number where the name would not be read as this value.
std::string indexText(const Dimension& dimension, int index) {
    std::string name = valueName(dimension, index);
    try {
        if (indexNamed(dimension, name) == index)
            return name;
    } catch (const UsageError&) {
        // Ambiguous, so the number it is.
    }
    return std::to_string(index);
}

/// The index texts of a category, by dimension.
using IndexTexts = std::vector<std::vector<std::string>>;

IndexTexts indexTextsOf(const CategoryLayout& layout) {
    IndexTexts texts(layout.dimensions.size());
    for (std::size_t d = 0; d < texts.size(); ++d) {
        for (int i = 0; i < layout.dimensions[d].count; ++i)
            texts[d].push_back(indexText(layout.dimensions[d], i));
    }
    return texts;
}

std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::vector<std::string> csvHeader() {
    std::vector<std::string> cells{"category"};
    for (int d = 1; d <= MAX_DIMENSIONS; ++d)
        cells.push_back(fmt::format("index{}", d));
    cells.emplace_back("field");
    cells.emplace_back("value");
    return cells;
}

std::string csvRow(const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& cell : cells) {
        row += row.empty() ? "" : ",";
        row += csvCell(cell);
    }
    return row + "\n";
}

template <typename Action>
void forEachGiven(const ExchangeCategory& category, int record, Action action) {
    for (const Field& field : category.layout->fields) {
        const std::size_t cell = cellOf(*category.layout, record, field);
        if (category.given[cell])
            action(field, category.values[cell]);
    }
}

void appendCsv(const ExchangeCategory& category, std::string& text) {
    const CategoryLayout& layout = *category.layout;
    const IndexTexts texts = indexTextsOf(layout);
    std::vector<std::string> cells(CELLS);
    cells.front() = categoryName(layout);
    for (int record = 0; record < layout.recordCount(); ++record) {
        const std::vector<int> indices = indicesOf(layout, record);
        for (std::size_t d = 0; d < indices.size(); ++d)
            cells[d + 1] = texts[d][static_cast<std::size_t>(indices[d])];
        forEachGiven(category, record, [&](const Field& field, int value) {
            cells[CELLS - 2] = field.argumentName();
            cells[CELLS - 1] = std::to_string(value);
            text += csvRow(cells);
        });
    }
}

std::string quotedJson(const std::string& text) {
    return Document(text).dump(-1, ' ', false, Document::error_handler_t::replace);
}

/// One line per record, so that exports can be compared by lines. Empty where the record has no value.
std::string recordLine(const ExchangeCategory& category, int record, const IndexTexts& texts) {
    std::string fields;
    forEachGiven(category, record, [&](const Field& field, int value) {
        fields += fmt::format("{}{}: {}", fields.empty() ? "" : ", ", quotedJson(field.argumentName()), value);
    });
    if (fields.empty())
        return {};
    const std::vector<int> indices = indicesOf(*category.layout, record);
    std::string place;
    for (std::size_t d = 0; d < indices.size(); ++d)
        place += (place.empty() ? "" : ", ") + quotedJson(texts[d][static_cast<std::size_t>(indices[d])]);
    return fmt::format("{{\"record\": [{}], \"fields\": {{{}}}}}", place, fields);
}

void appendJson(const ExchangeCategory& category, std::string& text) {
    const CategoryLayout& layout = *category.layout;
    const IndexTexts texts = indexTextsOf(layout);
    text += fmt::format("{{\"category\": {}, \"version\": {}, \"records\": [", quotedJson(categoryName(layout)),
                        quotedJson(layout.version));
    const char* separator = "\n";
    for (int record = 0; record < layout.recordCount(); ++record) {
        const std::string line = recordLine(category, record, texts);
        if (line.empty())
            continue;
        text += separator + line;
        separator = ",\n";
    }
    text += "\n]}";
}

// --- reading ---

/// At most so much of a text of the export stands in a fault.
constexpr std::size_t SHOWN = 200;

/// Without bytes that a terminal would obey.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : fmt::format("\\x{:02x}", byte);
    }
    return result;
}

std::string shortened(const std::string& text) {
    return escaped(text.substr(0, SHOWN)) + (text.size() > SHOWN ? "..." : "");
}

/// The first line of what is to be said.
std::string shown(const std::string& text) {
    return shortened(text.substr(0, text.find('\n')));
}

void checkLength(const std::string& word) {
    if (word.size() > LONGEST_NAME)
        throw UsageError(fmt::format("\"{}...\" is too long for a name", word.substr(0, 20)));
}

/// Takes the values of an export one by one. Its operations throw UsageError for what cannot be imported.
class Collector {
public:
    /// A category that is in the export, with the names that were looked up before.
    struct Known {
        std::size_t place = 0; ///< among the categories of the result
        const CategoryLayout* layout = nullptr;
        std::unordered_map<std::string, int> records;
        std::unordered_map<std::string, const Field*> fields;
    };

    explicit Collector(Exchange& result) : m_result(result) {}

    bool isFull() const { return m_result.cutShort; }
    void fault(const std::string& place, const std::string& text) {
        if (m_result.faults.size() < Exchange::MAX_FAULTS)
            m_result.faults.push_back({shortened(place), shown(text)});
        else
            m_result.cutShort = true;
    }

    Known& category(const std::string& word) {
        const auto entry = m_byWord.find(word);
        if (entry != m_byWord.end())
            return *entry->second;
        checkLength(word);
        const CategoryLayout& layout = categoryNamed(word);
        Known* const known = knownOf(layout);
        m_byWord.emplace(word, known);
        return *known;
    }
    int record(Known& known, const Words& indices) {
        std::string key;
        for (const std::string& index : indices)
            key += index + '\n';
        const auto entry = known.records.find(key);
        if (entry != known.records.end())
            return entry->second;
        if (indices.size() != known.layout->dimensions.size())
            throw UsageError(fmt::format("{} has {}, not {}", categoryName(*known.layout),
                                         counted(known.layout->dimensions.size(), "dimension"), indices.size()));
        for (const std::string& index : indices)
            checkLength(index);
        std::vector<int> numbers;
        for (std::size_t d = 0; d < indices.size(); ++d)
            numbers.push_back(indexNamed(known.layout->dimensions[d], indices[d]));
        const int record = known.layout->recordIndex(numbers.data());
        known.records.emplace(std::move(key), record);
        return record;
    }
    const Field& field(Known& known, const std::string& word) {
        const auto entry = known.fields.find(word);
        if (entry != known.fields.end())
            return *entry->second;
        checkLength(word);
        const Field& field = fieldNamed(*known.layout, word);
        known.fields.emplace(word, &field);
        return field;
    }
    void put(const Known& known, int record, const Field& field, long long value) {
        const CategoryLayout& layout = *known.layout;
        if (value < INT_MIN || value > INT_MAX || !text::fitsColumns(layout.keyLine, static_cast<int>(value)))
            throw UsageError(fmt::format("{} is out of range for {}; its place in the file does not hold it", value,
                                         field.argumentName()));
        ExchangeCategory& category = m_result.categories[known.place];
        const std::size_t cell = cellOf(layout, record, field);
        if (category.given[cell])
            throw UsageError(fmt::format("{} of {} is given twice", field.argumentName(), recordLabel(layout, record)));
        category.given[cell] = true;
        category.values[cell] = static_cast<int>(value);
        ++category.count;
    }

private:
    Known* knownOf(const CategoryLayout& layout) {
        for (const auto& known : m_known) {
            if (known->layout == &layout)
                return known.get();
        }
        m_known.push_back(std::make_unique<Known>());
        m_known.back()->place = m_result.categories.size();
        m_known.back()->layout = &layout;
        m_result.categories.emplace_back(layout);
        return m_known.back().get();
    }

    Exchange& m_result;
    std::vector<std::unique_ptr<Known>> m_known;
    std::unordered_map<std::string, Known*> m_byWord;
};

// --- CSV ---

/// The rows of a CSV.
class CsvRows {
public:
    explicit CsvRows(std::string_view bytes) : m_bytes(bytes) {}

    bool atEnd() const { return m_position >= m_bytes.size(); }
    /// Line on which the last row began, from 1.
    int line() const { return m_rowLine; }
    /// Takes one row. Throws UsageError when its quotes are wrong; the rest of that line is passed over.
    std::vector<std::string> take() {
        m_rowLine = m_line;
        std::vector<std::string> cells;
        do
            cells.push_back(takeCell());
        while (takeOne(','));
        takeOne('\r');
        if (atEnd())
            fail("the export ends within this line");
        if (!takeOne('\n'))
            fail("a cell ends without a comma behind it");
        ++m_line;
        return cells;
    }

private:
    bool takeOne(char c) {
        if (atEnd() || m_bytes[m_position] != c)
            return false;
        ++m_position;
        return true;
    }
    std::string takeCell() {
        if (takeOne('"'))
            return takeQuoted();
        const std::size_t end = std::min(m_bytes.find_first_of(",\r\n\"", m_position), m_bytes.size());
        std::string cell(m_bytes.substr(m_position, end - m_position));
        m_position = end;
        if (!atEnd() && m_bytes[m_position] == '"')
            fail("a quote stands within a cell");
        return cell;
    }
    std::string takeQuoted() {
        std::string cell;
        while (!atEnd()) {
            const char c = m_bytes[m_position++];
            if (c == '"' && !takeOne('"'))
                return cell;
            m_line += c == '\n' ? 1 : 0;
            cell += c;
        }
        fail("a quote is not closed");
    }
    [[noreturn]] void fail(const char* reason) {
        const std::size_t end = m_bytes.find('\n', m_position);
        m_position = end == std::string_view::npos ? m_bytes.size() : end + 1;
        ++m_line;
        throw UsageError(reason);
    }

    const std::string_view m_bytes;
    std::size_t m_position = 0;
    int m_line = 1;
    int m_rowLine = 1;
};

long long wholeNumber(const std::string& text, const Field& field) {
    long long value = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value);
    if (text.empty() || parsed.ptr != end)
        throw UsageError(fmt::format("\"{}\" is no whole number, which {} takes", text, field.argumentName()));
    return parsed.ec == std::errc() ? value : LLONG_MAX;
}

void takeRow(const std::vector<std::string>& cells, Collector& collector) {
    if (cells.size() != CELLS)
        throw UsageError(fmt::format("the row has {}; there have to be {}", counted(cells.size(), "cell"), CELLS));
    Collector::Known& known = collector.category(cells.front());
    const std::size_t dimensions = known.layout->dimensions.size();
    for (std::size_t d = dimensions; d < MAX_DIMENSIONS; ++d) {
        if (!cells[d + 1].empty())
            throw UsageError(fmt::format("index{} has to be empty: {} has {}", d + 1, categoryName(*known.layout),
                                         counted(dimensions, "dimension")));
    }
    const auto first = cells.begin() + 1;
    const int record = collector.record(known, Words(first, first + static_cast<std::ptrdiff_t>(dimensions)));
    const Field& field = collector.field(known, cells[CELLS - 2]);
    collector.put(known, record, field, wholeNumber(cells[CELLS - 1], field));
}

void parseCsv(std::string_view bytes, Collector& collector) {
    CsvRows rows(bytes);
    bool isHeader = true;
    while (!rows.atEnd() && !collector.isFull()) {
        try {
            const std::vector<std::string> cells = rows.take();
            if (cells == std::vector<std::string>(1)) // an empty line
                continue;
            if (!isHeader)
                takeRow(cells, collector);
            else if (cells != csvHeader())
                throw UsageError("the first line has to be " + csvRow(csvHeader()));
        } catch (const UsageError& error) {
            collector.fault(fmt::format("line {}", rows.line()), error.what());
            if (isHeader)
                return;
        }
        isHeader = false;
    }
    if (isHeader)
        collector.fault("line 1", "the export is empty");
}

// --- JSON ---

/// A place in a JSON document; its text is only made when there is something to say about it.
class Pointer {
public:
    Pointer() = default;
    Pointer(const Pointer& parent, std::string key) : m_parent(&parent), m_key(std::move(key)) {}
    Pointer(const Pointer& parent, const char* key) : Pointer(parent, std::string(key)) {}
    Pointer(const Pointer& parent, std::size_t index) : Pointer(parent, std::to_string(index)) {}

    std::string text() const {
        if (m_parent == nullptr)
            return {};
        std::string result = m_parent->text() + "/";
        for (const char c : m_key)
            result += c == '~' ? std::string("~0") : c == '/' ? std::string("~1") : std::string(1, c);
        return result;
    }

private:
    const Pointer* m_parent = nullptr;
    std::string m_key;
};

/// Makes the document while it is read, and finds what a finished one does not show: members that stand twice. Ends at
/// what is nested deeper than an export; whoever frees such a document could run out of stack.
class DocumentBuilder : public nlohmann::json_sax<Document> {
public:
    static constexpr std::size_t DEEPEST = 16;

    DocumentBuilder(std::string_view bytes, Collector& collector) : m_bytes(bytes), m_collector(collector) {}
    const Document& document() const { return m_document; }

    bool null() override { return put(nullptr); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(number_integer_t value) override { return put(value); }
    bool number_unsigned(number_unsigned_t value) override { return put(value); }
    bool number_float(number_float_t value, const string_t&) override { return put(value); }
    bool string(string_t& value) override { return put(std::move(value)); }
    bool binary(binary_t&) override { return put(nullptr); }
    bool start_object(std::size_t) override { return open(Document::object()); }
    bool start_array(std::size_t) override { return open(Document::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        Level& level = m_levels.back();
        level.key = std::move(name);
        if (level.value->contains(level.key))
            m_collector.fault(pointerText(0, Pointer()), "the member stands twice");
        return true;
    }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& error) override {
        const auto end = m_bytes.begin() + static_cast<std::ptrdiff_t>(std::min(position, m_bytes.size()));
        m_collector.fault(fmt::format("line {}", 1 + std::count(m_bytes.begin(), end, '\n')),
                          fmt::format("this is no JSON: {}", error.what()));
        return false;
    }

private:
    struct Level {
        Document* value;
        std::string key; ///< of the member that is being read
    };

    Document* add(Document value) {
        if (m_levels.empty()) {
            m_document = std::move(value);
            return &m_document;
        }
        Level& level = m_levels.back();
        if (level.value->is_array()) {
            level.value->push_back(std::move(value));
            return &level.value->back();
        }
        Document& member = (*level.value)[level.key];
        member = std::move(value);
        return &member;
    }
    bool put(Document value) {
        add(std::move(value));
        return true;
    }
    bool open(Document empty) {
        if (m_levels.size() >= DEEPEST) {
            m_collector.fault(pointerText(0, Pointer()), "this is nested deeper than any export");
            return false;
        }
        m_levels.push_back({add(std::move(empty)), {}});
        return true;
    }
    bool close() {
        m_levels.pop_back();
        return true;
    }
    std::string pointerText(std::size_t depth, const Pointer& parent) const {
        if (depth == m_levels.size())
            return parent.text();
        const Level& level = m_levels[depth];
        const bool hasOpenElement = depth + 1 < m_levels.size();
        const std::size_t index = level.value->size() - (level.value->is_array() && hasOpenElement ? 1 : 0);
        return pointerText(depth + 1, Pointer(parent, level.value->is_array() ? std::to_string(index) : level.key));
    }

    const std::string_view m_bytes;
    Collector& m_collector;
    Document m_document;
    std::vector<Level> m_levels;
};

class JsonReader {
public:
    explicit JsonReader(Collector& collector) : m_collector(collector) {}

    void read(const Document& document) {
        const Pointer root;
        knowOnly(document, root, {"format", "formatVersion", "copy", "categories"});
        if (member(document, "format") != Document(FORMAT))
            fault({root, "format"}, fmt::format("\"{}\" has to stand here", FORMAT));
        if (member(document, "formatVersion") != FORMAT_VERSION)
            fault({root, "formatVersion"}, fmt::format("only version {} can be read", FORMAT_VERSION));
        const Pointer place(root, "categories");
        forEach(member(document, "categories"), place,
                [&](const Document& category, const Pointer& at) { readCategory(category, at); });
    }

private:
    void fault(const Pointer& place, const std::string& text) { m_collector.fault(place.text(), text); }
    /// The member, or null.
    static const Document& member(const Document& object, const char* name) {
        static const Document none;
        const auto entry = object.find(name);
        return entry != object.end() ? *entry : none;
    }
    void knowOnly(const Document& object, const Pointer& place, const std::vector<std::string>& names) {
        for (const auto& [key, value] : object.items()) {
            if (std::find(names.begin(), names.end(), key) == names.end())
                fault({place, key}, fmt::format("no such member is known; there are {}", joined(names)));
        }
    }
    /// Walks over the objects of an array.
    template <typename Action>
    void forEach(const Document& array, const Pointer& place, Action action) {
        if (!array.is_array())
            return fault(place, "an array of objects has to stand here");
        for (std::size_t i = 0; i < array.size() && !m_collector.isFull(); ++i) {
            const Pointer at(place, i);
            if (array[i].is_object())
                action(array[i], at);
            else
                fault(at, "an object has to stand here");
        }
    }

    void readCategory(const Document& category, const Pointer& place) {
        knowOnly(category, place, {"category", "version", "records"});
        const Document& name = member(category, "category");
        if (!name.is_string())
            return fault({place, "category"}, "the category's name has to stand here");
        try {
            Collector::Known& known = m_collector.category(name.get<std::string>());
            checkVersion(*known.layout, member(category, "version"), place);
            const Pointer records(place, "records");
            forEach(member(category, "records"), records,
                    [&](const Document& record, const Pointer& at) { readRecord(known, record, at); });
        } catch (const UsageError& error) {
            fault({place, "category"}, error.what());
        }
    }
    void checkVersion(const CategoryLayout& layout, const Document& version, const Pointer& place) {
        if (!version.is_null() && version != Document(layout.version))
            fault({place, "version"},
                  fmt::format("the category has version {} here; without this member the version is not compared",
                              layout.version));
    }
    void readRecord(Collector::Known& known, const Document& object, const Pointer& place) {
        knowOnly(object, place, {"record", "fields"});
        int record = 0;
        try {
            record = m_collector.record(known, indexWords(member(object, "record")));
        } catch (const UsageError& error) {
            return fault({place, "record"}, error.what());
        }
        const Document& fields = member(object, "fields");
        const Pointer at(place, "fields");
        if (!fields.is_object())
            return fault(at, "an object with the fields has to stand here");
        for (const auto& [name, value] : fields.items()) {
            try {
                const Field& field = m_collector.field(known, name);
                m_collector.put(known, record, field, numberOf(value, field));
            } catch (const UsageError& error) {
                fault({at, name}, error.what());
            }
        }
    }
    static Words indexWords(const Document& indices) {
        if (indices.is_null())
            return {};
        if (!indices.is_array())
            throw UsageError("an array of value names or numbers has to stand here");
        Words words;
        for (const Document& index : indices) {
            if (!index.is_string() && !index.is_number_integer())
                throw UsageError("an index is a value's name or number");
            words.push_back(index.is_string() ? index.get<std::string>() : index.dump());
        }
        return words;
    }
    static long long numberOf(const Document& value, const Field& field) {
        if (!value.is_number_integer())
            throw UsageError(fmt::format("{} takes a whole number", field.argumentName()));
        if (value.is_number_unsigned() && value.get<unsigned long long>() > LLONG_MAX)
            return LLONG_MAX;
        return value.get<long long>();
    }

    Collector& m_collector;
};

void parseJson(std::string_view bytes, Collector& collector) {
    DocumentBuilder builder(bytes, collector);
    try {
        if (Document::sax_parse(bytes.begin(), bytes.end(), &builder))
            JsonReader(collector).read(builder.document());
    } catch (const Document::exception& error) {
        collector.fault("", fmt::format("this cannot be read: {}", error.what()));
    }
}

} // namespace

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
    if (format == ExchangeFormat::AsCsv) {
        std::string text = csvRow(csvHeader());
        for (const ExchangeCategory& category : categories)
            appendCsv(category, text);
        return text;
    }
    std::string text = fmt::format("{{\"format\": {}, \"formatVersion\": {}, \"copy\": {}, \"categories\": [",
                                   quotedJson(FORMAT), FORMAT_VERSION, quotedJson(copy));
    const char* separator = "\n";
    for (const ExchangeCategory& category : categories) {
        text += separator;
        appendJson(category, text);
        separator = ",\n";
    }
    return text + "\n]}\n";
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
