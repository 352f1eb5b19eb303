// An operator of a client's own, straight on AbstractFileOperator: it reads and writes its one section itself, and gets
// from the library what a file's life is made of. Prints what it finds; the folder to work in is the argument.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/Event.h>
#include <dataModule/common/FileUtil.h>
#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/platform/RootPrefix.h>

namespace {

constexpr const char* HEADER = "[Volume]\n";

class Volume : public td::AbstractFileOperator {
public:
    Volume() : AbstractFileOperator("volume.ini", "v0.1") {
        declare(td::SOUND_GLOBAL, sizeof m_value);
        setParent(td::FileDataSeparateManager::instance());
    }
    int value() const { return m_value; }

    bool storeData(const std::vector<int>& dims, const std::vector<td::_Argument_t>& args) override {
        enterCriticalSection();
        m_value = args.front().value;
        leaveCriticalSection();
        return td::Event(this, dims).handle();
    }
    bool syncSectionToFile(td::Event* event) override {
        return openForWriting() && searchSectionId(event->dimensions()) && openedFile().writeFile(line().c_str(), true);
    }
    bool buildComments() override {
        commentText() = "# How loud.\n";
        return openedFile().writeFile(commentText().c_str(), true);
    }
    bool buildContents(bool defaults) override {
        m_value = defaults ? 20 : m_value;
        return openedFile().writeFile((HEADER + line()).c_str(), true);
    }
    bool loadContents() override {
        char text[64];
        return openedFile().readLine(text, sizeof text) && text == std::string(HEADER) &&
               openedFile().readLine(text, sizeof text) && std::sscanf(text, "volume = %d", &m_value) == 1;
    }
    bool loadContents_OTA() override { return loadContents(); }
    using AbstractFileOperator::searchSectionId;
    bool searchSectionId(const std::vector<int>&) override {
        return isLoaded() && openedFile().setPos(contentPosition() + static_cast<int>(std::string(HEADER).size()));
    }
    bool loadDataForGroup(const std::vector<int>&, const std::vector<int>&, td::GroupArray&) override { return true; }
    bool storeDataForGroup(const std::vector<int>&, const std::vector<int>&, const std::vector<int>&,
                           td::GroupArray&) override {
        return true;
    }
    bool loadDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                     td::SelfDefinedGroupArray&) override {
        return true;
    }
    bool storeDataForSelfDefinedGroup(const std::vector<int>&, const std::vector<int>&,
                                      td::SelfDefinedGroupArray&) override {
        return true;
    }

private:
    std::string line() const {
        char text[64];
        std::snprintf(text, sizeof text, "volume = %04d\n", m_value);
        return text;
    }

    int m_value = 0;
};

void expect(bool holds, const char* what) {
    if (holds)
        return;
    std::printf("%s failed\n", what);
    std::exit(1);
}

} // namespace

int main(int, char** arguments) {
    const std::filesystem::path root = arguments[1];
    std::filesystem::create_directories(root / "var/local/dataModule");
    td::setRootPrefix(root.c_str());
    td::CRC32Util::instance()->init_crc_table(); // as init() of the manager does
    {
        Volume volume;
        expect(volume.initFile(true) && volume.loadFile(), "create");
        expect(volume.storeData({}, {{"volume", 33}}), "store");
        expect(volume.backupFile(false), "backup");
        expect(volume.storeData({}, {{"volume", 34}}), "second store");
    }
    {
        Volume volume;
        expect(volume.loadFile() && volume.value() == 34, "load");
    }
    // A line that somebody cut with an editor.
    std::ofstream(root / "var/local/dataModule/current/volume.ini", std::ios::app) << "volume";
    Volume volume;
    expect(volume.loadFile() && volume.value() == 33, "recovery");
    std::printf("%d of %d bytes\n", volume.value(), volume.getDataSize());
}
