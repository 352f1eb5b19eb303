// Another process of the television, for tests that need one. Ends with 0 when all went as it should.
//   test_process post SEMAPHORE        posts a named semaphore, made if missing
//   test_process switch VALUE          writes the word of the detail-log switch and posts its semaphore
//   test_process client ROOT SCOPE NUMBER MILLISECONDS
//       lives for that time under ROOT as the client with that number: boots, checks that everything loads without a
//       complaint and that its own values are as it last stored them, stores, backs up, stops, and boots again. At the
//       end it prints its own values: category, index of the value, value.
//   test_process leave ROOT WAY NUMBER
//       checks that NUMBER is what was stored and waited for last under ROOT, and that the files verify; stores the
//       next number, waits for it, stores more, and ends the process that way without stopping anything
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <semaphore.h>
#include <sys/shm.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/DebugOutput.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/ListenerNames.h"
#include "fileOperator/file/SummaryReader.h"
#include "OwnValues.h"

namespace td::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 60000;
constexpr int STORES_PER_LIFE = 40;

int post(const char* name, mode_t mode) {
    sem_t* const semaphore = sem_open(name, O_CREAT, mode, 0U);
    return semaphore != SEM_FAILED && sem_post(semaphore) == 0 ? 0 : 1;
}

int switchDetailLog(int value) {
    const int id = shmget(names::DETAIL_LOG_KEY, names::DETAIL_LOG_SIZE, 0);
    void* const word = id < 0 ? nullptr : shmat(id, nullptr, 0);
    if (word == nullptr)
        return 1;
    std::memcpy(word, &value, sizeof value);
    return post(names::LOG_SEMAPHORE, names::LOG_SEMAPHORE_MODE);
}

class Client {
public:
    Client(int scope, unsigned int number) : m_scope(static_cast<_DS_Scope_t>(scope)), m_number(number) {
        DebugOutput::setLevel(DebugOutput::Level::Warning);
        DebugOutput::setSink([this](DebugOutput::Level, const char* line) { complain(line); });
        FileDataSeparateManager::setListening(false);
    }

    /// One boot with all that happens until the next.
    void live() {
        m_manager = FileDataSeparateManager::instance();
        require(m_manager->init(m_scope), "init");
        m_manager->loadAllData();
        for (const auto& [value, expected] : m_stored)
            require(read(value) == expected, "read " + value.text() + " as it was stored");
        for (int i = 0; i < STORES_PER_LIFE; ++i)
            store();
        require(m_manager->waitStored(PATIENCE_MILLISECONDS), "wait for the stores");
        m_manager->backupData();
        FileDataSeparateManager::release();
    }
    bool failed() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_failed;
    }
    void print() const {
        for (const auto& [value, stored] : m_stored)
            std::printf("%d %d %d\n", static_cast<int>(value.category), value.index, stored);
    }

private:
    void store() {
        const std::vector<OwnValue> own = ownValues(m_scope, static_cast<int>(m_number));
        const OwnValue& value = own[m_random() % own.size()];
        const int number = static_cast<int>(m_random() % 100);
        require(m_manager->storeData(value.category, value.dims(), {{value.field(), number}}), "store " + value.text());
        m_stored[value] = number;
    }
    int read(const OwnValue& value) const {
        std::vector<_Argument_t> args{{value.field(), -1}};
        return m_manager->loadData(value.category, value.dims(), args) ? args.front().value : -1;
    }
    void require(bool done, const std::string& what) {
        if (!done)
            complain(("could not " + what + "\n").c_str());
    }
    void complain(const char* line) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_failed = true;
        std::fprintf(stderr, "client %u: %s", m_number, line);
    }

    const _DS_Scope_t m_scope;
    const unsigned int m_number;
    std::mt19937 m_random{m_number};
    FileDataSeparateManager* m_manager = nullptr;
    std::map<OwnValue, int> m_stored;
    std::mutex m_mutex;
    bool m_failed = false;
};

int runClient(const char* root, int scope, unsigned int number, int milliseconds) {
    if (!setRootPrefix(root))
        return 1;
    Client client(scope, number);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    do
        client.live();
    while (!client.failed() && std::chrono::steady_clock::now() < end);
    client.print();
    return client.failed() ? 1 : 0;
}

// --- leaving ---

constexpr int LAST_STORES = 40;
constexpr int STORING_THREADS = 8;
/// What takes the process its time to destroy.
std::map<int, std::string> g_large;

OwnValue firstOf(_DataCategory_t category, int record) {
    const OwnValue value{category, 0};
    return {category, record % value.layout().recordCount() * value.layout().fieldCount()};
}

void storeAny(int seed) {
    const _DataCategory_t category = LEAVING_CATEGORIES[static_cast<std::size_t>(seed) % std::size(LEAVING_CATEGORIES)];
    const OwnValue value = firstOf(category, 1 + seed % 3);
    FileDataSeparateManager::instance()->storeData(category, value.dims(), {{value.field(), seed % 100}});
}

void storeMany() {
    for (int i = 0; i < LAST_STORES; ++i)
        storeAny(i);
}

[[noreturn]] void storeForEver(int seed) {
    for (;;)
        storeAny(++seed);
}

/// Whether the files load and verify afterwards.
bool loadLeft(FileDataSeparateManager& manager) {
    return std::all_of(std::begin(LEAVING_CATEGORIES), std::end(LEAVING_CATEGORIES), [&](_DataCategory_t category) {
        IFileOperator* const op = manager.getFileOperator(category);
        return op->loadFile() && fileVerifies(op->getFileFullPath(), nullptr);
    });
}

/// Ends the process, or has its caller return from main().
int leave(const char* root, const std::string& way, int number) {
    if (way == "handler" && std::atexit(storeMany) != 0)
        return 1;
    FileDataSeparateManager::setListening(false);
    if (!setRootPrefix(root))
        return 1;
    FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
    if (!manager->init(DS_SCOPE_BIZ) || !loadLeft(*manager))
        return 2;
    const OwnValue waited = firstOf(LEAVING_CATEGORIES[0], 0);
    std::vector<_Argument_t> args{{waited.field(), -1}};
    if (!manager->loadData(waited.category, waited.dims(), args) || args.front().value != number)
        return 3;
    args.front().value = number + 1;
    if (!manager->storeData(waited.category, waited.dims(), args) || !manager->waitStored(PATIENCE_MILLISECONDS))
        return 4;
    for (int i = 0; way == "globals" && i < 100000; ++i)
        g_large[i] = std::string(40, 'x');
    for (int i = 0; way == "threads" && i < STORING_THREADS; ++i)
        std::thread(storeForEver, i).detach();
    storeMany();
    if (way == "exit")
        std::exit(0);
    if (way == "quick_exit")
        std::quick_exit(0);
    return 0;
}

} // namespace
} // namespace td::test

int main(int argc, char** argv) {
    const std::string task = argc > 1 ? argv[1] : "";
    if (task == "post" && argc == 3)
        return td::test::post(argv[2], 0666);
    if (task == "switch" && argc == 3)
        return td::test::switchDetailLog(std::atoi(argv[2]));
    if (task == "client" && argc == 6)
        return td::test::runClient(argv[2], std::atoi(argv[3]), static_cast<unsigned int>(std::atoi(argv[4])),
                                   std::atoi(argv[5]));
    if (task == "leave" && argc == 5)
        return td::test::leave(argv[2], argv[3], std::atoi(argv[4]));
    return 2;
}
