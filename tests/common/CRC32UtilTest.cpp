#include <dataModule/common/CRC32Util.h>

#include <cstdlib>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "LogCapture.h"
#include "TemporaryDirectory.h"

#if defined(EXPECT_CHECKSUM_INSTRUCTIONS) && !defined(__ARM_FEATURE_CRC32)
#error "these are the tests of the instructions"
#endif

namespace td {
namespace {

using test::LogCapture;
using test::TemporaryDirectory;

class CRC32UtilTest : public testing::Test {
protected:
    void SetUp() override { util->init_crc_table(); }

    unsigned int checksum(std::string text) const {
        auto* const bytes = reinterpret_cast<unsigned char*>(text.data());
        return util->crc32(CRC32Util::INITIAL, bytes, static_cast<unsigned int>(text.size()));
    }

    CRC32Util* const util = CRC32Util::instance();
};

/// The definition, bit by bit.
unsigned int slowCrc(unsigned int crc, const unsigned char* bytes, std::size_t size) {
    for (std::size_t index = 0; index < size; ++index) {
        crc ^= bytes[index];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xEDB88320U : crc >> 1;
    }
    return crc;
}

} // namespace

TEST(CRC32UtilDeathTest, RefusesFilesBeforeTheTablesAreBuilt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process, in which nobody has built them
    EXPECT_EXIT(
        {
            const LogCapture log;
            unsigned int crc = 7;
            const bool refused = !CRC32Util::instance()->calc_file_crc("/etc/passwd", 0, crc);
            const bool told = log.contains("[dataModule] CRC tool hasn't init yet !!!\n");
            std::_Exit(refused && told && crc == 7 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(CRC32UtilTest, HasTheKnownCheckValue) {
    EXPECT_EQ(checksum("123456789"), 0x340BC6D9U);
    EXPECT_EQ(checksum(""), CRC32Util::INITIAL);
    util->init_crc_table();
    EXPECT_EQ(checksum("123456789"), 0x340BC6D9U);
}

TEST_F(CRC32UtilTest, FoldsAnyLengthFromAnyAddressAsDefined) {
    std::vector<unsigned char> bytes(80);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0xB0));
    for (unsigned int start = 0; start < 8; ++start) {
        for (unsigned int length = 0; length <= 72; ++length) {
            unsigned char* const from = bytes.data() + start;
            ASSERT_EQ(util->crc32(0x12345678U, from, length), slowCrc(0x12345678U, from, length))
                << start << "+" << length;
        }
    }
}

TEST_F(CRC32UtilTest, PassesThroughZerosAsThroughAnyOtherBytes) {
    std::vector<unsigned char> zeros(100'000);
    for (const unsigned int count : {0U, 1U, 2U, 3U, 7U, 8U, 255U, 65'537U, 100'000U}) {
        for (const unsigned int crc : {0U, 1U, 0x80000000U, 0x12345678U, CRC32Util::INITIAL})
            EXPECT_EQ(CRC32Util::throughZeros(crc, count), slowCrc(crc, zeros.data(), count)) << crc << ", " << count;
    }
}

TEST_F(CRC32UtilTest, ChecksumsAFileFromTheOffset) {
    const TemporaryDirectory directory;
    std::string content;
    while (content.size() < 10000)
        content += std::to_string(content.size());
    const std::string path = directory.write("file", content);
    for (const int offset : {0, 1, 4096, 9999}) {
        unsigned int crc = 0;
        EXPECT_TRUE(util->calc_file_crc(path.c_str(), offset, crc));
        EXPECT_EQ(crc, checksum(content.substr(static_cast<std::size_t>(offset)))) << offset;
    }
    unsigned int atEnd = 0;
    EXPECT_TRUE(util->calc_file_crc(path.c_str(), static_cast<int>(content.size()), atEnd));
    EXPECT_EQ(atEnd, CRC32Util::INITIAL);
}

TEST_F(CRC32UtilTest, AnswersAnUnreadableFileWithTheInitialValue) {
    const TemporaryDirectory directory;
    const std::string missing = directory.file("missing");
    const std::string file = directory.write("file", "text");
    const LogCapture log;
    unsigned int crc = 0;
    EXPECT_TRUE(util->calc_file_crc(missing.c_str(), 0, crc));
    EXPECT_EQ(crc, CRC32Util::INITIAL);
    EXPECT_EQ(log.count("CRC Code: open file [" + missing + "] failed, error = No such file or directory.\n"), 1U);
    crc = 0;
    EXPECT_TRUE(util->calc_file_crc(file.c_str(), -1, crc));
    EXPECT_EQ(crc, CRC32Util::INITIAL);
    EXPECT_EQ(log.count("CRC Code: open file [" + file + "] failed, error = Invalid argument.\n"), 1U);
    const std::string fifo = directory.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const char* noFile : {fifo.c_str(), "/dev/zero", static_cast<const char*>(nullptr)}) {
        crc = 0;
        EXPECT_TRUE(util->calc_file_crc(noFile, 0, crc));
        EXPECT_EQ(crc, CRC32Util::INITIAL);
    }
}

} // namespace td
