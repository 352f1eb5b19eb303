// Reads two values of one picture and stores one. usage: client [FOLDER-THAT-STANDS-FOR-"/"]
#include <cstdio>
#include <vector>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/RootPrefix.h>

int main(int argc, char** argv) {
    if (argc > 1) { // on a bench: other files, and no debugging tool to listen to
        if (!td::setRootPrefix(argv[1]))
            return 1;
        td::FileDataSeparateManager::setListening(false);
    }
    td::FileDataSeparateManager* settings = td::FileDataSeparateManager::instance();
    if (!settings->init(td::DS_SCOPE_ALL))
        return 1;
    settings->loadAllData(); // false on a first load by design: it tells whether all had been loaded before

    const std::vector<int> picture{4, 3, 1}; // source HDMI1, picture mode MOVIE, dynamic range SDR_UHD
    std::vector<td::_Argument_t> values{{"Contrast", 0}, {"Sharpness", 0}};
    const bool read = settings->loadData(td::PICTURE_MODE, picture, values);
    std::printf("contrast %d, sharpness %d\n", values[0].value, values[1].value);

    const bool stored = settings->storeData(td::PICTURE_MODE, picture, {{"Contrast", 55}});
    const bool written = settings->waitStored(5000); // milliseconds; without it the write follows in its own time
    settings->stop();
    td::FileDataSeparateManager::release();
    return read && stored && written ? 0 : 1;
}
