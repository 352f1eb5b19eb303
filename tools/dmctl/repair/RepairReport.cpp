#include "repair/RepairReport.h"

#include <string>
#include <utility>

#include <fmt/core.h>

#include "Names.h"

namespace td::dmctl {

namespace {

/// Sections not wholly saved are named up to this number unless all are asked for.
constexpr std::size_t NAMED_SECTIONS = 20;

const char* sourceName(std::size_t source) {
    return source == DEFAULTS ? "defaults" : copyName(COPIES[source]);
}

bool isWholly(const FieldCounts& counts, std::size_t source) {
    for (std::size_t other = 0; other < counts.size(); ++other) {
        if (other != source && counts[other] > 0)
            return false;
    }
    return true;
}

std::string fieldsText(const FieldCounts& counts, std::size_t fields) {
    std::vector<std::string> parts;
    for (std::size_t source = 0; source < counts.size(); ++source) {
        if (counts[source] > 0)
            parts.push_back(static_cast<std::size_t>(counts[source]) == fields
                                ? sourceName(source)
                                : fmt::format("{} of {} fields {}", counts[source], fields, sourceName(source)));
    }
    return joined(parts);
}

/// Sections by where they come from; the last number counts those that come from several.
std::array<int, DEFAULTS + 2> sectionCounts(const Salvage& salvage) {
    std::array<int, DEFAULTS + 2> sections{};
    for (const FieldCounts& counts : salvage.records) {
        std::size_t source = 0;
        while (source <= DEFAULTS && !isWholly(counts, source))
            ++source;
        ++sections[source];
    }
    return sections;
}

void printSalvage(const RepairOutcome& outcome, Copy repaired, bool all) {
    const Salvage& salvage = *outcome.salvage;
    const auto sections = sectionCounts(salvage);
    std::vector<std::string> parts;
    for (std::size_t source = 0; source < sections.size(); ++source) {
        if (sections[source] > 0)
            parts.push_back(
                fmt::format("{} {}", sections[source],
                            source > DEFAULTS ? "from several" : fmt::format("from {}", sourceName(source))));
    }
    fmt::print("    {}: {}\n", counted(salvage.records.size(), "section"), joined(parts));
    if (!salvage.proven)
        fmt::print("    the checksum does not fit, so a value that was read may still be a wrong one\n");
    std::vector<std::vector<std::string>> rows;
    std::size_t left = 0;
    for (std::size_t record = 0; record < salvage.records.size(); ++record) {
        const bool whole = isWholly(salvage.records[record], static_cast<std::size_t>(repaired));
        if (whole && !all)
            continue;
        if (rows.size() < NAMED_SECTIONS || all)
            rows.push_back({recordLabel(*outcome.layout, static_cast<int>(record)),
                            fieldsText(salvage.records[record], outcome.layout->fields.size())});
        else
            ++left;
    }
    printColumns(rows, 4);
    if (left > 0)
        fmt::print("    and {} more, which --verbose shows\n", left);
}

Json salvageJson(const RepairOutcome& outcome) {
    const auto sections = sectionCounts(*outcome.salvage);
    Json summary = Json::object();
    for (std::size_t source = 0; source < sections.size(); ++source)
        summary[source > DEFAULTS ? "several" : sourceName(source)] = sections[source];
    Json list = Json::array();
    for (std::size_t record = 0; record < outcome.salvage->records.size(); ++record) {
        Json fields = Json::object();
        for (std::size_t source = 0; source <= DEFAULTS; ++source) {
            if (outcome.salvage->records[record][source] > 0)
                fields[sourceName(source)] = outcome.salvage->records[record][source];
        }
        list.push_back({{"record", recordJson(*outcome.layout, indicesOf(*outcome.layout, static_cast<int>(record)))},
                        {"fields", fields}});
    }
    return {{"checksumFits", outcome.salvage->proven}, {"summary", summary}, {"sections", list}};
}

} // namespace

void printRepairs(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request, bool verbose) {
    std::size_t good = 0;
    std::size_t repaired = 0;
    std::size_t failed = 0;
    for (const RepairOutcome& outcome : outcomes) {
        if (outcome.action.empty() && outcome.failure.empty() && !outcome.leftAlone) {
            ++good;
            continue;
        }
        fmt::print("{}: the {} copy {}\n", categoryName(*outcome.layout), copyName(request.copy),
                   outcome.before.trouble);
        if (!outcome.action.empty() && outcome.failure.empty()) {
            ++repaired;
            fmt::print("  {}{}\n", request.dryRun ? "would be " : "", outcome.action);
        }
        if (outcome.leftAlone)
            fmt::print("  left alone; the library sees to that itself\n");
        if (outcome.salvage)
            printSalvage(outcome, request.copy, verbose);
        if (!outcome.kept.empty())
            fmt::print("  the damaged file is kept as {}\n", outcome.kept);
        if (!outcome.failure.empty()) {
            ++failed;
            fmt::print("  NOT repaired: {}\n", outcome.failure);
        }
    }
    fmt::print("{}: {} good before, {} {}, {} not.\n", counted(outcomes.size(), "file"), good, repaired,
               request.dryRun ? "could be repaired" : "repaired", failed);
}

Json repairsJson(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request) {
    Json list = Json::array();
    for (const RepairOutcome& outcome : outcomes) {
        const bool done = !outcome.action.empty() && outcome.failure.empty();
        Json json{{"category", categoryName(*outcome.layout)},
                  {"copy", copyName(request.copy)},
                  {"path", outcome.path},
                  {"found", outcome.before.isGood() ? "good" : outcome.before.trouble},
                  {"repaired", done && !request.dryRun},
                  {"action", done ? Json(outcome.action) : Json()},
                  {"failure", outcome.failure.empty() ? Json() : Json(outcome.failure)},
                  {"kept", outcome.kept.empty() ? Json() : Json(outcome.kept)}};
        if (outcome.salvage)
            json["salvage"] = salvageJson(outcome);
        list.push_back(std::move(json));
    }
    return {{"dryRun", request.dryRun}, {"categories", list}};
}

} // namespace td::dmctl
