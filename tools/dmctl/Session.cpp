#include "Session.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/DebugOutput.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/SystemPaths.h"
#include "inspect/FileInspection.h"
#include "Names.h"
#include "RootUse.h"

namespace fs = std::filesystem;

namespace td::dmctl {

namespace {

constexpr const char* LOG_TAG = "[dataModule] ";

/// A log line without place and tag.
void printShort(DebugOutput::Level, const char* line) {
    const char* const tag = std::strstr(line, LOG_TAG);
    const char* text = tag != nullptr ? tag + std::strlen(LOG_TAG) : line;
    std::string shown = text + std::strspn(text, " ");
    shown.erase(shown.find_last_not_of(" \n") + 1);
    fmt::print(stderr, "library: {}\n", shown);
}

void setLog(bool verbose) {
    DebugOutput::setLevel(verbose ? DebugOutput::Level::Info : DebugOutput::Level::Warning);
    if (!verbose)
        DebugOutput::setSink(printShort);
}

void checkRoot(const fs::path& root, Session::Root how) {
    std::error_code error;
    if (how == Session::Root::IsMade && !fs::exists(root, error))
        return;
    if (!fs::exists(root, error))
        throw Failure(fmt::format("the root {} does not exist; make it with: dmctl --root {} init", root.string(),
                                  root.string()));
    if (!fs::is_directory(root, error))
        throw Failure(fmt::format("the root {} is not a directory", root.string()));
}

void refuseRootInUse(const Options& options) {
    if (!options.writes || options.force)
        return;
    const std::string users = usersOfRoot();
    if (!users.empty())
        throw RootInUse(fmt::format("the files are in use by {}, which would not notice the change or undo it. End it "
                                    "first, or write all the same with --force",
                                    users));
}

} // namespace

const char* copyName(Copy copy) {
    constexpr const char* NAMES[] = {"current", "backup", "factory"};
    return NAMES[static_cast<int>(copy)];
}

Session::Session(const Options& options, Root root) {
    setLog(options.verbose);
    if (options.rootGiven) {
        if (options.root.empty())
            throw UsageError("--root needs a directory; \"/\" is this machine's own");
        const fs::path absolute = fs::absolute(options.root).lexically_normal();
        checkRoot(absolute, root);
        if (!setRootPrefix(absolute.c_str()))
            throw UsageError(fmt::format("the root {} has {} characters; the files' paths would be too long, so use a "
                                         "shorter one or a link to it",
                                         absolute.string(), absolute.string().size()));
        m_rootOption = "--root " + absolute.string() + " ";
    }
    refuseRootInUse(options);
    // The posts that these listeners wait for are for the programs of the television.
    FileDataSeparateManager::setListening(false);
    m_manager = FileDataSeparateManager::instance();
    if (FileUtil::checkFile(underRootPrefix(paths::MODEL_INDEX_FILE).c_str()))
        m_manager->loadManufactoryPath();
    m_directories[static_cast<int>(Copy::Current)] = paths::currentDirectory();
    m_directories[static_cast<int>(Copy::Backup)] = paths::backupDirectory();
    m_directories[static_cast<int>(Copy::Factory)] = m_manager->getManufactoryPath();
}

Session::~Session() {
    close();
    DebugOutput::setSink({});
}

bool Session::currentIsSound(const CategoryLayout& layout) const {
    std::string bytes;
    std::string reason;
    if (!readFile(path(layout, Copy::Current), bytes, reason))
        return false;
    return inspectFile(layout, bytes).isGood();
}

void Session::close() {
    if (m_manager == nullptr)
        return;
    m_manager->stop();
    FileDataSeparateManager::release();
    m_manager = nullptr;
}

void Session::start() {
    if (!m_manager->init(DS_SCOPE_ALL))
        throw Failure("the library could not start its worker thread");
}

void Session::load(const CategoryLayout& layout) {
    bool found = false;
    for (const Copy copy : COPIES)
        found = found || exists(layout, copy);
    const std::string name = categoryName(layout);
    if (!found)
        throw Failure(fmt::format("there is no file of {}: neither {} nor its backup and factory copies; make them "
                                  "with: dmctl {}init",
                                  name, path(layout, Copy::Current),
                                  m_rootOption.empty() ? "--root / " : m_rootOption));
    adoptTvType(layout);
    if (!m_manager->loadData(layout.category))
        throw Failure(fmt::format("{} could not be loaded from any of its copies; run `dmctl {}verify {}` to see what "
                                  "is wrong with them",
                                  name, m_rootOption, name));
    auto* const op = dynamic_cast<AbstractFileOperator*>(m_manager->getFileOperator(layout.category));
    if (op != nullptr)
        op->waitForMerge();
}

void Session::adoptTvType(const CategoryLayout& layout) {
    if (m_tvTypeKnown)
        return;
    m_manager->setTvType(tvTypeOf(layout).c_str());
    m_tvTypeKnown = true;
}

std::string Session::tvTypeOf(const CategoryLayout& layout) const {
    for (const Copy copy : COPIES) {
        std::string bytes;
        std::string reason;
        if (readFile(path(layout, copy), bytes, reason) && !bytes.empty()) {
            const FileInspection inspection = inspectFile(layout, bytes);
            if (!inspection.version.empty())
                return inspection.tvType;
        }
    }
    return {};
}

const std::string& Session::directory(Copy copy) const {
    return m_directories[static_cast<int>(copy)];
}

std::vector<std::string> Session::makeDirectories(std::initializer_list<Copy> copies) const {
    std::vector<std::string> made;
    for (const Copy copy : copies) {
        const std::string& path = directory(copy);
        std::error_code error;
        if (fs::is_directory(path, error))
            continue;
        fs::create_directories(fs::path(path).parent_path(), error);
        if (error)
            throw Failure(fmt::format("the directory {} cannot be made: {}", path, error.message()));
        made.push_back(path);
    }
    return made;
}

std::string Session::path(const CategoryLayout& layout, Copy copy) const {
    return directory(copy) + layout.file;
}

bool Session::exists(const CategoryLayout& layout, Copy copy) const {
    std::error_code error;
    return !strayText(path(layout, copy)).empty() || fs::exists(path(layout, copy), error);
}

std::string strayText(const std::string& path) {
    if (!FileUtil::isStray(path.c_str()))
        return {};
    std::error_code error;
    const bool isLink = fs::is_symlink(path, error);
    const std::string start = isLink ? "it is a link to " : "it is ";
    switch (fs::status(path, error).type()) {
    case fs::file_type::directory:
        return start + "a directory";
    case fs::file_type::fifo:
        return start + "a FIFO";
    case fs::file_type::socket:
        return start + "a socket";
    case fs::file_type::block:
    case fs::file_type::character:
        return start + "a device";
    default:
        return start + (isLink ? "nowhere" : "no file");
    }
}

bool readFile(const std::string& path, std::string& bytes, std::string& reason) {
    const ReadLock lock(fs::path(path).filename());
    return readUnlocked(path, bytes, reason);
}

bool readUnlocked(const std::string& path, std::string& bytes, std::string& reason) {
    reason = strayText(path);
    return reason.empty() && readAny(path, bytes, reason);
}

bool readAny(const std::string& path, std::string& bytes, std::string& reason) {
    std::error_code error;
    if (fs::is_directory(path, error)) {
        reason = "it is a directory";
        return false;
    }
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        reason = std::strerror(errno);
        return false;
    }
    std::string read;
    char block[65536];
    std::size_t count = 0;
    while ((count = std::fread(block, 1, sizeof block, file.get())) > 0)
        read.append(block, count);
    if (std::ferror(file.get()) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    bytes = std::move(read);
    return true;
}

std::vector<std::vector<int>> readRecords(Session& session, const CategoryLayout& layout,
                                          const std::vector<std::vector<int>>& records) {
    std::vector<std::vector<int>> rows;
    for (const std::vector<int>& record : records) {
        std::vector<_Argument_t> values;
        for (const Field& field : layout.fields)
            values.push_back({field.argumentName(), 0});
        if (!session.manager().loadData(layout.category, record, values))
            throw Failure(fmt::format("{} could not be read", categoryName(layout)));
        std::vector<int>& row = rows.emplace_back();
        for (const _Argument_t& value : values)
            row.push_back(value.value);
    }
    return rows;
}

} // namespace td::dmctl
