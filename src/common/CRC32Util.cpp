#include <dataModule/common/CRC32Util.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include <dataModule/common/Log.h>

namespace td {
namespace {

constexpr std::uint32_t POLYNOMIAL = 0xEDB88320U;
constexpr std::size_t BLOCK_SIZE = 4096;

/// Bytes that one step of the sliced loop folds.
constexpr unsigned int SLICES = 8;

std::uint32_t foldBits(std::uint32_t value) {
    for (int bit = 0; bit < 8; ++bit)
        value = (value & 1U) != 0 ? (value >> 1) ^ POLYNOMIAL : value >> 1;
    return value;
}

/// Byte by byte, so that the order of bytes in memory counts and not the machine's.
std::uint32_t loadLittleEndian(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

/// A descriptor for reading, closed at the end of the block.
class InputFile {
public:
    explicit InputFile(const char* path) : m_descriptor(path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC)) {
        if (path == nullptr)
            errno = EINVAL;
    }
    ~InputFile() {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    bool seek(int offset) const { return lseek(m_descriptor, offset, SEEK_SET) >= 0; }
    ssize_t readBlock(unsigned char (&block)[BLOCK_SIZE]) const { return read(m_descriptor, block, sizeof block); }

private:
    const int m_descriptor;
};

} // namespace

CRC32Util* CRC32Util::instance() {
    static auto* const util = new CRC32Util;
    return util;
}

void CRC32Util::init_crc_table() {
    const MutexLock lock(m_tableMutex);
    if (m_initialised)
        return; // readers take no lock, so complete tables are not written again
    for (std::uint32_t byte = 0; byte < 256; ++byte)
        m_table[0][byte] = foldBits(byte);
    for (std::size_t slice = 1; slice < SLICES; ++slice) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t nearer = m_table[slice - 1][byte];
            m_table[slice][byte] = m_table[0][nearer & 0xFFU] ^ (nearer >> 8);
        }
    }
    m_initialised = true;
}

unsigned int CRC32Util::crc32(unsigned int crc, unsigned char* buf, unsigned int len) const {
    const unsigned char* bytes = buf;
    for (; len >= SLICES; len -= SLICES, bytes += SLICES) {
        const std::uint32_t low = loadLittleEndian(bytes) ^ crc;
        const std::uint32_t high = loadLittleEndian(bytes + 4);
        crc = m_table[7][low & 0xFFU] ^ m_table[6][low >> 8 & 0xFFU] ^ m_table[5][low >> 16 & 0xFFU] ^
              m_table[4][low >> 24] ^ m_table[3][high & 0xFFU] ^ m_table[2][high >> 8 & 0xFFU] ^
              m_table[1][high >> 16 & 0xFFU] ^ m_table[0][high >> 24];
    }
    for (; len > 0; --len, ++bytes)
        crc = m_table[0][(crc ^ *bytes) & 0xFFU] ^ (crc >> 8);
    return crc;
}

bool CRC32Util::calc_file_crc(const char* path, int offset, unsigned int& crc) {
    if (!m_initialised) {
        DM_ERROR("CRC tool hasn't init yet !!!\n");
        return false;
    }
    const MutexLock lock(m_fileMutex);
    crc = INITIAL;
    const InputFile file(path);
    if (!file.isOpen() || !file.seek(offset)) {
        DM_WARNING("CRC Code: open file [%s] failed, error = %s.\n", path == nullptr ? "" : path, std::strerror(errno));
        return true;
    }
    unsigned char block[BLOCK_SIZE];
    ssize_t bytes = 0;
    while ((bytes = file.readBlock(block)) > 0)
        crc = crc32(crc, block, static_cast<unsigned int>(bytes));
    if (bytes < 0) {
        crc = INITIAL; // a part of a file has no checksum of its own
        DM_WARNING("CRC Code: read file [%s] failed, error = %s.\n", path, std::strerror(errno));
    }
    return true;
}

} // namespace td
