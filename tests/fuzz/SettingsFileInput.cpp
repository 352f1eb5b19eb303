#include "SettingsFileInput.h"

#include <algorithm>
#include <map>
#include <vector>

#include <dmctl/inspect/FileInspection.h>

#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"

namespace td::fuzz {

namespace {

constexpr int SMALL = 8192;
constexpr const char* OTHER_VERSION = "v0.0";

const CategoryLayout* layoutNumber(unsigned char number) {
    static const std::vector<const CategoryLayout*> layouts = allLayouts();
    return layouts[number % layouts.size()];
}

std::string framed(const CategoryLayout& layout, std::string_view sections, const char* version) {
    return withChecksumMended(layout, text::commentBlock(layout) +
                                          text::summary("TVTYPE01", version, 0, true).append(sections));
}

std::string patched(std::string file, std::string_view edits) {
    while (edits.size() > 3) {
        const auto byte = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(edits[i])); };
        const std::size_t offset = (byte(0) << 8 | byte(1)) % (file.size() + 1);
        const std::size_t length = std::min(byte(2) % 64, edits.size() - 3);
        // An edit of no bytes cuts the file, one behind its end makes it longer.
        if (length == 0)
            file.resize(offset);
        else
            file.replace(offset, std::min(length, file.size() - offset), edits.substr(3, length));
        edits.remove_prefix(3 + length);
    }
    return file;
}

std::string ofOtherVersion(const CategoryLayout& layout, std::string file) {
    const std::string written = text::summary("", layout.version, 0, false);
    const std::string other = text::summary("", OTHER_VERSION, 0, false);
    const auto versionLine = [](const std::string& lines) {
        const std::size_t start = lines.find('\n') + 1;
        return lines.substr(start, lines.find('\n', start) + 1 - start);
    };
    const std::size_t found = file.find(versionLine(written));
    if (found != std::string::npos)
        file.replace(found, versionLine(written).size(), versionLine(other));
    return file;
}

} // namespace

bool isSmall(const CategoryLayout& layout) {
    return layout.contentLength() <= SMALL;
}

std::string withChecksumMended(const CategoryLayout& layout, std::string bytes) {
    const FileInspection inspection = inspectFile(layout, bytes);
    if (inspection.checksumOffset < 0 || inspection.contentOffset - inspection.checksumOffset != text::CRC_LINE_LENGTH)
        return bytes;
    return bytes.replace(static_cast<std::size_t>(inspection.checksumOffset), text::CRC_LINE_LENGTH,
                         text::crcLine(inspection.computedChecksum));
}

const std::string& defaultFile(const CategoryLayout& layout) {
    static std::map<const CategoryLayout*, std::string> files;
    std::string& file = files[&layout];
    if (file.empty())
        file = wholeFile(layout, "TVTYPE01", defaultTable(layout));
    return file;
}

SettingsFileInput::SettingsFileInput(std::string_view input) {
    if (input.size() < 2)
        return;
    layout = layoutNumber(static_cast<unsigned char>(input[0]));
    const auto steering = static_cast<unsigned char>(input[1]);
    input.remove_prefix(2);
    const bool isOld = (steering & OLD) != 0;
    if ((steering & PATCHED) != 0 && isSmall(*layout)) {
        file = patched(isOld ? ofOtherVersion(*layout, defaultFile(*layout)) : defaultFile(*layout), input);
    } else if ((steering & FRAMED) != 0) {
        file = framed(*layout, input, isOld ? OTHER_VERSION : layout->version);
    } else {
        file = input;
    }
    if ((steering & MENDED) != 0)
        file = withChecksumMended(*layout, file);
    hasBackup = (steering & BACKED_UP) != 0 && isSmall(*layout);
    isDetailed = (steering & DETAILED) != 0;
    isAtFactory = (steering & AT_FACTORY) != 0;
}

} // namespace td::fuzz
