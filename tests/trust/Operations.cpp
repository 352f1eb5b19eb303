#include "Operations.h"

#include <array>

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

Step boot(bool isPreparation = true) {
    return {"start", [](Life& life) { return life.set().boot() && life.set().settle(); }, isPreparation};
}

Step store(int record, int series) {
    return {"store", [=](Life& life) {
                const int last = life.shape.layout().recordCount() - 1;
                return life.set().storeRecord(record < 0 ? last : record, series) && life.set().settle();
            }};
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
    const std::vector<Step> stores{boot(), store(0, FIRST_STORE), store(-1, SECOND_STORE), store(0, THIRD_STORE)};
    return {
        {"start", always, threeCopies, current, {boot(false)}},
        {"store", always, threeCopies, current, stores},
        {"copy to all sources",
         [](const CategoryLayout& layout) { return layout.applyToAllSources.axes != 0; },
         threeCopies,
         current,
         {boot(), request("copy", &Set::applySettingForAllSources), store(0, FIRST_STORE)}},
        {"group store",
         [](const CategoryLayout& layout) { return layout.category == PICTURE_FACTORY_WB; },
         threeCopies,
         current,
         {boot(), {"group store", storeGroup}}},
        {"restore",
         always,
         threeCopies,
         current,
         {boot(), request("restore", &Set::restoreSetting), store(0, FIRST_STORE)}},
        {"backup",
         always,
         threeCopies,
         current,
         {boot(), {"backup", [](Life& life) { return life.set().backupData(); }}, store(0, FIRST_STORE)}},
        {"recover from backup",
         always,
         [](const Shape& shape) {
             return with(threeCopies(shape), shape.current(), damagedFile(shape, CURRENT_SERIES));
         },
         series(BACKUP_SERIES),
         {boot(false), store(0, FIRST_STORE)}},
        {"recover from factory",
         always,
         [](const Shape& shape) {
             return without(with(threeCopies(shape), shape.current(), damagedFile(shape, CURRENT_SERIES)),
                            shape.backup());
         },
         series(FACTORY_SERIES),
         {boot(false), store(0, FIRST_STORE)}},
        {"version merge",
         always,
         [](const Shape& shape) {
             return with(with(threeCopies(shape), shape.current(), olderFile(shape, CURRENT_SERIES)), shape.backup(),
                         olderFile(shape, BACKUP_SERIES));
         },
         current,
         {boot(false), store(0, FIRST_STORE)}},
        {"create",
         always,
         [](const Shape&) { return emptyDirectories(); },
         [](const CategoryLayout&) { return std::nullopt; },
         {{"start", [](Life& life) { return life.set().start(); }, true},
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
         {{"first boot", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }},
          store(0, FIRST_STORE)}},
        {"factory reset",
         always,
         threeCopies,
         current,
         {{"reset", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }},
          store(0, FIRST_STORE)}},
        {"reset from factory",
         always,
         threeCopies,
         current,
         {boot(),
          {"refresh",
           [](Life& life) {
               return life.set().refreshDataFromManufactory(life.shape.category) && life.set().settle();
           }},
          store(0, FIRST_STORE)}},
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
