#include "fileOperator/file/RedoRecord.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/FileUtil.h>

#include "common/Log.h"
#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/text/TextLayout.h"

namespace td {

namespace {

constexpr const char* SUFFIX = ".redo";
constexpr const char* FIRST_LINE = "redo 1\n";
/// Takes its place when the write is done.
constexpr const char* DONE_LINE = "done 1\n";
/// What a copy to all sources of the widest category needs, many times over.
constexpr std::size_t LONGEST_RECORD = std::size_t{1} << 20;
constexpr std::size_t BLOCK_SIZE = 16384;

unsigned int checksumOf(const char* bytes, std::size_t length, unsigned int crc = CRC32Util::INITIAL) {
    CRC32Util::instance()->init_crc_table();
    std::string copy(bytes, length); // crc32 takes what it does not change as changeable
    return CRC32Util::instance()->crc32(crc, reinterpret_cast<unsigned char*>(copy.data()),
                                        static_cast<unsigned int>(length));
}

/// Reads a text from its start on; every step fails once one has failed.
class TextReader {
public:
    explicit TextReader(const std::string& text) : m_text(text) {}

    bool expect(const char* word) {
        const std::size_t length = std::strlen(word);
        if (m_text.compare(m_position, length, word) != 0)
            return false;
        m_position += length;
        return true;
    }
    /// Decimal digits that make an int.
    bool number(int& value) {
        constexpr std::size_t MOST_DIGITS = 9;
        std::size_t end = m_position;
        int read = 0;
        while (end < m_text.size() && end - m_position < MOST_DIGITS && m_text[end] >= '0' && m_text[end] <= '9')
            read = 10 * read + (m_text[end++] - '0');
        if (end == m_position)
            return false;
        m_position = end;
        value = read;
        return true;
    }
    /// "0x" and eight digits.
    bool checksum(unsigned int& value) {
        char digits[11] = {};
        if (m_text.size() - m_position < 10)
            return false;
        std::memcpy(digits, m_text.data() + m_position, 10);
        char tail = 0;
        if (std::strspn(digits + 2, "0123456789abcdef") != 8 || std::sscanf(digits, "0x%8x%c", &value, &tail) != 1)
            return false;
        m_position += 10;
        return true;
    }
    bool bytes(int count, std::string& out) {
        if (static_cast<std::size_t>(count) > m_text.size() - m_position)
            return false;
        out.assign(m_text, m_position, static_cast<std::size_t>(count));
        m_position += static_cast<std::size_t>(count);
        return true;
    }
    std::size_t position() const { return m_position; }

private:
    const std::string& m_text;
    std::size_t m_position = 0;
};

bool readWrite(TextReader& reader, RedoRecord::Write& write) {
    int length = 0;
    return reader.number(write.offset) && reader.expect(" ") && reader.number(length) && reader.expect("\n") &&
           reader.bytes(length, write.bytes) && reader.expect("\n") && write.bytes.find('\0') == std::string::npos;
}

/// Only sections and the checksum line are ever written in place (invariant 3).
bool staysInPlace(const RedoRecord& record) {
    return record.crcPosition + text::CRC_LINE_LENGTH <= record.contentPosition &&
           std::all_of(record.writes.begin(), record.writes.end(),
                       [&](const RedoRecord::Write& write) { return write.offset >= record.contentPosition; });
}

/// What errno says of a call that failed; "there is none" is no failure to read it.
int failureFrom(int error) {
    return error == ENOENT || error == ENOTDIR ? 0 : error;
}

/// The same of a file that could not be opened; what is no file never will be.
int openFailure(const std::string& path) {
    const int error = errno;
    return FileUtil::isStray(path.c_str()) ? 0 : failureFrom(error);
}

/// `failure` becomes 0 when there is no such file, or one that cannot be a record.
bool readAll(const std::string& path, std::string& text, int& failure) {
    FileUtil file;
    errno = 0;
    if (!FileUtil::isFile(path.c_str()) || !file.openFile(path.c_str(), "r")) {
        failure = failureFrom(errno);
        return false;
    }
    char block[BLOCK_SIZE];
    std::size_t count = 0;
    while (text.size() <= LONGEST_RECORD && (count = file.readBytes(block, sizeof block)) > 0)
        text.append(block, count);
    failure = file.readFailed() ? EIO : 0;
    return failure == 0 && text.size() <= LONGEST_RECORD;
}

/// Puts the writes that meet the block at `offset` over it.
void overlay(const RedoRecord& record, int offset, unsigned char* block, int length) {
    for (const RedoRecord::Write& write : record.writes) {
        const int first = std::max(offset, write.offset);
        const int last = std::min(offset + length, write.offset + static_cast<int>(write.bytes.size()));
        if (first < last)
            std::memcpy(block + (first - offset), write.bytes.data() + (first - write.offset),
                        static_cast<std::size_t>(last - first));
    }
}

/// `failure` becomes 0 when there is no such file, or none that reaches as far.
bool checksumAfter(const std::string& settingsFile, const RedoRecord& record, unsigned int& crc, int& failure) {
    FileUtil file;
    errno = 0;
    if (!file.openFile(settingsFile.c_str(), "r") || !file.setPos(record.contentPosition)) {
        failure = openFailure(settingsFile);
        return false;
    }
    CRC32Util::instance()->init_crc_table();
    unsigned char block[BLOCK_SIZE];
    unsigned int computed = CRC32Util::INITIAL;
    int offset = record.contentPosition;
    int count = 0;
    while (offset <= text::MAX_FILE_SIZE &&
           (count = static_cast<int>(file.readBytes(reinterpret_cast<char*>(block), sizeof block))) > 0) {
        overlay(record, offset, block, count);
        computed = CRC32Util::instance()->crc32(computed, block, static_cast<unsigned int>(count));
        offset += count;
    }
    const bool reaches = std::all_of(record.writes.begin(), record.writes.end(), [&](const RedoRecord::Write& write) {
        return write.offset + static_cast<int>(write.bytes.size()) <= offset;
    });
    failure = file.readFailed() ? EIO : 0;
    if (failure != 0 || !reaches || offset > text::MAX_FILE_SIZE)
        return false;
    crc = computed;
    return true;
}

bool statesChecksum(const std::string& settingsFile, unsigned int crc) {
    FileUtil file;
    Summary summary;
    return file.openFile(settingsFile.c_str(), "r") && readSummary(file, summary) == SummaryState::Complete &&
           summary.crc == crc;
}

bool writeBack(const std::string& settingsFile, const RedoRecord& record) {
    FileUtil file;
    if (!file.openFile(settingsFile.c_str(), "r+"))
        return false;
    file.deferSync(true);
    for (const RedoRecord::Write& write : record.writes) {
        if (!file.setPos(write.offset) || !file.writeFile(write.bytes.c_str(), true))
            return false;
    }
    return file.setPos(record.crcPosition) && file.writeFile(text::crcLine(record.crc).c_str(), true) &&
           file.syncFile();
}

} // namespace

std::string redoText(const RedoRecord& record) {
    char line[text::LINE_BUFFER];
    std::snprintf(line, sizeof line, "contents %d\nchecksum %d 0x%08x\n", record.contentPosition, record.crcPosition,
                  record.crc);
    std::string text = std::string(FIRST_LINE) + line;
    for (const RedoRecord::Write& write : record.writes) {
        std::snprintf(line, sizeof line, "write %d %d\n", write.offset, static_cast<int>(write.bytes.size()));
        text += line + write.bytes + '\n';
    }
    std::snprintf(line, sizeof line, "end 0x%08x\n", checksumOf(text.data(), text.size()));
    return text + line;
}

bool parseRedo(const std::string& text, RedoRecord& record) {
    record = RedoRecord();
    TextReader reader(text);
    if (!reader.expect(FIRST_LINE) || !reader.expect("contents ") || !reader.number(record.contentPosition) ||
        !reader.expect("\nchecksum ") || !reader.number(record.crcPosition) || !reader.expect(" ") ||
        !reader.checksum(record.crc) || !reader.expect("\n"))
        return false;
    while (reader.expect("write ")) {
        if (!readWrite(reader, record.writes.emplace_back()))
            return false;
    }
    const std::size_t covered = reader.position();
    unsigned int stated = 0;
    return reader.expect("end ") && reader.checksum(stated) && reader.expect("\n") &&
           stated == checksumOf(text.data(), covered) && staysInPlace(record);
}

std::string redoPath(const std::string& settingsFile) {
    return settingsFile + SUFFIX;
}

bool redoIsPending(const std::string& settingsFile) {
    errno = 0;
    return FileUtil::startsWith(redoPath(settingsFile).c_str(), FIRST_LINE) || failureFrom(errno) != 0;
}

bool storeRedo(const std::string& settingsFile, const RedoRecord& record) {
    return FileUtil::writeDurably(redoPath(settingsFile).c_str(), redoText(record));
}

void clearRedo(const std::string& settingsFile) {
    // In place: a file that is emptied needs new blocks for the next record, which makes its sync twice as long.
    FileUtil::overwriteStart(redoPath(settingsFile).c_str(), DONE_LINE);
}

bool checksumAfter(const std::string& settingsFile, const RedoRecord& record, unsigned int& crc) {
    int ignored = 0;
    return checksumAfter(settingsFile, record, crc, ignored);
}

bool repeatWrite(const std::string& settingsFile, RedoRecord& record) {
    return checksumAfter(settingsFile, record, record.crc) && writeBack(settingsFile, record);
}

bool replayRedo(const std::string& settingsFile, unsigned int& crc, int* failure) {
    int ignored = 0;
    int& error = failure != nullptr ? *failure : ignored;
    std::string text;
    RedoRecord record;
    if (!readAll(redoPath(settingsFile), text, error) || !parseRedo(text, record))
        return false;
    const bool verifies = fileVerifies(settingsFile.c_str(), nullptr);
    // It was not begun, or another file has taken the place of the one that it was made for.
    if (verifies && !statesChecksum(settingsFile, record.crc)) {
        clearRedo(settingsFile);
        return false;
    }
    unsigned int after = 0;
    if (!checksumAfter(settingsFile, record, after, error) || after != record.crc)
        return false;
    // Also where all of it is in the file: its writer may have ended before the sync, or the sync may have failed.
    errno = 0;
    if (!writeBack(settingsFile, record)) {
        error = errno != 0 ? errno : EIO;
        TD_WARNING("a store in file [%s] was cut short and could not be ended.\n", settingsFile.c_str());
        return false;
    }
    clearRedo(settingsFile);
    if (verifies)
        return false;
    TD_INFO("a store in file [%s] was cut short and has been ended.\n", settingsFile.c_str());
    crc = record.crc;
    return true;
}

} // namespace td
