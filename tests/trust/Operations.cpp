#include "Operations.h"

#include <algorithm>
#include <array>
#include <utility>

#include <dataModule/platform/RootPrefix.h>

#include "FileCalls.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/text/TextLayout.h"

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
Tree cutStore(const Shape& shape, const char* version) {
    const CategoryLayout& layout = shape.layout();
    const std::string contents = storedContents(layout);
    const std::string section = sectionIn(layout, contents, 0);
    std::string text = fileOfVersion(layout, contentsOf(layout, CURRENT_SERIES), version);
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

bool always(const Shape&) {
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

Step copyToAllSources(Step::Pieces pieces) {
    Step step = request("copy", &FileDataSeparateManager::applySettingForAllSources);
    step.pieces = pieces;
    return step;
}

Step in(Trouble trouble, Step step) {
    step.trouble = trouble;
    // What is cut is what comes after the process that is killed.
    if (trouble == Trouble::Killed)
        step.role = Step::Role::Preparation;
    return step;
}

/// Whether the operation can be tried many times over.
bool isQuick(const Shape& shape) {
    return !shape.isLarge();
}

/// What calls come in which order does not hang on the shape.
bool isTriedInTrouble(const Shape& shape) {
    return shape.category == PICTURE_ENHANCED_VIEWING_ANGLE || shape.layout().applyToAllSources.writesAtOnce;
}

bool copiesAtOnce(const Shape& shape) {
    return shape.layout().applyToAllSources.writesAtOnce;
}

bool copiesThroughTheQueue(const Shape& shape) {
    return shape.layout().applyToAllSources.axes != 0 && !copiesAtOnce(shape);
}

bool backupIsCurrent(const Shape& shape) {
    const Unwatched unwatched;
    const ContentPointer current = readFileIn(rootPrefix(), shape.current());
    const ContentPointer backup = readFileIn(rootPrefix(), shape.backup());
    return current != nullptr && backup != nullptr && current->bytes == backup->bytes;
}

Step resetToFactory() {
    Step step{"reset", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }};
    step.removesBackup = true;
    return step;
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

Tree withoutDirectories(const Shape& shape) {
    Tree tree = without(without(threeCopies(shape), shape.current()), shape.backup());
    tree.erase("var/local/dataModule/current");
    tree.erase("var/local/dataModule/backup");
    return tree;
}

Tree withDamagedCurrent(const Shape& shape) {
    return with(threeCopies(shape), shape.current(), damagedFile(shape, CURRENT_SERIES));
}

/// With the record of a store that is done, as any set has it that was stored to.
Tree withOldRecord(const Shape& shape, Tree tree) {
    return with(std::move(tree), redoPath(shape.current()), file("done 1\n"));
}

Tree withOlderCopies(const Shape& shape) {
    return with(with(threeCopies(shape), shape.current(), olderFile(shape, CURRENT_SERIES)), shape.backup(),
                olderFile(shape, BACKUP_SERIES));
}

std::vector<Operation> makeOperations() {
    using Role = Step::Role;
    using Pieces = Step::Pieces;
    const auto current = series(CURRENT_SERIES);
    // A section may be stored again and again, so what one store leaves behind must not disturb the next.
    const Step booted = boot(Role::Preparation);
    const Step start = boot(Role::Own);
    const Step first = store(0, FIRST_STORE, Role::Own);
    const Step second = store(-1, SECOND_STORE, Role::Own);
    const Step later = store(0, FIRST_STORE, Role::Later);
    const Step lastLater = store(-1, SECOND_STORE, Role::Later);
    return {
        {"start", always, threeCopies, current, {start}, true},
        {"store", always, threeCopies, current, {booted, first, second, store(0, THIRD_STORE, Role::Own)}},
        {"end a store that was cut short",
         always,
         [](const Shape& shape) { return cutStore(shape, shape.layout().version); },
         storedContents,
         {start, later}},
        {"copy to all sources",
         copiesThroughTheQueue,
         threeCopies,
         current,
         {booted, copyToAllSources(Pieces::Records), later}},
        {"copy to all sources at once",
         copiesAtOnce,
         threeCopies,
         current,
         {booted, copyToAllSources(Pieces::Together), later}},
        {"group store",
         [](const Shape& shape) { return shape.category == PICTURE_FACTORY_WB; },
         threeCopies,
         current,
         {booted, {"group store", storeGroup, Role::Own, Pieces::Records}}},
        {"restore",
         always,
         threeCopies,
         current,
         {booted, request("restore", &FileDataSeparateManager::restoreSetting), later}},
        {"backup",
         always,
         threeCopies,
         current,
         // Of a current copy that was not stored to there is a backup.
         {booted,
          store(-1, SECOND_STORE, Role::Preparation),
          {"backup", [](Life& life) { return life.set().backupData() && backupIsCurrent(life.shape); }},
          later}},
        {"recover from backup", always, withDamagedCurrent, series(BACKUP_SERIES), {start, later}},
        {"recover from factory",
         always,
         [](const Shape& shape) { return without(withDamagedCurrent(shape), shape.backup()); },
         series(FACTORY_SERIES),
         {start, later}},
        {"version merge", always, withOlderCopies, current, {start, later}},
        {"version merge after a store that was cut short",
         isQuick,
         [](const Shape& shape) { return cutStore(shape, OLDER_VERSION); },
         storedContents,
         {start, later}},
        {"create",
         always,
         [](const Shape&) { return emptyDirectories(); },
         [](const CategoryLayout&) { return std::nullopt; },
         {{"start", [](Life& life) { return life.set().start(); }, Role::Preparation},
          {"create", [](Life& life) { return life.set().initData(life.shape.category) && life.set().settle(); }}}},
        {"start without directories", isQuick, withoutDirectories, series(FACTORY_SERIES), {start, later}},
        {"first boot",
         always,
         withoutDirectories,
         series(FACTORY_SERIES),
         {{"first boot", [](Life& life) { return life.set().bootFromFactory() && life.set().settle(); }}, later}},
        {"factory reset", always, threeCopies, current, {resetToFactory(), later}},
        {"factory reset from a damaged copy",
         isQuick,
         [](const Shape& shape) {
             return with(threeCopies(shape), shape.factory(), damagedFile(shape, FACTORY_SERIES));
         },
         current,
         {{"reset",
           [](Life& life) {
               life.set().bootFromFactory();
               return life.set().settle() && life.set().isLoaded();
           }},
          later},
         true},
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
        {"store without a record",
         isTriedInTrouble,
         threeCopies,
         current,
         {booted, in(Trouble::NoRecord, first), in(Trouble::NoRecord, second)}},
        {"copy to all sources at once without a record",
         copiesAtOnce,
         threeCopies,
         current,
         {booted, in(Trouble::NoRecord, copyToAllSources(Pieces::Together))}},
        {"store after a failed sync",
         isTriedInTrouble,
         threeCopies,
         current,
         {booted, in(Trouble::FailedSync, first), lastLater}},
        {"copy to all sources at once with a failed sync",
         copiesAtOnce,
         threeCopies,
         current,
         {booted, in(Trouble::FailedSync, copyToAllSources(Pieces::Together)), lastLater}},
        {"start after a killed store",
         isTriedInTrouble,
         threeCopies,
         current,
         {booted, in(Trouble::Killed, first), start, lastLater}},
        {"start after a killed copy to all sources at once",
         copiesAtOnce,
         threeCopies,
         current,
         {booted, in(Trouble::Killed, copyToAllSources(Pieces::Together)), start, lastLater}},
        {"start after a killed recovery",
         isTriedInTrouble,
         [](const Shape& shape) { return withOldRecord(shape, withDamagedCurrent(shape)); },
         series(BACKUP_SERIES),
         {in(Trouble::Killed, start), start, lastLater}},
        {"start after a killed version merge",
         isTriedInTrouble,
         [](const Shape& shape) { return withOldRecord(shape, withOlderCopies(shape)); },
         current,
         {in(Trouble::Killed, start), start, lastLater}},
        {"start after a killed factory reset",
         isTriedInTrouble,
         [](const Shape& shape) { return withOldRecord(shape, threeCopies(shape)); },
         current,
         {in(Trouble::Killed, resetToFactory()), start, lastLater}},
    };
}

} // namespace

OneCategorySet& Life::set() {
    const Unwatched unwatched;
    if (!m_set)
        m_set = std::make_unique<OneCategorySet>(shape);
    return *m_set;
}

Trouble Operation::trouble() const {
    const auto found =
        std::find_if(steps.begin(), steps.end(), [](const Step& step) { return step.trouble != Trouble::None; });
    return found != steps.end() ? found->trouble : Trouble::None;
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = makeOperations();
    return all;
}

} // namespace td::test
