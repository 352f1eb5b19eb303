#include "Cells.h"

#include <cctype>

#include "Options.h"

namespace td::test {

std::ostream& operator<<(std::ostream& stream, const Cell& cell) {
    return stream << cell.operation->name << ", " << cell.shape->name;
}

std::vector<Cell> allCells() {
    std::vector<Cell> all;
    for (const Operation& operation : operations()) {
        for (const Shape& shape : shapes()) {
            if (operation.isOffered(shape.layout()))
                all.push_back({&operation, &shape});
        }
    }
    return all;
}

std::vector<Cell> failureCells() {
    std::vector<Cell> some;
    for (const Cell& cell : allCells()) {
        if (some.empty() || some.back().operation != cell.operation)
            some.push_back(cell);
    }
    return some;
}

std::string nameOfCell(const testing::TestParamInfo<Cell>& info) {
    std::string name = std::string(info.param.operation->name) + "_" + info.param.shape->name;
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0)
            c = '_';
    }
    return name;
}

const char* awaitedFor(const std::string& test, const Operation& operation) {
    constexpr const char* UNSYNCED = "what is copied from the factory's files is not synced, nor are new directories";
    constexpr const char* UNREADABLE = "a copy that cannot be read for now is treated as a bad one and replaced";
    constexpr const char* STREAM = "a stream that failed is not opened anew by the next store";
    constexpr const char* CHECKSUM = "a read that fails counts as the end of the file for its checksum";
    constexpr const char* POOL = "the pool of loading threads does not end when it could not be made whole";
    struct Awaited {
        const char* test;
        const char* operation;
        const char* why;
    };
    constexpr Awaited AWAITED[] = {
        {"Cut", "first boot", UNSYNCED},
        {"Cut", "factory reset", UNSYNCED},
        {"FileCalls", "restore", STREAM},
        {"FileCalls", "group store", STREAM},
        {"FileCalls", "recover from backup", UNREADABLE},
        {"FileCalls", "version merge", UNREADABLE},
        {"FileCalls", "create", CHECKSUM},
        {"FileCalls", "factory reset", "the current copy is removed before the backup, which then is loaded"},
        {"Allocations", "copy to all sources", "what can throw comes between a section and its checksum"},
        {"Allocations", "group store", "what can throw comes between a section and its checksum"},
        {"Allocations", "backup", "an exception in tryEnterCriticalSection leaves the section locked"},
        {"Allocations", "start", POOL},
        {"Allocations", "recover from backup", POOL},
        {"Allocations", "recover from factory", POOL},
        {"Allocations", "version merge", POOL},
        {"Allocations", "first boot", POOL},
        {"Allocations", "factory reset", POOL},
        {"ThreadCreation", "start", POOL},
        {"ThreadCreation", "recover from backup", POOL},
        {"ThreadCreation", "recover from factory", POOL},
        {"ThreadCreation", "version merge", POOL},
        {"ThreadCreation", "first boot", POOL},
        {"ThreadCreation", "factory reset", POOL},
    };
    for (const Awaited& awaited : AWAITED) {
        if (!options().runsAwaited && test == awaited.test && operation.name == std::string(awaited.operation))
            return awaited.why;
    }
    return nullptr;
}

Loss allowedDuring(const Operation&) {
    return Loss::LastStore;
}

} // namespace td::test
