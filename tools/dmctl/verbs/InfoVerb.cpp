// info: what there is on a root: directories, copies, scopes, users, the detail-log switch.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "FileTable.h"
#include "Names.h"
#include "RootUse.h"
#include "Session.h"
#include "ui/Output.h"
#include "ui/Signals.h"
#include "verbs/Verb.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

struct CategoryInfo {
    const CategoryLayout* layout = nullptr;
    std::vector<FileTable> copies; ///< by Copy

    const FileTable& copy(Copy which) const { return copies[static_cast<std::size_t>(which)]; }
    bool differs(Copy which) const {
        return copy(which).isGood() && copy(Copy::Current).isGood() && copy(which).values != copy(Copy::Current).values;
    }
};

const char* stateName(FileTable::State state) {
    switch (state) {
    case FileTable::State::Good:
        return "good";
    case FileTable::State::Missing:
        return "missing";
    case FileTable::State::Unreadable:
        return "unreadable";
    case FileTable::State::OtherVersion:
        return "other version";
    case FileTable::State::Damaged:
        break;
    }
    return "damaged";
}

/// The time since then in its largest unit.
std::string ageText(std::time_t then) {
    const auto age = std::max<long long>(0, static_cast<long long>(std::time(nullptr)) - static_cast<long long>(then));
    if (age < 120)
        return fmt::format("{} s", age);
    if (age < 7200)
        return fmt::format("{} min", age / 60);
    return age < 172800 ? fmt::format("{} h", age / 3600) : fmt::format("{} d", age / 86400);
}

std::vector<std::string> scopesOf(const CategoryLayout& layout) {
    std::vector<std::string> names;
    if (FileDataSeparateManager::isInScope(layout.category, DS_SCOPE_BIZ))
        names.emplace_back("biz");
    if (FileDataSeparateManager::isInScope(layout.category, DS_SCOPE_DVBMAIN))
        names.emplace_back("dvbmain");
    names.emplace_back("all");
    return names;
}

std::string copyText(const CategoryInfo& info, Copy which) {
    const FileTable& copy = info.copy(which);
    if (copy.state == FileTable::State::Missing)
        return "missing";
    std::string state = stateName(copy.state);
    if (copy.state == FileTable::State::OtherVersion)
        state = copy.inspection.version;
    else if (copy.isGood() && which != Copy::Current)
        state = info.differs(which) ? "differs" : info.copy(Copy::Current).isGood() ? "same" : "good";
    return fmt::format("{}, {}", state, ageText(copy.changed));
}

std::string logText(const LogWord& word) {
    if (!word.isAttached())
        return word.reason().empty() ? "off, no process has made the switch" : word.reason();
    return fmt::format("{}, {} listening", word.value() != 0 ? "on" : "off", word.listeners());
}

Style styleOf(const FileTable& copy) {
    return copy.isGood() ? Style::Plain : Style::Bad;
}

void printHead(const Session& session, const Options& options) {
    const std::string users = usersOfRoot();
    Rows rows{{"version", DMCTL_VERSION},
              {"root", options.rootGiven ? options.root : std::string("/")},
              {"in use by", users.empty() ? "nobody" : users},
              {"detail log", logText(LogWord())}};
    for (const Copy copy : COPIES) {
        std::error_code error;
        const std::string& directory = session.directory(copy);
        const bool exists = fs::is_directory(directory, error);
        rows.push_back(
            {copyName(copy), Cell(directory + (exists ? "" : " is MISSING"), exists ? Style::Plain : Style::Bad)});
    }
    printColumns(rows);
}

void print(const Session& session, const Options& options, const std::vector<CategoryInfo>& infos) {
    printHead(session, options);
    fmt::print("\n");
    Rows rows{headings({"category", "version", "scopes", "bytes", "current", "backup", "factory"})};
    for (const CategoryInfo& info : infos) {
        const FileTable& current = info.copy(Copy::Current);
        std::vector<Cell> row{categoryName(*info.layout), info.layout->version, joined(scopesOf(*info.layout)),
                              current.bytes.empty() ? "-" : std::to_string(current.bytes.size())};
        for (const Copy copy : COPIES)
            row.emplace_back(copyText(info, copy), styleOf(info.copy(copy)));
        rows.push_back(std::move(row));
    }
    printColumns(rows);
}

Json copyJson(const CategoryInfo& info, Copy which) {
    const FileTable& copy = info.copy(which);
    Json json{{"state", stateName(copy.state)}};
    if (copy.state == FileTable::State::Missing)
        return json;
    json["bytes"] = copy.bytes.size();
    json["version"] = copy.inspection.version;
    json["changed"] = static_cast<long long>(copy.changed);
    if (which != Copy::Current)
        json["differsFromCurrent"] =
            copy.isGood() && info.copy(Copy::Current).isGood() ? Json(info.differs(which)) : Json();
    if (!copy.isGood())
        json["trouble"] = copy.trouble;
    return json;
}

Json asJson(const Session& session, const Options& options, const std::vector<CategoryInfo>& infos) {
    Json users = Json::array();
    for (const RootUser& user : rootUsers())
        users.push_back({{"pid", user.pid}, {"name", user.name}});
    const LogWord word;
    Json directories = Json::object();
    for (const Copy copy : COPIES) {
        std::error_code error;
        directories[copyName(copy)] = {{"path", session.directory(copy)},
                                       {"exists", fs::is_directory(session.directory(copy), error)}};
    }
    Json categories = Json::array();
    for (const CategoryInfo& info : infos) {
        Json json{{"category", categoryName(*info.layout)},
                  {"file", info.layout->file},
                  {"version", info.layout->version},
                  {"scopes", scopesOf(*info.layout)}};
        for (const Copy copy : COPIES)
            json[copyName(copy)] = copyJson(info, copy);
        categories.push_back(std::move(json));
    }
    return {{"version", DMCTL_VERSION},
            {"root", options.rootGiven ? options.root : std::string("/")},
            {"users", users},
            {"detailLog",
             {{"switch", word.isAttached() ? Json(word.value() != 0 ? "on" : "off") : Json()},
              {"listeners", word.listeners()}}},
            {"directories", directories},
            {"categories", categories}};
}

} // namespace

int runInfo(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    const Session session(options);
    std::vector<CategoryInfo> infos;
    for (const CategoryLayout* layout : layouts) {
        CategoryInfo& info = infos.emplace_back();
        info.layout = layout;
        for (const Copy copy : COPIES)
            info.copies.push_back(readTable(*layout, session.path(*layout, copy)));
    }
    if (options.json)
        printJson(asJson(session, options, infos));
    else
        print(session, options, infos);
    return EXIT_FINE;
}

} // namespace td::dmctl
