// The repair of a checksum line, which is done to files of every state.
#include <algorithm>

#include <dataModule/fileOperator/AbstractFileOperator.h>

#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/text/TextLayout.h"
#include "Quiet.h"
#include "ScratchRoot.h"
#include "Targets.h"

namespace td::fuzz {

void runChecksum(std::string_view input) {
    constexpr auto FOLDER = ScratchRoot::Folder::Current;
    constexpr const char* FILE_NAME = "repaired.ini";
    const Quiet quiet;
    const ScratchRoot root;
    root.write(FOLDER, FILE_NAME, input);
    const std::string path = ScratchRoot::path(FOLDER, FILE_NAME);
    const bool repaired = AbstractFileOperator::generateCRC32(path.c_str());
    const std::string after = root.read(FOLDER, FILE_NAME);
    if (!repaired) {
        require(after == input, "a file whose checksum line cannot be repaired stays as it is");
        return;
    }
    require(fileVerifies(path.c_str(), nullptr), "a file verifies after the repair");
    require(after.size() == input.size(), "a repair leaves the file's length");
    const auto first = std::mismatch(after.begin(), after.end(), input.begin()).first - after.begin();
    const auto last = after.rend() - std::mismatch(after.rbegin(), after.rend(), input.rbegin()).first;
    require(last <= first || last - first <= text::CRC_LINE_LENGTH, "a repair changes the checksum line only");
}

} // namespace td::fuzz
