// A category's file as a set would meet it: inspected, loaded, merged, stored in, loaded again.
#include <algorithm>
#include <memory>
#include <set>
#include <vector>

#include <dmctl/inspect/FileInspection.h>

#include "FakeParent.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "Quiet.h"
#include "ScratchRoot.h"
#include "SettingsFileInput.h"
#include "Targets.h"

namespace td::fuzz {

namespace {

using Folder = ScratchRoot::Folder;
/// Row-major by position.
using Record = std::vector<int>;

// --- the pure reader ---

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

void checkInspection(const CategoryLayout& layout, const std::string& file, const FileInspection& inspection) {
    const int size = static_cast<int>(file.size());
    require(inspection.faultCount + inspection.noteCount >= static_cast<int>(inspection.problems.size()),
            "no more problems are told than counted");
    for (const FileProblem& problem : inspection.problems)
        require(isPrintable(problem.text) && problem.line > 0 && problem.offset >= 0,
                "a problem is a printable text with a place");
    int end = 0;
    for (const InspectedSection& section : inspection.sections) {
        require(section.offset >= end && section.valuesAt > section.offset && section.valuesAt <= size,
                "sections follow each other within the file");
        require(section.record >= -1 && section.record < layout.recordCount(), "a section is of a record or of none");
        end = section.valuesAt;
    }
}

/// The last section of a record counts.
Record inspectedRecord(const CategoryLayout& layout, const std::string& file, const FileInspection& inspection,
                       int record) {
    Record values(layout.fields.size());
    for (const InspectedSection& section : inspection.sections) {
        if (section.record == record)
            require(readInspected(layout, file, section, values.data()), "a good file's sections can be read");
    }
    return values;
}

void checkSalvage(const CategoryLayout& layout, const std::string& file, const FileInspection& inspection) {
    const SalvagedTable salvaged = salvageFile(layout, file);
    if (!inspection.isGood())
        return;
    require(salvaged.proven, "a good file's values are proven");
    require(std::find(salvaged.readable.begin(), salvaged.readable.end(), false) == salvaged.readable.end(),
            "a good file is salvaged whole");
    const std::string again = wholeFile(layout, inspection.tvType, salvaged.values);
    require(inspectFile(layout, again).isGood(), "a file made of a good file's values is good");
    require(salvageFile(layout, again).values == salvaged.values, "it has the same values");
    if (inspection.noteCount == 0)
        require(again == file, "a file exactly as the library writes it is made again byte for byte");
}

// --- the operator ---

std::vector<int> indicesOf(const CategoryLayout& layout, int record) {
    std::vector<int> indices(layout.dimensions.size());
    layout.indicesOf(record, indices.data());
    return indices;
}

class Set {
public:
    Set(const SettingsFileInput& input, const ScratchRoot& root) : m_layout(*input.layout), m_root(root) {}

    std::unique_ptr<AbstractFileOperator> makeOperator() {
        std::unique_ptr<AbstractFileOperator> op(createOperator(m_layout.category));
        op->setParent(&m_parent);
        return op;
    }
    Record valuesOf(AbstractFileOperator& op, int record) const {
        std::vector<_Argument_t> args;
        for (const Field& field : m_layout.fields)
            args.push_back({field.argumentName(), 0});
        require(op.loadData(indicesOf(m_layout, record), args), "a loaded category answers");
        Record values(m_layout.fields.size());
        for (std::size_t i = 0; i < args.size(); ++i)
            values[static_cast<std::size_t>(m_layout.fields[i].position)] = args[i].value;
        return values;
    }
    /// Changes one value and has it written. Whether that succeeded.
    bool store(AbstractFileOperator& op, int record, Record& values) {
        const Field& field = m_layout.fields.front();
        int& value = values[static_cast<std::size_t>(field.position)];
        const int other = value == 1 ? 2 : 1;
        if (!op.storeData(indicesOf(m_layout, record), {{field.argumentName(), other}}))
            return false;
        value = other;
        const std::size_t posted = m_parent.posted();
        return m_parent.deliver() == static_cast<int>(posted);
    }
    std::string current() const { return m_root.read(Folder::Current, m_layout.file); }

private:
    const CategoryLayout& m_layout;
    const ScratchRoot& m_root;
    test::FakeParent m_parent;
};

/// The records that are looked at: all of a small category, those that the file names of others.
std::vector<int> recordsToSee(const CategoryLayout& layout, const FileInspection& inspection) {
    constexpr std::size_t MOST = 16;
    std::set<int> records;
    for (const InspectedSection& section : inspection.sections) {
        if (section.record >= 0 && records.size() < MOST)
            records.insert(section.record);
    }
    for (int record = 0; isSmall(layout) && record < layout.recordCount(); ++record)
        records.insert(record);
    records.insert(0);
    return {records.begin(), records.end()};
}

bool fits(const CategoryLayout& layout, const Record& values) {
    return std::all_of(values.begin(), values.end(),
                       [&](int value) { return text::fitsColumns(layout.keyLine, value); });
}

/// Invariant 3: bytes differ in the section that is at the record's place and in the checksum line only.
void checkOnlySectionDiffers(const CategoryLayout& layout, const FileInspection& inspection, const std::string& before,
                             const std::string& after, int record) {
    require(before.size() == after.size(), "a store leaves the file's length");
    const int first = inspection.contentOffset + layout.keyLinesOffset(record);
    const int last = first + layout.keyLinesLength();
    for (int i = 0; i < static_cast<int>(before.size()); ++i) {
        const bool isChecksum = i >= inspection.checksumOffset && i < inspection.contentOffset;
        const bool isSection = i >= first && i < last;
        if (!isChecksum && !isSection && before[static_cast<std::size_t>(i)] != after[static_cast<std::size_t>(i)])
            require(false, "a store writes its section and the checksum line only; byte " + std::to_string(i));
    }
}

bool isWhiteBalance(const CategoryLayout& layout) {
    return layout.category == PICTURE_FACTORY_WB || layout.category == PICTURE_FACTORY_WB_SHIFT;
}

void checkStore(Set& set, AbstractFileOperator& op, const SettingsFileInput& input, const FileInspection& inspection,
                const std::vector<int>& records) {
    const CategoryLayout& layout = *input.layout;
    const int record = records[input.file.size() % records.size()];
    const std::string before = set.current();
    std::vector<Record> values;
    for (const int each : records)
        values.push_back(set.valuesOf(op, each));
    Record changed = values[input.file.size() % records.size()];
    const bool stored = set.store(op, record, changed);
    const std::string after = set.current();
    if (inspection.contentOffset >= 0 && inspection.checksumOffset >= 0)
        checkOnlySectionDiffers(layout, inspection, before, after, record);
    if (!inspection.isGood())
        return;
    require(stored == fits(layout, changed), "a store in a good file succeeds where its values fit their columns");
    require(inspectFile(layout, after).isGood(), "a file is good after a store as before");
    const auto again = set.makeOperator();
    require(again->loadFile(), "a file loads after a store as before");
    for (std::size_t i = 0; i < records.size(); ++i)
        require(set.valuesOf(*again, records[i]) == (stored && records[i] == record ? changed : values[i]),
                "what was stored is read again, and nothing else differs");
}

void checkLoad(const SettingsFileInput& input, const ScratchRoot& root, const FileInspection& inspection) {
    const CategoryLayout& layout = *input.layout;
    Set set(input, root);
    const auto op = set.makeOperator();
    const bool loaded = op->loadFile();
    op->waitForMerge();
    const std::vector<int> records = recordsToSee(layout, inspection);
    // White balance reads in the user's hands what is at the places of its bin, whatever stands there.
    const bool readsWhole = !isWhiteBalance(layout) || input.isAtFactory;
    if (inspection.isGood()) {
        require(loaded, "a good file loads");
        for (const int record : records) {
            if (readsWhole)
                require(set.valuesOf(*op, record) == inspectedRecord(layout, input.file, inspection, record),
                        "the two readers agree");
        }
    }
    if (input.hasBackup)
        require(loaded, "with a good backup every category loads");
    if (!loaded) {
        require(set.current() == input.file, "what does not load and cannot be replaced stays as it is");
        return;
    }
    if (readsWhole) {
        // What was merged, recovered or merely read is in the file now.
        const auto again = set.makeOperator();
        require(again->loadFile(), "what loaded once loads again");
        again->waitForMerge();
        for (const int record : records) {
            const Record values = set.valuesOf(*op, record);
            if (fits(layout, values))
                require(set.valuesOf(*again, record) == values, "the same values are read again");
        }
    }
    if (set.current() == input.file)
        checkStore(set, *op, input, inspection, records);
}

/// The readers alone, for files that would have to stand beside a whole factory copy of megabytes.
void checkReaders(const SettingsFileInput& input, const ScratchRoot& root) {
    Set set(input, root);
    const auto op = set.makeOperator();
    const std::string path = ScratchRoot::path(Folder::Current, input.layout->file);
    op->enterCriticalSection();
    const bool read = op->loadSummary(path.c_str()) && op->loadContents_OTA();
    op->leaveCriticalSection();
    static_cast<void>(read);
    static_cast<void>(op->loadFile(path.c_str()));
    require(set.current() == input.file, "reading changes nothing");
}

} // namespace

void runSettingsFile(std::string_view bytes) {
    const SettingsFileInput input(bytes);
    if (input.layout == nullptr)
        return;
    const CategoryLayout& layout = *input.layout;
    const Quiet quiet(input.isDetailed);
    const FileInspection inspection = inspectFile(layout, input.file);
    checkInspection(layout, input.file, inspection);
    // Walks over every record, so only where these are few.
    if (isSmall(layout) || inspection.isGood())
        checkSalvage(layout, input.file, inspection);

    const ScratchRoot root;
    root.setAtFactory(input.isAtFactory);
    root.write(Folder::Current, layout.file, input.file);
    checkReaders(input, root);
    if (isSmall(layout)) {
        root.write(Folder::Factory, layout.file, defaultFile(layout));
        if (input.hasBackup)
            root.write(Folder::Backup, layout.file, defaultFile(layout));
    }
    checkLoad(input, root, inspection);
}

} // namespace td::fuzz
