#include "fileOperator/file/KnownChecksum.h"

#include <ctime>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/common/CRC32Util.h>

namespace td {

bool KnownChecksum::Stamp::operator==(const Stamp& other) const {
    const auto all = [](const Stamp& stamp) {
        return std::tie(stamp.device, stamp.inode, stamp.size, stamp.modifiedSeconds, stamp.modifiedNanoseconds,
                        stamp.changedSeconds, stamp.changedNanoseconds);
    };
    return all(*this) == all(other);
}

bool KnownChecksum::readStamp(int descriptor, Stamp& stamp) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0)
        return false;
    stamp = {status.st_dev,          status.st_ino,         status.st_size,        status.st_mtim.tv_sec,
             status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
    return true;
}

void KnownChecksum::mark(int descriptor, int contentPosition, unsigned int crc) {
    m_known = false;
    timespec times[2] = {};
    // Newer than the times that the kernel itself gives, which are those of its last tick, and odd.
    if (clock_gettime(CLOCK_REALTIME, &times[1]) != 0)
        return;
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_nsec |= 1;
    if (futimens(descriptor, times) != 0 || !readStamp(descriptor, m_stamp))
        return;
    m_known = m_stamp.modifiedSeconds == times[1].tv_sec && m_stamp.modifiedNanoseconds == times[1].tv_nsec;
    m_contentPosition = contentPosition;
    m_crc = crc;
}

bool KnownChecksum::after(int descriptor, const RedoRecord& record, unsigned int& crc) const {
    Stamp now;
    if (!m_known || m_contentPosition != record.contentPosition || !readStamp(descriptor, now) || !(now == m_stamp))
        return false;
    const CRC32Util& tool = *CRC32Util::instance();
    unsigned int computed = m_crc;
    std::int64_t position = m_contentPosition;
    for (const RedoRecord::Write& write : record.writes) {
        const std::int64_t end = std::int64_t{write.offset} + static_cast<std::int64_t>(write.bytes.size());
        if (write.offset < position || end > now.size)
            return false;
        std::string bytes(write.bytes.size(), '\0');
        if (pread(descriptor, bytes.data(), bytes.size(), write.offset) != static_cast<ssize_t>(bytes.size()))
            return false;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(bytes[i] ^ write.bytes[i]);
        const unsigned int change =
            tool.crc32(0, reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
        computed ^= CRC32Util::throughZeros(change, static_cast<unsigned int>(now.size - end));
        position = end;
    }
    crc = computed;
    return true;
}

} // namespace td
