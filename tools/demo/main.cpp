// Plays the life of a television on real files under a folder of its own: the factory makes the files, the set boots
// for the first time, reads and stores values, restarts and reads them again. Tells at the end what it did.
// Exit status: 0 when every value survived the restart.
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/RootPrefix.h>

namespace fs = std::filesystem;

namespace {

constexpr int STORE_TIMEOUT_MS = 10'000;

constexpr const char* CURRENT = "/var/local/dataModule/current";
constexpr const char* BACKUP = "/var/local/dataModule/backup";
constexpr const char* FACTORY = "/ovdata/model/dataModule/manufactory";

/// One value that the demo follows, with what it found of it at each stage.
struct FollowedValue {
    const char* label;
    td::_DataCategory_t category;
    std::vector<int> dimensions;
    const char* field;
    int expected;        ///< what a restart has to bring back
    bool storedByClient; ///< false: the library copies it there from the value before
    int before = 0;
    int after = 0;
};

constexpr int DTV = 1, HDMI1 = 4, NETFLIX = 12, YOUTUBE = 13;
constexpr int VIVID = 0, STANDARD = 1, MOVIE = 3;
constexpr int SDR_FHD = 0, SDR_UHD = 1, HDR_OTHER_UHD = 3;

std::vector<FollowedValue> followedValues() {
    return {
        {"HDMI1, MOVIE, SDR_UHD: Contrast", td::PICTURE_MODE, {HDMI1, MOVIE, SDR_UHD}, "Contrast", 62, true},
        {"HDMI1, MOVIE, SDR_UHD: BacklightLevel",
         td::PICTURE_MODE,
         {HDMI1, MOVIE, SDR_UHD},
         "BacklightLevel",
         80,
         true},
        {"DTV, STANDARD, SDR_FHD: Hue", td::PICTURE_MODE, {DTV, STANDARD, SDR_FHD}, "Hue", -7, true},
        {"global: HDMI1_DR", td::PICTURE_GLOBAL, {}, "HDMI1_DR", 2, true},
        {"global: ApplyModeToSource", td::PICTURE_GLOBAL, {}, "ApplyModeToSource", 1, true},
        {"NETFLIX, VIVID, HDR_OTHER_UHD: Color", td::PICTURE_MODE, {NETFLIX, VIVID, HDR_OTHER_UHD}, "Color", 58, true},
        {"YOUTUBE, the same, copied from NETFLIX",
         td::PICTURE_MODE,
         {YOUTUBE, VIVID, HDR_OTHER_UHD},
         "Color",
         58,
         false},
    };
}

void require(bool success, const std::string& what) {
    if (!success)
        throw std::runtime_error("This failed: " + what);
}

/// One run of the television's process: a manager from its start to its release.
class Run {
public:
    Run() : m_manager(*td::FileDataSeparateManager::instance()) { td::FileDataSeparateManager::setListening(false); }
    ~Run() {
        m_manager.stop();
        td::FileDataSeparateManager::release();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    td::FileDataSeparateManager& manager() { return m_manager; }

private:
    td::FileDataSeparateManager& m_manager;
};

/// The milliseconds that `action` takes.
template <typename Action>
double timed(Action&& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

int read(td::FileDataSeparateManager& manager, const FollowedValue& followed) {
    std::vector<td::_Argument_t> values{{followed.field, 0}};
    require(manager.loadData(followed.category, followed.dimensions, values), fmt::format("read {}", followed.label));
    return values.front().value;
}

void makeParents(const fs::path& root) {
    require(!fs::exists(root) || fs::is_empty(root), fmt::format("{} has to be new or empty", root.string()));
    for (const char* directory : {CURRENT, FACTORY})
        fs::create_directories(root / fs::path(directory).relative_path().parent_path());
    require(td::setRootPrefix(root.c_str()), fmt::format("use {} as root; its path is too long", root.string()));
}

void makeFactoryFiles() {
    Run run;
    require(run.manager().init(td::DS_SCOPE_ALL), "register the categories");
    require(run.manager().initAllData(), "create the files");
}

struct FirstBoot {
    double copyMs = 0;
    double loadMs = 0;
    double storeMs = 0;   ///< all store calls together: what a client waits for
    double writtenMs = 0; ///< until the last one was on the disk
};

FirstBoot playFirstBoot(std::vector<FollowedValue>& followed) {
    FirstBoot times;
    Run run;
    td::FileDataSeparateManager& manager = run.manager();
    times.copyMs = timed([&] { require(manager.initCurrentFromManufactory(), "copy the factory's files"); });
    require(manager.init(td::DS_SCOPE_ALL), "register the categories");
    times.loadMs = timed([&] { manager.loadAllData(); });
    for (FollowedValue& value : followed) {
        value.before = read(manager, value);
        require(value.before != value.expected, fmt::format("find a value to change in {}", value.label));
    }

    times.storeMs = timed([&] {
        for (const FollowedValue& value : followed) {
            if (value.storedByClient)
                require(manager.storeData(value.category, value.dimensions, {{value.field, value.expected}}),
                        fmt::format("store {}", value.label));
        }
    });
    times.writtenMs = times.storeMs + timed([&] { require(manager.waitStored(STORE_TIMEOUT_MS), "write the stores"); });
    return times;
}

/// Returns the milliseconds of loading.
double playRestart(std::vector<FollowedValue>& followed) {
    Run run;
    require(run.manager().init(td::DS_SCOPE_ALL), "register the categories");
    const double loadMs = timed([&] { run.manager().loadAllData(); });
    for (FollowedValue& value : followed)
        value.after = read(run.manager(), value);
    return loadMs;
}

/// Prints the size of every file in each of the three directories, by name, and the sums.
void printFiles(const fs::path& root) {
    constexpr std::array DIRECTORIES{CURRENT, BACKUP, FACTORY};
    std::map<std::string, std::array<std::uintmax_t, DIRECTORIES.size()>> sizes;
    std::array<std::uintmax_t, DIRECTORIES.size()> counts{};
    std::array<std::uintmax_t, DIRECTORIES.size()> sums{};
    for (std::size_t i = 0; i < DIRECTORIES.size(); ++i) {
        for (const fs::directory_entry& entry :
             fs::directory_iterator(root / fs::path(DIRECTORIES[i]).relative_path())) {
            sizes[entry.path().filename().string()][i] = entry.file_size();
            ++counts[i];
            sums[i] += entry.file_size();
        }
    }
    constexpr const char* ROW = "{:<42} {:>10} {:>10} {:>10}\n";
    fmt::print(ROW, "Files as the factory makes them, bytes", "current", "backup", "factory");
    for (const auto& [name, size] : sizes)
        fmt::print(ROW, name, size[0], size[1], size[2]);
    fmt::print(ROW, "together", sums[0], sums[1], sums[2]);
    fmt::print(ROW, "number of files", counts[0], counts[1], counts[2]);
    fmt::print("\ncurrent: {}\nbackup:  {}\nfactory: {}\n", CURRENT, BACKUP, FACTORY);
}

/// Returns how many values survived.
std::size_t printValues(const std::vector<FollowedValue>& followed) {
    std::size_t survived = 0;
    fmt::print("\n{:<42} {:>7} {:>7} {:>14}\n", "Value", "before", "stored", "after restart");
    for (const FollowedValue& value : followed) {
        const bool kept = value.after == value.expected;
        survived += kept ? 1 : 0;
        fmt::print("{:<42} {:>7} {:>7} {:>14}  {}\n", value.label, value.before, value.expected, value.after,
                   kept ? "survived" : "LOST");
    }
    return survived;
}

int play(const fs::path& root) {
    std::vector<FollowedValue> followed = followedValues();
    makeParents(root);
    makeFactoryFiles();
    fmt::print("A television in {}\n\n", root.string());
    printFiles(root);

    const FirstBoot first = playFirstBoot(followed);
    const double reloadMs = playRestart(followed);

    fmt::print("\nFirst boot: factory files copied in {:.1f} ms, all loaded in {:.1f} ms\n", first.copyMs,
               first.loadMs);
    fmt::print("Stores:     the calls took {:.2f} ms together, the last value was on disk after {:.1f} ms\n",
               first.storeMs, first.writtenMs);
    fmt::print("Restart:    all loaded in {:.1f} ms\n", reloadMs);
    const std::size_t survived = printValues(followed);
    fmt::print("\n{} of {} values survived the restart.\n", survived, followed.size());
    return survived == followed.size() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            fmt::print(stderr, "usage: demo ROOT   a new or empty folder that stands for the set's \"/\"\n");
            return 2;
        }
        return play(fs::absolute(argv[1]));
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
}
