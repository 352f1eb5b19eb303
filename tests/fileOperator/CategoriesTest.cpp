// What holds for every category alike, and a table of what each one is. The table is written down beside the
// declarations and never made from them, but for the digest: that is of all bytes of the file that a factory makes,
// comments too, and of the names of a whole-record answer. A new one goes in only after a look at both.

#include <climits>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include <dmctl/inspect/FileInspection.h>

#include "FakeParent.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

/// Bulk operations: the swept dimensions by number; before them '!' for at once, 'c' for those that differ, 'e' for
/// each.
/// "-" is not offered, "=" does nothing and says nothing.
struct Row {
    int value;
    const char* name;
    const char* type;
    const char* file;
    const char* version;
    const char* counts;
    int fields;
    int sectionSize;
    std::size_t fileSize;
    unsigned int digest;
    const char* toSources;
    const char* toModes;
    const char* restore;
    bool rereads;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

// clang-format off
constexpr Row ROWS[] = {
    { 0, "PICTURE_GLOBAL", "UserPictureGlobal", "pic_global_usr.ini", "v0.4", "", 28, 905, 1489, 0xa713ffc2, "-", "-", "-", true},
    { 1, "PICTURE_SOURCE_ONLY", "UserPictureSourceOnly", "pic_sourceonly_usr.ini", "v0.1", "16x2", 2, 69, 4312, 0xeeb2ee39, "-", "-", "-", true},
    { 2, "PICTURE_MODE", "UserPictureMode", "pic_mode_usr.ini", "v0.4", "16x12x8", 24, 774, 1192412, 0xf8c9624d, "!0", "-", "=", true},
    { 3, "PICTURE_MODE_SELF", "UserPictureModeSelf", "pic_modeself_usr.ini", "v0.3", "16x4", 1, 37, 4624, 0xb5e591fe, "-", "-", "-", true},
    { 4, "PICTURE_COLOR_TUNER", "UserPictureColorTuner", "pic_color_tuner_usr.ini", "v0.2", "16x12x8x7", 3, 103, 1111612, 0xf2f9a703, "0", "01", "c0", true},
    { 5, "PICTURE_WB_2_POINT", "UserPictureWB2Point", "pic_wb_2p_usr.ini", "v0.2", "16x12", 7, 229, 46832, 0x0cee17f4, "0", "01", "c0", true},
    { 6, "PICTURE_WB_10_POINT_IDX", "UserPictureWB10PointIndex", "pic_wb_10p_idx_usr.ini", "v0.2", "16x12", 2, 69, 16112, 0x29313a08, "0", "1", "c0", true},
    { 7, "PICTURE_WB_10_POINT", "UserPictureWB10Point", "pic_wb_10p_usr.ini", "v0.2", "16x12x10", 3, 102, 199540, 0xa29299c8, "0", "01", "c0", true},
    { 8, "PICTURE_FACTORY_WB", "FactoryPictureWB", "pic_wb_factory.ini", "v0.3", "6x16x10x2x6", 6, 200, 2308004, 0x48e5bc16, "-", "-", "-", false},
    { 9, "PICTURE_FACTORY_CURVE", "FactoryPictureCurve", "pic_curve_factory.ini", "v0.3", "16x10x2x6", 5, 167, 324112, 0xfad4e76d, "-", "-", "e0", false},
    {10, "PICTURE_YRANGE", "UserPictureYRange", "pic_yrange_usr.ini", "v0.2", "16x12x6", 3, 102, 120900, 0xd0758fc8, "-", "-", "-", false},
    {11, "PICTURE_FACTORY_OVERSCAN", "FactoryPictureOverScan", "pic_overscan_factory.ini", "v0.1", "28", 8, 260, 9992, 0x3732a7a9, "-", "-", "e", false},
    {12, "PICTURE_FACTORY_ASPECT", "FactoryPictureAspect", "pic_aspect_factory.ini", "v0.1", "15", 11, 356, 7140, 0x4b053b18, "-", "-", "e", false},
    {13, "PICTURE_FACTORY_SCALING", "FactoryPictureScaling", "pic_scaling_factory.ini", "v0.1", "16", 9, 292, 6548, 0x9f58e68e, "-", "-", "e", false},
    {14, "PICTURE_FACTORY_SCALING_PIP", "FactoryPictureScalingPIP", "pic_scaling_pip_factory.ini", "v0.1", "3", 2, 68, 1092, 0x02a9206c, "-", "-", "e", false},
    {15, "PICTURE_FACTORY_SCALING_PIP_POS", "FactoryPictureScalingPIPPos", "pic_scaling_pip_pos_factory.ini", "v0.1", "5", 2, 68, 1456, 0xfe196a19, "-", "-", "e", false},
    {16, "SOUND_GLOBAL", "UserSoundGlobal", "sound_global_usr.ini", "v0.2", "", 23, 745, 1329, 0x89222b9a, "-", "-", "-", true},
    {17, "SOUND_MODE", "UserSoundMode", "sound_mode_usr.ini", "v0.1", "16", 1, 36, 2452, 0xabb9f09f, "-", "-", "e0", true},
    {18, "SOUND_EQ", "UserSoundEQ", "sound_eq_usr.ini", "v0.3", "16x8", 7, 229, 31872, 0x7bf7beda, "0", "-", "e0", true},
    {19, "SOUND_DELAY", "UserSoundDelay", "sound_delay_usr.ini", "v0.1", "16x9", 4, 133, 21788, 0x193437f2, "-", "-", "e0", true},
    {20, "SOUND_DBX", "UserSoundDbx", "sound_dbx_usr.ini", "v0.2", "16x8", 3, 101, 15488, 0x41627497, "0", "-", "e0", true},
    {21, "SOUND_DTS", "UserSoundDTS", "sound_dts_usr.ini", "v0.2", "16x8", 4, 133, 19584, 0xa45ea7e5, "0", "-", "e0", true},
    {22, "SOUND_AVC", "FactorySoundAVC", "sound_avc_factory.ini", "v0.2", "16x8", 5, 165, 23680, 0x67117cc8, "0", "-", "e0", false},
    {23, "SOUND_AMP", "FactorySoundAMP", "sound_amp_factory.ini", "v0.3", "5x6", 6, 197, 7482, 0xd7e551d6, "-", "-", "e", false},
    {24, "SOUND_PEQ", "FactorySoundPEQ", "sound_peq_factory.ini", "v0.1", "16", 3, 100, 3552, 0x1cff675c, "-", "-", "e", false},
    {25, "SOUND_EQ_WALLMOUNT", "FactorySoundEQ", "sound_eq_wallmount.ini", "v0.3", "16x8", 7, 229, 31872, 0x733d0d24, "0", "-", "e0", false},
    {26, "SOUND_CURVE", "FactorySoundCurve", "sound_curve_factory.ini", "v0.2", "16", 7, 228, 5524, 0xebbeb787, "-", "-", "e0", false},
    {27, "PICTURE_WB_20_POINT", "UserPictureWB20Point", "pic_wb_20p_usr.ini", "v0.1", "16x12x20", 3, 102, 396140, 0xb554fe30, "0", "01", "c0", true},
    {28, "PICTURE_WB_20_POINT_IDX", "UserPictureWB20PointIndex", "pic_wb_20p_idx_usr.ini", "v0.2", "16x12", 2, 69, 16112, 0xa60d190f, "0", "1", "c0", true},
    {29, "PICTURE_WB_20_GAIN", "UserPictureWB20Gain", "pic_wb_20p_gain_usr.ini", "v0.2", "16x12x20", 1, 38, 150380, 0x60b0ec81, "0", "01", "c0", true},
    {30, "PICTURE_WB_20_GAIN_IDX", "UserPictureWB20GainIndex", "pic_wb_20p_gain_idx_usr.ini", "v0.2", "16x12", 1, 37, 9968, 0x74475dfc, "-", "1", "c0", true},
    {31, "PICTURE_MODE_EX", "UserPictureModeEx", "pic_mode_ex_usr.ini", "v0.4", "16x12x8", 11, 358, 553436, 0x8330f461, "0", "-", "-", true},
    {32, "PICTURE_LOW_BLUE_LIGHT", "UserPictureLowBlueLight", "pic_low_blue_light_usr.ini", "v0.1", "4x5", 3, 101, 3440, 0xdd564960, "-", "-", "-", false},
    {33, "PICTURE_FACTORY_BACKLIGHT_CURVE", "FactoryPictureBacklightCurve", "pic_backlight_curve_factory.ini", "v0.3", "16x10x2x1", 5, 167, 56532, 0x41b4b0f4, "-", "-", "e0", false},
    {34, "SOUND_GLOBAL_FACTORY", "FactorySoundGlobal", "sound_global_factory.ini", "v0.1", "", 8, 265, 849, 0xb1c6df87, "-", "-", "-", true},
    {35, "PICTURE_CONTENT_DETECT", "UserPictureContentDetect", "pic_content_detect_usr.ini", "v0.1", "16", 4, 132, 3988, 0xbe15bd15, "-", "-", "-", true},
    {36, "PICTURE_ENHANCED_VIEWING_ANGLE", "UserPictureEnhancedViewingAngle", "pic_enhanced_viewing_angle_usr.ini", "v0.1", "12x4", 3, 101, 6800, 0x35e296ef, "0", "-", "-", true},
    {37, "PICTURE_FACTORY_COLOR_TUNER", "FactoryPictureColorTuner", "pic_color_tuner_factory.ini", "v0.1", "16x12x8x7", 3, 103, 1111612, 0x34463539, "0", "01", "e0", true},
    {38, "PICTURE_FACTORY_WB_SHIFT", "FactoryPictureWBShift", "pic_wb_shift_factory.ini", "v0.1", "6x16x10x2x6", 6, 200, 2308004, 0xa5b527ba, "-", "-", "-", false},
    {39, "PICTURE_FACTORY_WB_20_GAIN", "FactoryPictureWB20Gain", "pic_wb_20p_gain_factory.ini", "v0.1", "16x12x20", 1, 38, 150380, 0x0e4c6e3b, "0", "01", "e0", true},
    {40, "PICTURE_FACTORY_WB_20_GAIN_IDX", "FactoryPictureWB20GainIndex", "pic_wb_20p_gain_idx_factory.ini", "v0.1", "16x12", 1, 37, 9968, 0x8bd807ea, "-", "1", "e0", true},
    {41, "PICTURE_FACTORY_WB_20_POINT", "FactoryPictureWB20Point", "pic_wb_20p_factory.ini", "v0.1", "16x12x20", 3, 102, 396140, 0xeadc1756, "0", "01", "e0", true},
    {42, "PICTURE_FACTORY_WB_20_POINT_IDX", "FactoryPictureWB20PointIndex", "pic_wb_20p_idx_factory.ini", "v0.1", "16x12", 2, 69, 16112, 0x5e1b5e04, "0", "1", "e0", true},
    {43, "PICTURE_USER_DOLBY_IQ_MODE", "UserPictureDolbyIQMode", "pic_dolbyiq_mode_usr.ini", "v0.1", "16", 4, 132, 3988, 0xde49f95d, "-", "-", "-", false},
    {44, "PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT", "UserPictureDolbyIQIntentedWhitePoint", "pic_dolbyiq_intented_wp_usr.ini", "v0.1", "16", 6, 196, 5012, 0xef25657c, "-", "-", "-", false},
    {45, "PICTURE_USER_LIGHT_SENSOR_LEVEL", "UserPictureLightSensorShift", "pic_light_sensor_level_usr.ini", "v0.1", "8", 25, 804, 7700, 0x66825046, "-", "-", "-", false},
    {46, "PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN", "UserPictureLightSensorWB20Gain", "pic_light_sensor_WB_20_gain_usr.ini", "v0.1", "8x20", 1, 37, 8784, 0x64e3d39a, "-", "1", "c0", true},
    {47, "PICTURE_USER_LIGHT_SENSOR_PLC_POINT", "UserPictureLightSensorPLC", "pic_light_sensor_plc_usr.ini", "v0.1", "8", 8, 260, 3348, 0xfc4aa4aa, "-", "-", "-", false},
    {48, "PICTURE_XVYCC", "UserPictureXVYCC", "pic_xvycc_factory.ini", "v0.1", "6", 9, 319, 3030, 0xd1856109, "-", "-", "-", true},
    {49, "PICTURE_USER_BACKLIGHT_WB", "UserPictureBacklightWB", "velmora_color_temperature_compensation.ini", "v0.1", "11", 6, 196, 3652, 0x6f608ce3, "-", "-", "-", false},
    {50, "PICTURE_USER_CCT_WB", "UserPictureCCTWB", "pic_cct_wb_usr.ini", "v0.1", "5", 6, 196, 2476, 0xd9ad1341, "-", "-", "-", false},
    {51, "PICTURE_GAMMA_CALIBRATION_DARK_DETAIL", "UserPictureGammaCalibrationDarkDetail", "pic_gamma_calibration_dark_detail.ini", "v0.1", "5x20", 1, 37, 6336, 0x472f605b, "-", "-", "-", false},
};
// clang-format on

using Table = std::vector<int>;
using Records = std::set<int>;

class Categories : public testing::TestWithParam<Row> {
protected:
    Categories() {
        // In factory state every bin of the factory white balance is in memory.
        const std::filesystem::path field = underRootPrefix("/var/local/flash/factory_mode");
        std::filesystem::create_directories(field.parent_path());
        std::ofstream(field) << "On";
    }
    std::unique_ptr<AbstractFileOperator> makeOperator() {
        std::unique_ptr<AbstractFileOperator> op(createOperator(m_layout.category));
        op->setParent(&m_parent);
        return op;
    }
    std::unique_ptr<AbstractFileOperator> load() {
        std::unique_ptr<AbstractFileOperator> op = makeOperator();
        EXPECT_TRUE(op->loadFile());
        op->waitForMerge();
        return op;
    }
    std::string read(Copy copy) const { return m_root.read(copy, m_row.file); }
    void write(Copy copy, const std::string& text) const { m_root.write(copy, m_row.file, text); }
    std::string fileOf(const Table& table) const { return wholeFile(m_layout, "TVTYPE01", table); }

    std::vector<int> indices(int record) const {
        std::vector<int> dims(m_layout.dimensions.size());
        m_layout.indicesOf(record, dims.data());
        return dims;
    }
    int last() const { return m_layout.recordCount() - 1; }
    Records all() const {
        Records records;
        for (int record = 0; record <= last(); ++record)
            records.insert(records.end(), record);
        return records;
    }
    Records some() const { return {0, m_given, last() / 2, last()}; }
    /// Other values in every field of every record, over the whole width of the columns.
    Table spread(int seed = 0) const {
        const bool isHexadecimal = m_layout.keyLine == KeyLineForm::Hexadecimal5;
        const int low = isHexadecimal ? 0 : m_layout.keyLine == KeyLineForm::Decimal5 ? -9999 : -999;
        const int high = isHexadecimal ? 0xFFFFF : m_layout.keyLine == KeyLineForm::Decimal5 ? 99999 : 9999;
        Table table = defaultTable(m_layout);
        for (std::size_t i = 0; i < table.size(); ++i)
            table[i] = low + static_cast<int>((i * 104729 + static_cast<std::size_t>(seed) * 1299709 + 17) %
                                              static_cast<std::size_t>(high - low + 1));
        return table;
    }
    std::size_t cell(int record, const Field& field) const {
        return static_cast<std::size_t>(record * m_layout.fieldCount() + field.position);
    }
    void copyRecord(const Table& from, int source, Table& to, int target) const {
        const int width = m_layout.fieldCount();
        std::copy_n(from.begin() + source * width, width, to.begin() + target * width);
    }
    std::vector<_Argument_t> arguments(const Table& table, int record) const {
        std::vector<_Argument_t> args;
        for (const Field& field : m_layout.fields)
            args.push_back({field.argumentName(), table[cell(record, field)]});
        return args;
    }
    /// The names of a whole-record answer, which has an order of its own.
    std::string answeredNames(AbstractFileOperator& op) const {
        std::vector<_Argument_t> args;
        EXPECT_TRUE(op.loadData(indices(0), args));
        std::string names;
        for (const _Argument_t& argument : args)
            names += std::string(argument.name != nullptr ? argument.name : "-") + " ";
        return names;
    }
    void expectRecords(AbstractFileOperator& op, const Records& records, const Table& table) {
        for (const int record : records) {
            const std::vector<_Argument_t> expected = arguments(table, record);
            std::vector<_Argument_t> args = expected;
            for (_Argument_t& argument : args)
                argument.value = INT_MIN;
            ASSERT_TRUE(op.loadData(indices(record), args)) << record;
            for (std::size_t i = 0; i < args.size(); ++i)
                ASSERT_EQ(args[i].value, expected[i].value) << "record " << record << " " << args[i].name;
        }
    }

    const Row m_row = GetParam();
    const CategoryLayout& m_layout = *layoutOf(static_cast<_DataCategory_t>(m_row.value));
    const char* const m_field = m_layout.fields.back().argumentName();
    const int m_given = m_layout.recordCount() * 2 / 3;
    LogCapture m_log;
    SettingsRoot m_root;
    FakeParent m_parent;
};

std::string nameOf(const testing::TestParamInfo<Row>& tested) {
    return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, Categories, testing::ValuesIn(ROWS), nameOf);

TEST_P(Categories, IsWhatTheTableSays) {
    ASSERT_EQ(allLayouts().size(), std::size(ROWS));
    std::string counts;
    for (const Dimension& dimension : m_layout.dimensions)
        counts += (counts.empty() ? "" : "x") + std::to_string(dimension.count);
    EXPECT_EQ(counts, m_row.counts);
    EXPECT_EQ(m_layout.fieldCount(), m_row.fields);
    EXPECT_EQ(m_layout.sectionLength(), m_row.sectionSize);
    const auto op = makeOperator();
    EXPECT_STREQ(m_parent.getCategory_Str(op->getDataCategory()), m_row.name);
    EXPECT_EQ(op->getDataSize(), m_row.fields * m_layout.recordCount() * 4);
    const IFileOperator& made = *op;
    EXPECT_NE(std::string(typeid(made).name()).find(std::string("File") + m_row.type), std::string::npos);

    ASSERT_TRUE(op->initFile(true));
    const std::string created = read(Copy::Current);
    EXPECT_EQ(created.size(), m_row.fileSize);
    EXPECT_EQ(created.find(std::string("Version                  = ") + m_row.version), lineAt(created, "Version"));
    EXPECT_TRUE(created == read(Copy::Backup) && created == read(Copy::Factory));
    EXPECT_TRUE(created == fileOf(defaultTable(m_layout)));
    const auto loaded = load();
    expectRecords(*loaded, all(), defaultTable(m_layout));
    const unsigned int digest = checksum(created + answeredNames(*loaded));
    EXPECT_EQ(digest, m_row.digest) << "0x" << std::hex << digest;
    ASSERT_TRUE(storeValue(*loaded, indices(0), m_field, 77));
    const auto posted = m_parent.takePosted();
    ASSERT_EQ(posted.size(), 1U);
    const Event& event = *posted[0];
    EXPECT_NE(std::string(typeid(event).name()).find(std::string(m_row.type) + "Event"), std::string::npos);
}

TEST_P(Categories, EveryRecordRoundTripsThroughEachCopy) {
    const std::string good = fileOf(spread());
    std::string damaged = good;
    damaged.back() = ' ';
    write(Copy::Current, good);
    expectRecords(*load(), all(), spread());
    for (const Copy copy : {Copy::Backup, Copy::Factory}) {
        write(Copy::Current, damaged);
        write(Copy::Backup, damaged);
        write(copy, good);
        expectRecords(*load(), some(), spread());
        EXPECT_TRUE(read(Copy::Current) == good && read(copy) == good);
    }
}

TEST_P(Categories, AStoreOfAnyWidthChangesItsSectionAndTheChecksumOnly) {
    Table table = defaultTable(m_layout);
    write(Copy::Current, fileOf(table));
    const auto op = load();
    for (const int record : some()) {
        copyRecord(spread(record), record, table, record);
        ASSERT_TRUE(op->storeData(indices(record), arguments(table, record)));
        ASSERT_EQ(m_parent.deliver(), 1);
        ASSERT_TRUE(read(Copy::Current) == fileOf(table)) << record;
    }
    expectRecords(*load(), some(), table);
}

TEST_P(Categories, AnOlderVersionIsMergedByKey) {
    // The old file has three sections, their lines the other way round, one key that is gone and one not yet there.
    const Table old = spread(4711);
    Table result = spread();
    std::string text = text::summary("TVTYPE01", "v0.0", 0, true);
    // The merge of the low blue light knows the names of requests only, and the lines carry others.
    const bool byKey = m_layout.mergeNames == MergeNames::Keys;
    for (const int record : {0, last() / 2, last()}) {
        text += text::sectionId(m_layout, indices(record).data()) + "\n";
        for (int field = m_row.fields; field-- > (m_row.fields > 1 ? 1 : 0);) {
            const Field& key = m_layout.fields[static_cast<std::size_t>(field)];
            const int value = old[cell(record, key)];
            char line[text::LINE_BUFFER];
            text::formatKeyLine(m_layout.keyLine, key.key, value, line, sizeof line);
            text += line;
            if (byKey)
                result[cell(record, key)] = value;
        }
        text += keyLine("NoLongerKnown", "0005");
    }
    write(Copy::Current, withChecksum("\n" + text).substr(1));
    write(Copy::Factory, fileOf(spread()));
    expectRecords(*load(), all(), result);
    EXPECT_TRUE(read(Copy::Current) == fileOf(result));
}

TEST_P(Categories, EveryCornerIsAcceptedAndNothingBeyond) {
    const Table defaults = defaultTable(m_layout);
    write(Copy::Current, fileOf(defaults));
    write(Copy::Factory, fileOf(defaults));
    const auto op = load();
    const auto refuses = [&](const std::vector<int>& dims, const std::string& message) {
        m_log.clear();
        std::vector<_Argument_t> args{{m_field, 4242}};
        EXPECT_FALSE(op->loadData(dims, args) || op->storeData(dims, args) || op->restoreSetting(dims));
        EXPECT_EQ(m_log.count(message), 3U) << message << testing::PrintToString(dims);
        EXPECT_EQ(args[0].value, 4242);
    };
    const std::size_t dimensions = m_layout.dimensions.size();
    for (unsigned mask = 0; mask < 1U << dimensions; ++mask) {
        std::vector<int> dims(dimensions);
        for (std::size_t d = 0; d < dimensions; ++d)
            dims[d] = (mask >> d & 1U) != 0 ? m_layout.dimensions[d].count - 1 : 0;
        EXPECT_TRUE(storeValue(*op, dims, m_field, 11 + static_cast<int>(mask)));
        EXPECT_EQ(valueOf(*op, dims, m_field), 11 + static_cast<int>(mask));
        EXPECT_TRUE(op->restoreSetting(dims));
        EXPECT_EQ(m_parent.takePosted().size(), 2U);
        for (std::size_t d = 0; d < dimensions; ++d) {
            for (const int outside : {m_layout.dimensions[d].count, -1, INT_MAX, INT_MIN}) {
                std::vector<int> wrong = dims;
                wrong[d] = outside;
                refuses(wrong, "The dimension value is invalid.\n");
            }
        }
    }
    for (const std::size_t size : {dimensions + 1, dimensions - 1}) {
        if (size <= dimensions + 1)
            refuses(std::vector<int>(size), "The dimensions size [" + std::to_string(size) +
                                                "] is invalid ,expected size is: " + std::to_string(dimensions) +
                                                ".\n");
    }
    EXPECT_EQ(m_parent.posted(), 0U);
    expectRecords(*op, some(), defaults);
}

// --- one record for many ---

class BulkCategories : public Categories {
protected:
    BulkCategories() {
        write(Copy::Current, fileOf(m_table));
        write(Copy::Factory, fileOf(m_factory));
        m_operator = load();
    }
    /// The records that differ from the given one in the dimensions that are named only, the given one too.
    Records swept(const char* axes) const {
        Records records;
        for (const int record : all()) {
            std::vector<int> dims = indices(record);
            for (const char* axis = axes; *axis != '\0'; ++axis)
                dims[static_cast<std::size_t>(*axis - '0')] = indices(m_given)[static_cast<std::size_t>(*axis - '0')];
            if (dims == indices(m_given))
                records.insert(record);
        }
        return records;
    }
    void expectOutcome(const char* kind, const Records& posted, const Table& inFile) {
        EXPECT_EQ(m_log.contains("]: module hasn't completed yet.\n"), *kind == '-');
        Records events;
        for (const std::unique_ptr<Event>& event : m_parent.takePosted()) {
            EXPECT_TRUE(events.insert(m_layout.recordIndex(event->dimensions().data())).second && event->handle());
        }
        EXPECT_EQ(events, posted);
        expectRecords(*m_operator, all(), m_table);
        EXPECT_TRUE(read(Copy::Current) == fileOf(inFile));
    }
    void expectCopied(const char* kind) {
        Records records;
        if (*kind != '-')
            records = swept(*kind == '!' ? kind + 1 : kind);
        records.erase(m_given);
        for (const int record : records)
            copyRecord(m_table, m_given, m_table, record);
        expectOutcome(kind, *kind == '!' ? Records() : records, m_table);
    }

    Table m_table = spread();
    const Table m_factory = spread(20000);
    std::unique_ptr<AbstractFileOperator> m_operator;
};

INSTANTIATE_TEST_SUITE_P(All, BulkCategories, testing::ValuesIn(ROWS), nameOf);

TEST_P(BulkCategories, ApplyReachesItsRecordsOnly) {
    EXPECT_TRUE(m_operator->applySettingForAllSources(indices(m_given)));
    expectCopied(m_row.toSources);
    m_log.clear();
    EXPECT_TRUE(m_operator->applySettingForAllMode(indices(m_given)));
    if (std::string(m_row.toModes) != m_row.toSources) {
        Records before =
            std::string("-!").find(*m_row.toSources) == std::string::npos ? swept(m_row.toSources) : Records();
        Records records = *m_row.toModes != '-' ? swept(m_row.toModes) : Records();
        if (std::string(m_row.toModes).find(m_row.toSources) != std::string::npos)
            for (const int record : before)
                records.erase(record);
        records.erase(m_given);
        for (const int record : records)
            copyRecord(m_table, m_given, m_table, record);
        expectOutcome(m_row.toModes, records, m_table);
    }
}

TEST_P(BulkCategories, RestoreReachesItsRecordsOnly) {
    Table inFile = m_table;
    Records posted;
    const char* const kind = m_row.restore;
    EXPECT_TRUE(m_operator->restoreSettingForAllSource(indices(m_given)));
    for (const int record : *kind == 'c' || *kind == 'e' ? swept(kind + 1) : Records()) {
        copyRecord(m_factory, record, m_table, record);
        // The given record is compared with itself: it is taken back in memory only.
        if (record == m_given && *kind == 'c')
            continue;
        copyRecord(m_factory, record, inFile, record);
        posted.insert(record);
    }
    expectOutcome(kind, posted, inFile);
    // One record is restored from the factory copy as before.
    ASSERT_TRUE(storeValue(*m_operator, indices(m_given), m_field, 5));
    EXPECT_TRUE(m_operator->restoreSetting(indices(m_given)));
    copyRecord(m_factory, m_given, m_table, m_given);
    expectRecords(*m_operator, {m_given}, m_table);
}

TEST_P(BulkCategories, RestoreFromCurrentTakesOneRecordFromTheFile) {
    const int before = valueOf(*m_operator, indices(m_given), m_field);
    const int unwritten = before == 5 ? 6 : 5;
    ASSERT_TRUE(storeValue(*m_operator, indices(m_given), m_field, unwritten));
    EXPECT_TRUE(m_operator->restoreSettingFromCurrent(indices(m_given)));
    EXPECT_EQ(valueOf(*m_operator, indices(m_given), m_field), m_row.rereads ? before : unwritten);
    EXPECT_EQ(m_log.contains("]: module hasn't completed yet.\n"), !m_row.rereads);
}

} // namespace
} // namespace td::test
