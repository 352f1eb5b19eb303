// Redo records: read, written again, and replayed over a file that a store left half done. The first byte:
//   bit 0    the rest describes writes (offset from the first section (2), length (1), bytes), of which a right record
//            is made; they are cut off in the middle. Otherwise it is the record itself.
//   bit 1    a record that is given is ended with the right checksum of its own
//   others   where the writes are cut off
#include <algorithm>
#include <cstdio>

#include <dmctl/inspect/FileInspection.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/fileOperator/FileUserSoundMode.h>

#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/text/TextLayout.h"
#include "Quiet.h"
#include "ScratchRoot.h"
#include "SettingsFileInput.h"
#include "Targets.h"

namespace td::fuzz {

namespace {

constexpr auto FOLDER = ScratchRoot::Folder::Current;

const CategoryLayout& layout() {
    return FileUserSoundMode::layout();
}

std::string withEnd(std::string text) {
    CRC32Util* const util = CRC32Util::instance();
    util->init_crc_table();
    std::string bytes = text;
    const unsigned int crc = util->crc32(CRC32Util::INITIAL, reinterpret_cast<unsigned char*>(bytes.data()),
                                         static_cast<unsigned int>(bytes.size()));
    char end[text::LINE_BUFFER];
    std::snprintf(end, sizeof end, "end 0x%08x\n", crc);
    return text + end;
}

void checkText(const std::string& text) {
    RedoRecord record;
    if (!parseRedo(text, record))
        return;
    const std::string written = redoText(record);
    RedoRecord again;
    require(parseRedo(written, again), "a record that was read can be written and read again");
    require(redoText(again) == written, "it is the same record then");
}

/// The writes that the input describes, within the file's contents and without zero bytes.
std::vector<RedoRecord::Write> writesOf(std::string_view input, int contentPosition, int size) {
    std::vector<RedoRecord::Write> writes;
    while (input.size() > 3) {
        const auto byte = [&](std::size_t i) { return static_cast<int>(static_cast<unsigned char>(input[i])); };
        const int offset = contentPosition + (byte(0) * 256 + byte(1)) % (size - contentPosition);
        const std::size_t length =
            std::min({static_cast<std::size_t>(byte(2)), input.size() - 3, static_cast<std::size_t>(size - offset)});
        std::string bytes(input.substr(3, length));
        std::replace(bytes.begin(), bytes.end(), '\0', '0');
        writes.push_back({offset, bytes});
        input.remove_prefix(3 + length);
    }
    return writes;
}

std::string applied(std::string file, const std::vector<RedoRecord::Write>& writes) {
    for (const RedoRecord::Write& write : writes)
        file.replace(static_cast<std::size_t>(write.offset), write.bytes.size(), write.bytes);
    return file;
}

void checkReplay(const ScratchRoot& root, const std::string& before) {
    const std::string path = ScratchRoot::path(FOLDER, layout().file);
    unsigned int crc = 0;
    const bool replayed = replayRedo(path, crc);
    const std::string after = root.read(FOLDER, layout().file);
    require(after.size() == before.size(), "a replay leaves the file's length");
    if (!replayed)
        require(after == before, "where nothing is replayed the file stays as it is");
    else
        require(fileVerifies(path.c_str(), nullptr), "after a replay the file verifies");
    RedoRecord left;
    require(!replayed || !parseRedo(root.read(FOLDER, std::string(layout().file) + ".redo"), left),
            "a replayed record is done with");
}

void replayGiven(const ScratchRoot& root, const std::string& text) {
    const std::string& file = defaultFile(layout());
    // Its checksum line is wrong, so that there is something to replay.
    std::string damaged = file;
    damaged[file.find("0x") + 2] = damaged[file.find("0x") + 2] == '0' ? '1' : '0';
    root.write(FOLDER, layout().file, damaged);
    root.write(FOLDER, std::string(layout().file) + ".redo", text);
    checkReplay(root, damaged);
}

void replayMade(const ScratchRoot& root, unsigned char steering, std::string_view input) {
    const std::string& file = defaultFile(layout());
    const FileInspection inspection = inspectFile(layout(), file);
    RedoRecord record;
    record.contentPosition = inspection.contentOffset;
    record.crcPosition = inspection.checksumOffset;
    record.writes = writesOf(input, inspection.contentOffset, static_cast<int>(file.size()));
    root.write(FOLDER, layout().file, file);
    const std::string path = ScratchRoot::path(FOLDER, layout().file);
    require(checksumAfter(path, record, record.crc), "writes within the file have a checksum");
    std::string whole = applied(file, record.writes);
    whole.replace(static_cast<std::size_t>(inspection.checksumOffset), text::CRC_LINE_LENGTH,
                  text::crcLine(record.crc));
    const std::string text = redoText(record);
    checkText(text);
    RedoRecord read;
    require(parseRedo(text, read), "a record of writes within the contents can be read");

    // The last of the writes is cut off, or all are there and the checksum line is not.
    std::vector<RedoRecord::Write> done = record.writes;
    if (!done.empty() && steering % 64 != 63)
        done.back().bytes.resize(done.back().bytes.size() * (steering % 64) / 63);
    const std::string cut = applied(file, done);
    root.write(FOLDER, layout().file, cut);
    root.write(FOLDER, std::string(layout().file) + ".redo", text);
    const bool verifies = fileVerifies(path.c_str(), nullptr);
    checkReplay(root, cut);
    require(root.read(FOLDER, layout().file) == (verifies ? cut : whole), "a store that was cut off is ended");
}

} // namespace

void runRedoRecord(std::string_view input) {
    if (input.empty())
        return;
    const auto steering = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    const Quiet quiet;
    const ScratchRoot root;
    if ((steering & 1) != 0)
        return replayMade(root, steering >> 1, input);
    const std::string text = (steering & 2) != 0 ? withEnd(std::string(input)) : std::string(input);
    checkText(text);
    replayGiven(root, text);
}

} // namespace td::fuzz
