// A client of the installed library; prints the name of a category.
#include <cstdio>
#include <cstring>

#include <dataModule/FileDataSeparateManager.h>

static_assert(__cplusplus < 202002L, "clients need no more than C++17");

int main() {
    td::FileDataSeparateManager* manager = td::FileDataSeparateManager::instance();
    const char* name = manager->getCategory_Str(td::PICTURE_MODE);
    std::printf("%s\n", name);
    const bool right = std::strcmp(name, "PICTURE_MODE") == 0;
    td::FileDataSeparateManager::release();
    return right ? 0 : 1;
}
