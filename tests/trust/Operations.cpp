#include "Operations.h"

#include <array>

#include <dataModule/fileOperator/RedoRecord.h>
#include <dataModule/fileOperator/TextLayout.h>

#include "FileCalls.h"

namespace td::test {
namespace {

constexpr const char* OLDER_VERSION = "v0.0";

ContentPointer file(const std::string& text) {
    return std::make_shared<const Content>(text);
}

ContentPointer goodFile(const Shape& shape, int series) {
    return file(fileOf(shape.layout(), contentsOf(shape.layout(), series)));
}

ContentPointer olderFile(const Shape& shape, int series) {
    return file(fileOfVersion(shape.layout(), contentsOf(shape.layout(), series), OLDER_VERSION));
}

ContentPointer damagedFile(const Shape& shape, int series) {
    std::string text = fileOf(shape.layout(), contentsOf(shape.layout(), series));
    text[text.size() - 2] = text[text.size() - 2] == '1' ? '2' : '1'; // the last digit of the last value
    return file(text);
}

/// Three good copies that differ in every value.
Tree threeCopies(const Shape& shape) {
    Tree tree = emptyDirectories();
    tree[shape.current()] = goodFile(shape, CURRENT_SERIES);
    tree[shape.backup()] = goodFile(shape, BACKUP_SERIES);
    tree[shape.factory()] = goodFile(shape, FACTORY_SERIES);
    return tree;
}

/// The current copy's contents after one store.
std::string storedContents(const CategoryLayout& layout) {
    std::string contents = contentsOf(layout, CURRENT_SERIES);
    const std::string section = sectionOf(layout, 0, valuesOf(layout, FIRST_STORE, 0));
    return contents.replace(0, section.size(), section);
}

/// As that store leaves it half way, with the record of what is to become of it.
Tree cutStore(const Shape& shape) {
    const CategoryLayout& layout = shape.layout();
    const std::string contents = storedContents(layout);
    const std::string section = sectionIn(layout, contents, 0);
    std::string text = fileOf(layout, contentsOf(layout, CURRENT_SERIES));
    const std::size_t position = text.size() - contents.size();
    text.replace(position, section.size() / 2, section, 0, section.size() / 2);
    RedoRecord record;
    record.contentPosition = static_cast<int>(position);
    record.crcPosition = record.contentPosition - text::CRC_LINE_LENGTH;
    record.crc = checksumOf(contents);
    record.writes = {{record.contentPosition, section}};
    Tree tree = threeCopies(shape);
    tree[shape.current()] = file(text);
    tree[redoPath(shape.current())] = file(redoText(record));
    return tree;
}

Tree with(Tree tree, const std::string& path, const ContentPointer& content) {
    tree[path] = content;
    return tree;
}

Tree without(Tree tree, const std::string& path) {
    tree.erase(path);
    return tree;
}

std::function<std::optional<std::string>(const CategoryLayout&)> series(int number) {
    return [number](const CategoryLayout& layout) { return contentsOf(layout, number); };
}

bool always(const CategoryLayout&) {
    return true;
}

Step boot(Step::Role role) {
    return {"start", [](Life& life) { return life.set().boot() && life.set().settle(); }, role};
}

Step store(int record, int series, Step::Role role) {
    return {"store",
            [=](Life& life) {
                const int last = life.shape.layout().recordCount() - 1;
                return life.set().storeRecord(record < 0 ? last : record, series) && life.set().settle();
            },
            role};
}

std::vector<int> firstRecord(const Shape& shape) {
    const Unwatched unwatched;
    return indicesOf(shape.layout(), 0);
}

/// A request that takes a record's indices, for the first record.
template <class Request>
Step request(const char* name, Request member) {
    return {name, [=](Life& life) {
                const std::vector<int> first = firstRecord(life.shape);
                return (life.set().*member)(life.shape.category, first) && life.set().settle();
            }};
}

/// A request to store four records at once.
struct GroupStore {
    std::array<SelfDefinedGroupArray, 1> data;
    std::vector<int> start{0, 0, 0, 0, 0};
    std::vector<int> end{0, 1, 1, 0, 0};

    GroupStore() {
        int value = FIRST_STORE * 1000;
        for (auto& source : data.front()) {
            for (auto& range : source) {
                for (auto& row : range) {
                    for (int& field : row)
                        field = ++value % 9000;
                }
            }
        }
    }
};

bool storeGroup(Life& life) {
    static GroupStore group;
    return life.set().storeDataForSelfDefinedGroup(life.shape.category, group.start, group.end, group.data.front()) &&
           life.set().settle();
}

std::vector<Operation> makeOperations() {
    using Set = FileDataSeparateManager;
    const auto current = series(CURRENT_SERIES);
    // A section may be stored again and again, so what one store leaves behind must not disturb the next.
    const Step booted = boot(Step::Role::Preparation);
    const Step start = boot(Step::Role::Own);
    const Step later = store(0, FIRST_STORE, Step::Role::Later);
    return {
        {"start", always, threeCopies, current, {start}},
        {"store",
         always,
         threeCopies,
         current,
         {booted, store(0, FIRST_STORE, Step::Role::Own), store(-1, SECOND_STORE, Step::Role::Own),
          store(0, THIRD_STORE, Step::Role::Own)}},
        {"end a store that was cut short", always, cutStore, storedContents, {start, later}},
        {"copy to all sources",
         [](const CategoryLayout& layout) { return layout.applyToAllSources.axes != 0; },
         threeCopies,
         current,
         {booted, request("copy", &Set::applySettingForAllSources), later}},
        {"group store",
         [](const CategoryLayout& layout) { return layout.category == PICTURE_FACTORY_WB; },
         threeCopies,
         current,
         {booted, {"group store", storeGroup}}},
        {"restore", always, threeCopies, current, {booted, request("restore", &Set::restoreSetting), later}},
        {"backup",
         always,
         threeCopies,
         current,
         {booted, {"backup", [](Life& life) { return life.set().backupData(); }}, later}},
        {"recover from backup",
         always,
         [](const Shape& shape) {
             return with(threeCopies(shape), shape.current(), damagedFile(shape, CURRENT_SERIES));
         },
         series(BACKUP_SERIES),
         {start, later}},
        {"recover from factory",
         always,
         [](const Shape& shape) {
             return without(with(threeCopies(shape), shape.current(), damagedFile(shape, CURRENT_SERIES)),
                            shape.backup());
         },
         series(FACTORY_SERIES),
         {start, later}},
        {"version merge",
         always,
         [](const Shape& shape) {
             return with(with(threeCopies(shape), shape.current(), olderFile(shape, CURRENT_SERIES)), shape.backup(),
                         olderFile(shape, BACKUP_SERIES));
         },
         current,
         {start, later}},
        {"create",
         always,
         [](const Shape&) { return emptyDirectories(); },
         [](const CategoryLayout&) { return std::nullopt; },
         {{"start", [](Life& life) { return life.set().start(); }, Step::Role::Preparation},
          {"create", [](Life& life) { return life.set().initData(life.shape.category) && life.set().settle(); }}}},
        {"first boot",
         always,
         [](const Shape& shape) {
             Tree tree = without(without(threeCopies(shape), shape.current()), shape.backup());
             tree.erase("var/local/dataModule/current");
             tree.erase("var/local/dataModule/backup");
             return tree;
         },
         series(FACTORY_SERIES),
         {{"first boot", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }}, later}},
        {"factory reset",
         always,
         threeCopies,
         current,
         {{"reset", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }}, later}},
        {"reset from factory",
         always,
         threeCopies,
         current,
         {booted,
          {"refresh",
           [](Life& life) {
               return life.set().refreshDataFromManufactory(life.shape.category) && life.set().settle();
           }},
          later}},
    };
}

} // namespace

OneCategorySet& Life::set() {
    const Unwatched unwatched;
    if (!m_set)
        m_set = std::make_unique<OneCategorySet>(shape.category);
    return *m_set;
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = makeOperations();
    return all;
}

} // namespace td::test
