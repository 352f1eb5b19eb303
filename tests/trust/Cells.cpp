#include "Cells.h"

#include <cctype>

namespace td::test {

std::ostream& operator<<(std::ostream& stream, const Cell& cell) {
    return stream << cell.operation->name << ", " << cell.shape->name;
}

std::vector<Cell> allCells() {
    std::vector<Cell> all;
    for (const Operation& operation : operations()) {
        for (const Shape& shape : shapes()) {
            if (operation.isOffered(shape.layout()))
                all.push_back({&operation, &shape});
        }
    }
    return all;
}

std::vector<Cell> failureCells() {
    std::vector<Cell> some;
    for (const Cell& cell : allCells()) {
        if (some.empty() || some.back().operation != cell.operation)
            some.push_back(cell);
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

Loss allowedDuring(const Operation&) {
    return Loss::LastBackup;
}

} // namespace td::test
