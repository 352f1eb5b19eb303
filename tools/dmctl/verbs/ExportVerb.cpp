// export: tables of one copy as JSON or CSV.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>

#include "exchange/Exchange.h"
#include "FileTable.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

struct ExportRequest {
    std::vector<const CategoryLayout*> layouts;
    std::string file; ///< empty: standard output
    ExchangeFormat format = ExchangeFormat::AsJson;
    Copy copy = Copy::Current;
};

bool isCategory(const std::string& word) {
    try {
        categoryNamed(word);
        return true;
    } catch (const UsageError&) {
        return false;
    }
}

/// A last word with a dot or a slash in it, which no category has, is the file.
bool isFileName(const std::string& word) {
    return word.find_first_of("./") != std::string::npos && !isCategory(word);
}

ExportRequest requestOf(const Options& options, Words words) {
    ExportRequest request;
    if (!words.empty() && isFileName(words.back())) {
        request.file = words.back();
        words.pop_back();
    }
    request.layouts = categoriesNamed(words);
    request.copy = copyNamed(options.value("--copy", copyName(Copy::Current)));
    const std::string suffix = fs::path(request.file).extension().string();
    const std::string format = options.value("--format", suffix == ".csv" ? "csv" : "json");
    if (format != "json" && format != "csv")
        throw UsageError(unknownWord("format", format, {"json", "csv"}, "the formats are"));
    request.format = format == "csv" ? ExchangeFormat::AsCsv : ExchangeFormat::AsJson;
    if (options.json && request.file.empty() && request.format == ExchangeFormat::AsCsv)
        throw UsageError("with --json a CSV needs a FILE to go to");
    return request;
}

std::vector<ExchangeCategory> readAll(const Session& session, const ExportRequest& request) {
    std::vector<ExchangeCategory> categories;
    std::string troubles;
    for (const CategoryLayout* layout : request.layouts) {
        const std::string path = session.path(*layout, request.copy);
        FileTable table = readTable(*layout, path);
        if (!table.isGood()) {
            troubles += fmt::format("\n  {} {}", path, table.trouble);
            continue;
        }
        ExchangeCategory& category = categories.emplace_back(*layout);
        category.values = std::move(table.values);
        category.given.assign(category.values.size(), true);
        category.count = category.values.size();
    }
    if (!troubles.empty())
        throw Failure("nothing was exported, because not all can be:" + troubles);
    return categories;
}

/// Whether the whole text went to a file opened in `mode`.
bool writeText(const std::string& path, const char* mode, const std::string& text) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), mode), std::fclose);
    const bool written = file && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    return file && std::fclose(file.release()) == 0 && written;
}

/// A file is there as a whole or not at all. A device or a pipe is no file to replace, so it is written to.
void writeExport(const std::string& path, const std::string& text) {
    std::error_code error;
    const bool isOther = fs::exists(path, error) && !fs::is_regular_file(path, error);
    const std::string target = isOther ? path : path + FileUtil::TEMPORARY_SUFFIX;
    // Elsewhere than in the settings' directories others may have put a link there.
    const bool written =
        isOther ? writeText(target, "wb", text) : FileUtil::makeWay(target.c_str()) && writeText(target, "wbx", text);
    if (written && (isOther || std::rename(target.c_str(), path.c_str()) == 0))
        return;
    const std::string reason = std::strerror(errno);
    if (!isOther)
        std::remove(target.c_str());
    throw Failure(fmt::format("{} cannot be written: {}", path, reason));
}

} // namespace

int runExport(const Options& options, const Words& words) {
    const ExportRequest request = requestOf(options, words);
    const Session session(options);
    const std::vector<ExchangeCategory> categories = readAll(session, request);
    const std::string text = exchangeText(request.format, copyName(request.copy), categories);
    if (request.file.empty()) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        if (std::fflush(stdout) != 0)
            throw Failure(fmt::format("standard output cannot be written: {}", std::strerror(errno)));
        return EXIT_FINE;
    }
    writeExport(request.file, text);
    std::size_t values = 0;
    for (const ExchangeCategory& category : categories)
        values += category.count;
    if (options.json)
        printJson({{"file", request.file},
                   {"copy", copyName(request.copy)},
                   {"categories", categories.size()},
                   {"values", values}});
    else
        fmt::print("{}: {} values of {}, {} bytes\n", request.file, values,
                   categories.size() == 1 ? "1 category" : fmt::format("{} categories", categories.size()),
                   text.size());
    return EXIT_FINE;
}

} // namespace td::dmctl
