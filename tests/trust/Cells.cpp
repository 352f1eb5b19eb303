#include "Cells.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "Options.h"

namespace td::test {

std::ostream& operator<<(std::ostream& stream, const Cell& cell) {
    return stream << cell.operation->name << ", " << cell.shape->name;
}

std::vector<Cell> allCells() {
    std::vector<Cell> all;
    for (const Operation& operation : operations()) {
        for (const Shape& shape : shapes()) {
            if (operation.isOffered(shape))
                all.push_back({&operation, &shape});
        }
    }
    return all;
}

std::vector<Cell> failureCells() {
    std::vector<Cell> all = allCells();
    all.erase(std::remove_if(all.begin(), all.end(),
                             [](const Cell& cell) { return cell.operation->trouble() != Trouble::None; }),
              all.end());
    if (options().isFull)
        return all;
    std::vector<Cell> some;
    std::vector<Cell> offered;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (offered.empty() || !all[i].shape->isLarge())
            offered.push_back(all[i]);
        if (i + 1 < all.size() && all[i + 1].operation == all[i].operation)
            continue;
        some.push_back(offered[some.size() % offered.size()]);
        offered.clear();
    }
    return some;
}

std::string nameOfCell(const testing::TestParamInfo<Cell>& info) {
    std::string name = std::string(info.param.operation->name) + "_" + info.param.shape->name;
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0)
            c = '_';
    }
    return name;
}

} // namespace td::test
