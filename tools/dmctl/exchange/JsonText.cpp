#include "exchange/JsonText.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <set>
#include <utility>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "exchange/Collector.h"
#include "Names.h"
#include "ui/Output.h"

namespace td::dmctl {

namespace {

/// Members by name: the order of an export does not matter.
using Document = nlohmann::json;

constexpr const char* FORMAT = "settings of a television";
constexpr int FORMAT_VERSION = 1;

// --- writing ---

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

std::string escapedKey(const std::string& key) {
    std::string text;
    for (const char c : key)
        text += c == '~' ? std::string("~0") : c == '/' ? std::string("~1") : std::string(1, c);
    return text;
}

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
        return m_parent->text() + "/" + escapedKey(m_key);
    }

private:
    const Pointer* m_parent = nullptr;
    std::string m_key;
};

/// Watches a document while it is read, for what a finished one does not show: members that stand twice, and what is
/// nested deeper than an export, where the reading ends.
class Watching {
public:
    explicit Watching(Collector& collector) : m_collector(collector) {}

    bool operator()(int, Document::parse_event_t event, Document& parsed) {
        using Event = Document::parse_event_t;
        switch (event) {
        case Event::object_start:
        case Event::array_start:
            if (m_levels.size() >= DEEPEST)
                throw UsageError("this is nested deeper than any export");
            m_levels.push_back({event == Event::array_start, 0, {}, {}});
            break;
        case Event::object_end:
        case Event::array_end:
            m_levels.pop_back();
            passElement();
            break;
        case Event::key:
            m_levels.back().key = parsed.get<std::string>();
            if (!m_levels.back().keys.insert(m_levels.back().key).second)
                m_collector.fault(place(), "the member stands twice");
            break;
        case Event::value:
            passElement();
            break;
        }
        return true;
    }
    std::string place() const {
        std::string text;
        for (const Level& level : m_levels)
            text += "/" + (level.isArray ? std::to_string(level.index) : escapedKey(level.key));
        return text;
    }

private:
    static constexpr std::size_t DEEPEST = 16;
    struct Level {
        bool isArray;
        std::size_t index;          ///< of the element that is being read
        std::string key;            ///< of the member
        std::set<std::string> keys; ///< met so far
    };

    void passElement() {
        if (!m_levels.empty() && m_levels.back().isArray)
            ++m_levels.back().index;
    }

    Collector& m_collector;
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

} // namespace

std::string jsonText(const std::string& copy, const std::vector<ExchangeCategory>& categories) {
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

void parseJson(std::string_view bytes, Collector& collector) {
    Watching watching(collector);
    try {
        JsonReader(collector).read(Document::parse(bytes.begin(), bytes.end(), std::ref(watching)));
    } catch (const Document::parse_error& error) {
        const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, bytes.size()));
        collector.fault(fmt::format("line {}", 1 + std::count(bytes.begin(), end, '\n')),
                        fmt::format("this is no JSON: {}", error.what()));
    } catch (const UsageError& error) {
        collector.fault(watching.place(), error.what());
    } catch (const Document::exception& error) {
        collector.fault("", fmt::format("this cannot be read: {}", error.what()));
    }
}

} // namespace td::dmctl
