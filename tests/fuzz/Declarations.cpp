#include "Declarations.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include <dmctl/exchange/Exchange.h>
#include <dmctl/Names.h>

#include <dmctl/inspect/FileInspection.h>

#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "SettingsFileInput.h"

namespace td::fuzz {

namespace {

using Words = std::set<std::string>;
using Steering = SettingsFileInput::Steering;

std::vector<std::string> listOf(const Words& words) {
    return {words.begin(), words.end()};
}

std::string keyLine(const CategoryLayout& layout, const Field& field, int value) {
    char line[text::LINE_BUFFER];
    text::formatKeyLine(layout.keyLine, field.key, value, line, sizeof line);
    return line;
}

/// The first and the last record's header lines.
std::vector<std::string> headers(const CategoryLayout& layout) {
    std::vector<std::string> lines;
    for (const int record : {0, layout.recordCount() - 1}) {
        int indices[MAX_DIMENSIONS] = {};
        layout.indicesOf(record, indices);
        lines.push_back(text::sectionId(layout, indices) + "\n");
    }
    return lines;
}

Words settingsFileWords() {
    Words words{text::SUMMARY_HEADER, text::crcLine(0), "SN", "Version", "CRC", " = 0x", "#", "[", "]\n", "-999"};
    for (const CategoryLayout* layout : allLayouts()) {
        const std::string summary = text::summary("TVTYPE01", layout->version, 0, true);
        words.insert(summary.substr(0, summary.find("CRC")));
        words.insert(layout->version);
        for (const std::string& header : headers(*layout))
            words.insert(header);
        for (const Field& field : layout->fields)
            words.insert(keyLine(*layout, field, field.defaultValue));
    }
    return words;
}

std::string sectionOf(const CategoryLayout& layout, int record, int value) {
    int indices[MAX_DIMENSIONS] = {};
    layout.indicesOf(record, indices);
    std::string section = text::sectionId(layout, indices) + "\n";
    for (const Field& field : layout.fields)
        section += keyLine(layout, field, value);
    return section;
}

/// The number of a category's layout among all, which an input begins with.
std::string beginning(std::size_t number, int steering) {
    return {static_cast<char>(number), static_cast<char>(steering)};
}

std::vector<std::string> settingsFileSeeds() {
    constexpr char EDIT[] = {0, 0, 1, '#'};
    std::vector<std::string> seeds;
    const std::vector<const CategoryLayout*> layouts = allLayouts();
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        const CategoryLayout& layout = *layouts[i];
        const std::string sections = sectionOf(layout, layout.recordCount() - 1, 7) + sectionOf(layout, 0, 12);
        seeds.push_back(beginning(i, Steering::FRAMED | Steering::AT_FACTORY) + sections);
        seeds.push_back(beginning(i, Steering::FRAMED | Steering::OLD) + sections);
        if (isSmall(layout)) {
            seeds.push_back(beginning(i, Steering::PATCHED | Steering::MENDED) + std::string(EDIT, sizeof EDIT));
            seeds.push_back(beginning(i, Steering::PATCHED | Steering::OLD | Steering::BACKED_UP) +
                            std::string(EDIT, sizeof EDIT));
        }
    }
    const std::string small = text::summary("TVTYPE01", layouts[0]->version, 0, true) + sectionOf(*layouts[0], 0, 3);
    seeds.push_back(beginning(0, Steering::MENDED) + "# comment\n" + small);
    seeds.push_back(beginning(0, 0) + withChecksumMended(*layouts[0], small));
    return seeds;
}

std::vector<std::string> checksumSeeds() {
    std::vector<std::string> seeds;
    for (const std::string& seed : settingsFileSeeds()) {
        const SettingsFileInput input(seed);
        if (input.file.size() < 4096)
            seeds.push_back(input.file);
    }
    return seeds;
}

Words redoWords() {
    return {"redo 1\n", "contents ", "checksum ", " 0x", "write ", "end 0x", "\n", "0", "536870911"};
}

std::vector<std::string> redoSeeds() {
    RedoRecord record;
    record.contentPosition = 128;
    record.crcPosition = 90;
    record.writes = {{132, "PictureMode              = 0007\n"}, {128, "[0]\n"}};
    const std::string text = redoText(record);
    return {std::string(1, '\0') + text, '\2' + text.substr(0, text.rfind("end")),
            std::string("\x41\0\4\x20SoundMode                = 0007\n", 36),
            std::string("\x7f\0\4\5hello\1\0\3abc", 15)};
}

Words exchangeWords() {
    Words words{"\"format\"",
                "\"formatVersion\"",
                "\"copy\"",
                "\"categories\"",
                "\"category\"",
                "\"version\"",
                "\"records\"",
                "\"record\"",
                "\"fields\"",
                "\"settings of a television\"",
                "category,index1,index2,index3,index4,index5,field,value\n",
                ",",
                "\"\"",
                "\xEF\xBB\xBF"};
    for (const CategoryLayout* layout : allLayouts()) {
        words.insert(dmctl::categoryName(*layout));
        for (const Field& field : layout->fields)
            words.insert(field.argumentName());
        for (const Dimension& dimension : layout->dimensions) {
            for (const std::string& name : dmctl::valueNames(dimension))
                words.insert(name);
        }
    }
    return words;
}

std::vector<std::string> exchangeSeeds() {
    std::vector<std::string> seeds;
    for (const CategoryLayout* layout : allLayouts()) {
        dmctl::ExchangeCategory category(*layout);
        for (const Field& field : layout->fields) {
            const std::size_t cell = dmctl::cellOf(*layout, layout->recordCount() - 1, field);
            category.given[cell] = true;
            category.values[cell] = field.defaultValue;
            ++category.count;
        }
        seeds.push_back(exchangeText(dmctl::ExchangeFormat::AsJson, "current", {category}));
        seeds.push_back(exchangeText(dmctl::ExchangeFormat::AsCsv, "current", {category}));
    }
    return seeds;
}

Words configurationFileWords() {
    return {"[ModuleData]\n", "Path", "[FactoryWB]\n", "BIN", "[Critical]\n", "Country", " = ", ";", "0x",
            "\r\n",           "\t",   "2147483647"};
}

std::vector<std::string> configurationFileSeeds() {
    return {"; television\n[ModuleData]\nPath = model-1 ; comment\n",
            "[FactoryWB]\r\nBIN=0x3\r\n[Critical]\r\n  Country = 9\r\n", "Path=outside\n[ModuleData]\nPath\n"};
}

} // namespace

std::vector<std::string> wordsOf(std::string_view target) {
    if (target == "exchange")
        return listOf(exchangeWords());
    if (target == "redo_record")
        return listOf(redoWords());
    if (target == "configuration_file")
        return listOf(configurationFileWords());
    return listOf(settingsFileWords());
}

std::vector<std::string> seedsOf(std::string_view target) {
    if (target == "exchange")
        return exchangeSeeds();
    if (target == "redo_record")
        return redoSeeds();
    if (target == "configuration_file")
        return configurationFileSeeds();
    return target == "checksum" ? checksumSeeds() : settingsFileSeeds();
}

std::string dictionaryText(const std::vector<std::string>& words) {
    constexpr std::size_t LONGEST = 64;
    std::string dictionary;
    for (const std::string& word : words) {
        if (word.empty() || word.size() > LONGEST)
            continue;
        dictionary += '"';
        for (const char c : word) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned int>(static_cast<unsigned char>(c)));
            const bool isPlain = c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
            dictionary += isPlain ? std::string(1, c) : std::string(escaped);
        }
        dictionary += "\"\n";
    }
    return dictionary;
}

} // namespace td::fuzz
