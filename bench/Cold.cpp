#include "Cold.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <dataModule/common/CRC32Util.h>

#include "Descriptor.h"
#include "Library.h"
#include "Syncs.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr std::size_t BLOCK_SIZE = 4096;

class Watch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count(); }

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

long residentBytes() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

long threadCount() {
    long count = 0;
    for ([[maybe_unused]] const auto& task : fs::directory_iterator("/proc/self/task"))
        ++count;
    return count;
}

/// The bound of a load: all bytes read in blocks, through the classic CRC-32 of one table.
std::int64_t readAllBytes(const std::string& directory, const std::vector<Table>& tables) {
    std::array<std::uint32_t, 256> crcTable{};
    for (std::uint32_t byte = 0; byte < crcTable.size(); ++byte) {
        crcTable[byte] = byte;
        for (int bit = 0; bit < 8; ++bit)
            crcTable[byte] = (crcTable[byte] >> 1U) ^ ((crcTable[byte] & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    std::int64_t bytes = 0;
    std::uint32_t folded = 0;
    for (const Table& table : tables) {
        const Descriptor file(directory + table.layout->file, O_RDONLY);
        unsigned char block[BLOCK_SIZE];
        std::uint32_t crc = 0xFFFFFFFFU;
        for (ssize_t count = read(file.get(), block, sizeof block); count > 0;
             count = read(file.get(), block, sizeof block)) {
            for (ssize_t i = 0; i < count; ++i)
                crc = crcTable[(crc ^ block[i]) & 0xFFU] ^ (crc >> 8U);
            bytes += count;
        }
        folded ^= crc;
    }
    benchmark::DoNotOptimize(folded);
    return bytes;
}

Outcome loadPeer(Peer& peer) {
    Outcome outcome;
    const long before = residentBytes();
    const Watch watch;
    peer.load();
    outcome.seconds = watch.seconds();
    outcome.residentBytes = residentBytes() - before;
    outcome.sum = peer.sum();
    return outcome;
}

Outcome loadLibrary(const std::string& root, bool factoryState, const std::vector<Table>& tables) {
    Outcome outcome;
    const long threads = threadCount();
    const long before = residentBytes();
    Library library(root, factoryState);
    const Watch watch;
    library.manager().loadAllData();
    outcome.seconds = watch.seconds();
    outcome.residentBytes = residentBytes() - before;
    outcome.threads = threadCount() - threads;
    outcome.sum = library.sum(tables);
    return outcome;
}

Outcome load(const std::string& subject, const std::string& directory, const std::vector<Table>& tables) {
    const std::string root = directory + PRISTINE;
    if (subject == "ours" || subject == "ours, user state")
        return loadLibrary(root, subject == "ours", tables);
    if (subject != "bound")
        return loadPeer(*makePeer(subject, root, currentDirectory(root), tables));
    Outcome outcome;
    const Watch watch;
    outcome.sum = readAllBytes(currentDirectory(root), tables);
    outcome.seconds = watch.seconds();
    return outcome;
}

/// What the threads of a load do one after another.
Outcome checksumAll(const std::string& directory, const std::vector<Table>& tables) {
    td::CRC32Util::instance()->init_crc_table();
    Outcome outcome;
    const Watch watch;
    for (const Table& table : tables) {
        unsigned int crc = 0;
        td::CRC32Util::instance()->calc_file_crc((directory + table.layout->file).c_str(), 0, crc);
        check(crc != td::CRC32Util::INITIAL, "checksum a file");
    }
    outcome.seconds = watch.seconds();
    return outcome;
}

/// The bound of a creation: each file written, synced and renamed thrice, its directory synced. `texts` are the files'
/// contents by their names.
void writeThrice(const std::string& directory, const std::map<std::string, std::string>& texts) {
    for (const char* copy : {"/one/", "/two/", "/three/"})
        fs::create_directories(directory + copy);
    for (const auto& [name, text] : texts) {
        for (const char* copy : {"/one/", "/two/", "/three/"}) {
            const std::string path = directory + copy + name;
            const Descriptor target(path + ".tmp", O_WRONLY | O_CREAT | O_TRUNC);
            target.write(text.data(), text.size(), 0);
            target.sync();
            fs::rename(path + ".tmp", path);
            Descriptor(directory + copy, O_RDONLY | O_DIRECTORY).sync();
        }
    }
}

Outcome create(const std::string& subject, const std::string& directory, const std::vector<Table>& tables) {
    const std::string root = directory + NEW;
    fs::remove_all(root);
    fs::create_directories(root);
    Outcome outcome;
    const long before = syncCount();
    if (subject == "ours") {
        for (const char* folder : {"/var/local/dataModule", "/ovdata/model/dataModule"})
            fs::create_directories(root + folder);
        Library library(root, false);
        const Watch watch;
        if (!library.manager().initAllData())
            throw std::runtime_error("cannot create");
        outcome.seconds = watch.seconds();
    } else if (subject == "bound") {
        std::map<std::string, std::string> texts;
        for (const Table& table : tables) {
            std::ifstream file(currentDirectory(directory + PRISTINE) + table.layout->file, std::ios::binary);
            texts[table.layout->file].assign(std::istreambuf_iterator<char>(file), {});
        }
        const Watch watch;
        writeThrice(root, texts);
        outcome.seconds = watch.seconds();
    } else {
        const auto peer = makePeer(subject, root, "", tables);
        const Watch watch;
        peer->create();
        outcome.seconds = watch.seconds();
    }
    outcome.syncs = syncCount() - before;
    fs::remove_all(root);
    return outcome;
}

} // namespace

int runColdTask(const std::string& task, const std::string& subject, const std::string& directory,
                const std::vector<Table>& tables) {
    const Outcome outcome = task == "load"     ? load(subject, directory, tables)
                            : task == "create" ? create(subject, directory, tables)
                                               : checksumAll(currentDirectory(directory + PRISTINE), tables);
    std::printf("%.9f %lld %ld %ld %ld\n", outcome.seconds, static_cast<long long>(outcome.sum), outcome.residentBytes,
                outcome.threads, outcome.syncs);
    return 0;
}

Outcome inNewProcess(const std::string& task, const std::string& subject, const std::string& directory) {
    const std::string program = fs::read_symlink("/proc/self/exe").string();
    const std::string command = "'" + program + "' --cold '" + task + "' '" + subject + "' '" + directory + "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "re"), &pclose);
    Outcome outcome;
    long long sum = 0;
    if (!output || std::fscanf(output.get(), "%lf %lld %ld %ld %ld", &outcome.seconds, &sum, &outcome.residentBytes,
                               &outcome.threads, &outcome.syncs) != 5)
        throw std::runtime_error(task + " of " + subject + " failed in its process");
    outcome.sum = sum;
    return outcome;
}

} // namespace bench
