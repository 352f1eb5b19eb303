#include <dataModule/common/CRC32Util.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__ARM_FEATURE_CRC32)
#include <arm_acle.h>
#endif

#include <fcntl.h>
#include <unistd.h>

#include "common/Descriptor.h"
#include "common/Log.h"
#include "common/Mutex.h"

namespace td {
namespace {

constexpr std::size_t BLOCK_SIZE = 4096;
constexpr std::uint32_t POLYNOMIAL = 0xEDB88320U;

#if defined(__ARM_FEATURE_CRC32) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__

// ARMv8 has instructions for just this polynomial.
unsigned int fold(unsigned int crc, const unsigned char* bytes, unsigned int count) {
    for (; count >= sizeof(std::uint64_t); count -= sizeof(std::uint64_t), bytes += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        crc = __crc32d(crc, word);
    }
    for (; count > 0; --count, ++bytes)
        crc = __crc32b(crc, *bytes);
    return crc;
}

#else

/// Bytes that one step of the sliced loop folds.
constexpr unsigned int SLICES = 16;

/// The first is the classic table of CRC-32; number k folds a byte that lies k bytes back (slicing by 16 after
/// M. Kounavis, F. Berry, "Novel Table Lookup-Based Algorithms for High-Performance CRC Generation", 2008).
using Tables = std::array<std::array<std::uint32_t, 256>, SLICES>;

constexpr std::uint32_t foldBits(std::uint32_t value) {
    for (int bit = 0; bit < 8; ++bit)
        value = (value & 1U) != 0 ? (value >> 1) ^ POLYNOMIAL : value >> 1;
    return value;
}

constexpr Tables makeTables() {
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte)
        tables[0][byte] = foldBits(byte);
    for (std::size_t slice = 1; slice < SLICES; ++slice) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t nearer = tables[slice - 1][byte];
            tables[slice][byte] = tables[0][nearer & 0xFFU] ^ (nearer >> 8);
        }
    }
    return tables;
}

constexpr Tables TABLES = makeTables();

/// Byte by byte, so that the order of bytes in memory counts and not the machine's.
std::uint32_t loadLittleEndian(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

/// Folds four bytes, the last of which lies `distance` bytes before the end of the step.
std::uint32_t foldWord(std::uint32_t word, std::size_t distance) {
    return TABLES[distance + 3][word & 0xFFU] ^ TABLES[distance + 2][word >> 8 & 0xFFU] ^
           TABLES[distance + 1][word >> 16 & 0xFFU] ^ TABLES[distance][word >> 24];
}

unsigned int fold(unsigned int crc, const unsigned char* bytes, unsigned int count) {
    for (; count >= SLICES; count -= SLICES, bytes += SLICES)
        crc = foldWord(loadLittleEndian(bytes) ^ crc, 12) ^ foldWord(loadLittleEndian(bytes + 4), 8) ^
              foldWord(loadLittleEndian(bytes + 8), 4) ^ foldWord(loadLittleEndian(bytes + 12), 0);
    for (; count > 0; --count, ++bytes)
        crc = TABLES[0][(crc ^ *bytes) & 0xFFU] ^ (crc >> 8);
    return crc;
}

#endif

// A checksum is a polynomial over the two-element field, modulo the CRC's own; the top bit stands for 1, the next for
// x.
constexpr std::uint32_t ONE = 0x80000000U;
constexpr std::uint32_t EIGHTH_POWER_OF_X = ONE >> 8;

/// The product of two polynomials.
std::uint32_t product(std::uint32_t one, std::uint32_t other) {
    std::uint32_t sum = 0;
    for (; other != 0; other <<= 1) {
        if ((other & ONE) != 0)
            sum ^= one;
        one = (one & 1U) != 0 ? (one >> 1) ^ POLYNOMIAL : one >> 1;
    }
    return sum;
}

} // namespace

CRC32Util::CRC32Util() : m_fileMutex(std::make_unique<Mutex>(LockRank::Checksum)) {}

CRC32Util::~CRC32Util() = default;

CRC32Util* CRC32Util::instance() {
    static auto* const util = new CRC32Util;
    return util;
}

void CRC32Util::init_crc_table() {
    m_initialised = true;
}

unsigned int CRC32Util::crc32(unsigned int crc, unsigned char* buf, unsigned int len) const {
    return fold(crc, buf, len);
}

unsigned int CRC32Util::throughZeros(unsigned int crc, unsigned int count) {
    // One byte of zero multiplies by x to the eighth.
    std::uint32_t power = EIGHTH_POWER_OF_X;
    for (; count != 0; count >>= 1) {
        if ((count & 1U) != 0)
            crc = product(crc, power);
        power = product(power, power);
    }
    return crc;
}

bool CRC32Util::calc_file_crc(const char* path, int offset, unsigned int& crc) {
    if (!m_initialised) {
        TD_ERROR("CRC tool hasn't init yet !!!\n");
        return false;
    }
    const NoCancel noCancel;
    const MutexLock lock(*m_fileMutex);
    crc = INITIAL;
    errno = EINVAL;
    const Descriptor file(path == nullptr ? -1 : openAtOnce(path, O_RDONLY, &isRegular));
    if (!file.isOpen() || lseek(file.get(), offset, SEEK_SET) < 0) {
        TD_WARNING("CRC Code: open file [%s] failed, error = %s.\n", path == nullptr ? "" : path, std::strerror(errno));
        return true;
    }
    unsigned char block[BLOCK_SIZE];
    ssize_t bytes = 0;
    while ((bytes = read(file.get(), block, sizeof block)) > 0)
        crc = crc32(crc, block, static_cast<unsigned int>(bytes));
    if (bytes < 0) {
        crc = INITIAL; // a part of a file has no checksum of its own
        TD_WARNING("CRC Code: read file [%s] failed, error = %s.\n", path, std::strerror(errno));
    }
    return true;
}

} // namespace td
