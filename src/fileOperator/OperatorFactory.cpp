#include <dataModule/fileOperator/OperatorFactory.h>

#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>

namespace td {

namespace {

struct Served {
    const CategoryLayout& (*layout)();
    AbstractFileOperator* (*create)();
};

template <class Operator>
Served served() {
    return {&Operator::layout, []() -> AbstractFileOperator* { return new Operator; }};
}

/// One line per category, in ascending category order.
const Served SERVED[] = {
    served<FileUserPictureGlobal>(),
    served<FileUserPictureMode>(),
};

} // namespace

AbstractFileOperator* createOperator(_DataCategory_t category) {
    for (const Served& entry : SERVED) {
        if (entry.layout().category == category)
            return entry.create();
    }
    return nullptr;
}

const CategoryLayout* layoutOf(_DataCategory_t category) {
    for (const Served& entry : SERVED) {
        if (entry.layout().category == category)
            return &entry.layout();
    }
    return nullptr;
}

std::vector<const CategoryLayout*> allLayouts() {
    std::vector<const CategoryLayout*> layouts;
    for (const Served& entry : SERVED)
        layouts.push_back(&entry.layout());
    return layouts;
}

} // namespace td
