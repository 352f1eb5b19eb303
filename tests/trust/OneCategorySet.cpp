#include "OneCategorySet.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <utility>

#include <unistd.h>

#include <dataModule/platform/RootPrefix.h>

#include "FileCalls.h"
#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "SmallCategories.h"

namespace td::test {
namespace {

constexpr const char* TV_TYPE = "TVTYPE01";
constexpr int PATIENCE_MILLISECONDS = 60000;
constexpr int SMALL_CONTENTS = 100000;
constexpr int LARGE_CONTENTS = 500000;
constexpr const char* CURRENT = "var/local/dataModule/current/";
constexpr const char* BACKUP = "var/local/dataModule/backup/";
constexpr const char* FACTORY = "ovdata/model/dataModule/manufactory/";

} // namespace

std::uint32_t checksumOf(const std::string& contents) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> all{};
        for (std::uint32_t byte = 0; byte < all.size(); ++byte) {
            all[byte] = byte;
            for (int bit = 0; bit < 8; ++bit)
                all[byte] = (all[byte] >> 1) ^ ((all[byte] & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        return all;
    }();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char c : contents)
        crc = (crc >> 8) ^ table[(crc ^ static_cast<unsigned char>(c)) & 0xFFU];
    return crc;
}

// --- shapes ---

const CategoryLayout& Shape::layout() const {
    return ownLayout != nullptr ? ownLayout() : *layoutOf(category);
}

bool Shape::isSmall() const {
    return layout().contentLength() < SMALL_CONTENTS;
}

bool Shape::isLarge() const {
    return layout().contentLength() > LARGE_CONTENTS;
}

std::string Shape::current() const {
    return CURRENT + std::string(layout().file);
}

std::string Shape::backup() const {
    return BACKUP + std::string(layout().file);
}

std::string Shape::factory() const {
    return FACTORY + std::string(layout().file);
}

const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all{{"small", PICTURE_ENHANCED_VIEWING_ANGLE},
                                        {"wide columns", SOUND_PEQ},
                                        {"hexadecimal", PICTURE_XVYCC},
                                        {"global", PICTURE_GLOBAL},
                                        {"written at once", PICTURE_MODE, fewModes, makeFewModes},
                                        {"in groups", PICTURE_FACTORY_WB, fewBalances, makeFewBalances},
                                        {"20-level", PICTURE_WB_20_GAIN},
                                        {"largest", PICTURE_FACTORY_WB}};
    return all;
}

// --- the root ---

MemoryRoot::MemoryRoot() {
    namespace fs = std::filesystem;
    const fs::path memory = "/dev/shm";
    const bool isThere = fs::is_directory(memory) && access(memory.c_str(), W_OK | X_OK) == 0;
    std::string pattern = ((isThere ? memory : fs::temp_directory_path()) / "dataModule-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary directory at " + pattern);
    m_path = pattern;
    if (!setRootPrefix(m_path.c_str()))
        throw std::runtime_error("the root prefix is held or too long");
}

MemoryRoot::~MemoryRoot() {
    setRootPrefix("");
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

// --- files as text ---

bool isRedoRecord(const std::string& path) {
    return path == redoPath(path.substr(0, path.rfind('.')));
}

Tree emptyDirectories() {
    Tree tree;
    for (const char* directory : {CURRENT, BACKUP, FACTORY}) {
        const std::string path(directory);
        for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1))
            tree[path.substr(0, slash)] = nullptr;
    }
    return tree;
}

std::vector<int> valuesOf(const CategoryLayout& layout, int series, int record) {
    constexpr int SERIES = 1000;
    std::vector<int> values(layout.fields.size());
    for (std::size_t position = 0; position < values.size(); ++position)
        values[position] = series * SERIES + (record * 31 + static_cast<int>(position) * 7) % SERIES;
    return values;
}

std::string sectionOf(const CategoryLayout& layout, int record, const std::vector<int>& values) {
    char lines[text::SECTION_BUFFER];
    text::formatSection(layout, values.data(), lines, sizeof lines);
    return text::sectionId(layout, indicesOf(layout, record).data()) + "\n" + lines;
}

const std::string& contentsOf(const CategoryLayout& layout, int series) {
    static std::map<std::pair<const CategoryLayout*, int>, std::string> known;
    std::string& contents = known[{&layout, series}];
    if (!contents.empty())
        return contents;
    for (int record = 0; record < layout.recordCount(); ++record)
        contents += sectionOf(layout, record, valuesOf(layout, series, record));
    return contents;
}

std::string fileOf(const CategoryLayout& layout, const std::string& contents) {
    return fileOfVersion(layout, contents, layout.version);
}

std::string fileOfVersion(const CategoryLayout& layout, const std::string& contents, const char* version) {
    return text::commentBlock(layout) + text::summary(TV_TYPE, version, checksumOf(contents), true) + contents;
}

std::optional<std::string> verifiedContents(const CategoryLayout& layout, const ContentPointer& file) {
    if (file == nullptr)
        return std::nullopt;
    const std::size_t contents = static_cast<std::size_t>(layout.contentLength());
    if (file->bytes.size() < contents)
        return std::nullopt;
    std::string last = file->bytes.substr(file->bytes.size() - contents);
    if (file->bytes != fileOf(layout, last))
        return std::nullopt;
    return last;
}

std::string sectionIn(const CategoryLayout& layout, const std::string& contents, int record) {
    const auto length = static_cast<std::size_t>(layout.sectionLength());
    return contents.substr(static_cast<std::size_t>(record) * length, length);
}

std::vector<int> indicesOf(const CategoryLayout& layout, int record) {
    std::vector<int> indices(MAX_DIMENSIONS);
    layout.indicesOf(record, indices.data());
    indices.resize(static_cast<std::size_t>(layout.dimensionCount()));
    return indices;
}

// --- a life ---

OneCategorySet::OneCategorySet(const Shape& shape) : m_shape(shape) {
    setTvType(TV_TYPE);
}

IFileOperator* OneCategorySet::makeOperator(_DataCategory_t category) {
    if (category != m_shape.category)
        return nullptr;
    return m_shape.makeOwn != nullptr ? m_shape.makeOwn() : createOperator(category);
}

const CategoryLayout& OneCategorySet::layout() const {
    return m_shape.layout();
}

bool OneCategorySet::boot() {
    if (!start())
        return false;
    loadAllData();
    return isLoaded();
}

bool OneCategorySet::bootFromFactory() {
    loadManufactoryPath();
    const bool taken = initCurrentFromManufactory();
    return boot() && taken;
}

bool OneCategorySet::isLoaded() {
    const Unwatched unwatched;
    std::vector<_Argument_t> all;
    return loadData(m_shape.category, indicesOf(layout(), 0), all);
}

bool OneCategorySet::storeRecord(int record, int series) {
    std::vector<int> indices;
    std::vector<_Argument_t> args;
    {
        const Unwatched unwatched;
        indices = indicesOf(layout(), record);
        const std::vector<int> values = valuesOf(layout(), series, record);
        for (const Field& field : layout().fields)
            args.push_back({field.argumentName(), values[static_cast<std::size_t>(field.position)]});
    }
    return storeData(m_shape.category, indices, args);
}

bool OneCategorySet::settle() {
    if (auto* const merging = dynamic_cast<AbstractFileOperator*>(getFileOperator(m_shape.category)))
        merging->waitForMerge();
    return waitStored(PATIENCE_MILLISECONDS);
}

std::vector<int> OneCategorySet::recordInMemory(int record) {
    std::vector<_Argument_t> args;
    for (const Field& field : layout().fields)
        args.push_back({field.argumentName(), 0});
    std::vector<int> values(args.size(), -1);
    if (!loadData(m_shape.category, indicesOf(layout(), record), args))
        return {};
    for (std::size_t i = 0; i < args.size(); ++i)
        values[static_cast<std::size_t>(layout().fields[i].position)] = args[i].value;
    return values;
}

} // namespace td::test
