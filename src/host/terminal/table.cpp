#include "host/terminal/table.h"

#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

void printTable(std::vector<std::vector<std::string>> rows, std::string_view colouredHeading) {
    std::vector<size_t> widths(rows.front().size());
    for (auto &row : rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            if (row[i].empty()) row[i].push_back('-');
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    for (const auto &row : rows) {
        for (size_t i = 0; i + 1 < row.size(); ++i)
            printOut("{}{:{}}", rows.front()[i] == colouredHeading ? coloured(row[i]) : row[i], "",
                     widths[i] - widthOf(row[i]) + 2);
        printOut("{}\n", row.back());
    }
}

} // namespace host
