#include "fileOperator/file/SummaryReader.h"

#include <cstring>

#include <dataModule/common/CRC32Util.h>

namespace td {

namespace {

/// Reads the next summary line. Complete when it is whole and contains `word`.
SummaryState readLineWith(FileUtil& file, const char* word, SummaryState bad, Summary& summary, char* line) {
    if (!file.readLine(line, text::LINE_BUFFER))
        return file.reachEnd() ? SummaryState::EndOfFile : SummaryState::NotReadable;
    const std::size_t length = std::strlen(line);
    if (length == 0 || line[length - 1] != '\n' || std::strstr(line, word) == nullptr) {
        std::memcpy(summary.badLine, line, length + 1);
        return bad;
    }
    summary.length += static_cast<int>(length);
    return SummaryState::Complete;
}

SummaryState readHeader(FileUtil& file, Summary& summary, char* line) {
    while (file.readLine(line, text::LINE_BUFFER)) {
        if (text::isComment(line)) {
            summary.comment += line;
            continue;
        }
        if (std::strcmp(line, text::SUMMARY_HEADER) == 0) {
            summary.length = static_cast<int>(std::strlen(line));
            // A zero byte ends a comment line before its end, and all that follows would be looked for too early.
            long position = 0;
            if (!file.getCurrentPos(position))
                return SummaryState::NotReadable;
            return position == summary.contentPosition() ? SummaryState::Complete : SummaryState::BadHeader;
        }
        std::memcpy(summary.badLine, line, std::strlen(line) + 1);
        return SummaryState::BadHeader;
    }
    return file.reachEnd() ? SummaryState::BadHeader : SummaryState::NotReadable;
}

} // namespace

SummaryState readSummary(FileUtil& file, Summary& summary) {
    summary = Summary();
    if (!file.isOpend() || !file.resetStartPos())
        return SummaryState::NotReadable;
    char line[text::LINE_BUFFER];
    SummaryState state = readHeader(file, summary, line);
    if (state != SummaryState::Complete)
        return state;

    state = readLineWith(file, "SN", SummaryState::BadTvType, summary, line);
    if (state != SummaryState::Complete)
        return state;
    text::parseSummaryText(line, text::TV_TYPE_WIDTH, summary.tvType);
    summary.hasTvType = true;

    state = readLineWith(file, "Version", SummaryState::BadVersion, summary, line);
    if (state != SummaryState::Complete)
        return state;
    text::parseSummaryText(line, text::VERSION_WIDTH, summary.version);
    summary.hasVersion = true;

    summary.crcPosition = summary.contentPosition();
    state = readLineWith(file, "CRC", SummaryState::BadCrc, summary, line);
    if (state != SummaryState::Complete)
        return state;
    summary.crcLineLength = summary.contentPosition() - summary.crcPosition;
    const bool hasCrc = text::parseCrc(line, summary.crc);
    if (!hasCrc || summary.crcLineLength != text::CRC_LINE_LENGTH)
        std::memcpy(summary.badLine, line, std::strlen(line) + 1);
    return hasCrc ? SummaryState::Complete : SummaryState::BadCrc;
}

const char* badPart(SummaryState state) {
    switch (state) {
    case SummaryState::BadHeader:
        return "subject";
    case SummaryState::BadTvType:
        return "SN Field";
    case SummaryState::BadVersion:
        return "VER Field";
    case SummaryState::BadCrc:
        return "CRC Field";
    case SummaryState::NotReadable:
    case SummaryState::EndOfFile:
    case SummaryState::Complete:
        break;
    }
    return nullptr;
}

bool contentChecksum(const char* path, int offset, unsigned int& crc) {
    unsigned int computed = 0;
    if (!CRC32Util::instance()->calc_file_crc(path, offset, computed))
        return false;
    if (computed == CRC32Util::INITIAL && FileUtil::getFileSize(path) != offset)
        return false;
    crc = computed;
    return true;
}

bool hasReadableSize(const char* path) {
    const int size = FileUtil::getFileSize(path);
    return size >= 0 && size <= text::MAX_FILE_SIZE; // one beyond an int reads as -1
}

bool fileVerifies(const char* path, const char* version) {
    FileUtil file;
    Summary summary;
    if (!hasReadableSize(path) || !file.openFile(path, "r") || readSummary(file, summary) != SummaryState::Complete)
        return false;
    if (version != nullptr && std::strcmp(summary.version, version) != 0)
        return false;
    unsigned int crc = 0;
    return contentChecksum(path, summary.contentPosition(), crc) && crc == summary.crc;
}

} // namespace td
