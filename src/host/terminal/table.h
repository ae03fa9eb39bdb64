// Lists for people, such as those of ports and profiles. Widths are counted in characters, as names from devices need not
// be ASCII.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Prints rows of one length on standard output, each column as wide as its longest entry. The first row, which must be
/// there, holds the headings. Empty entries show as "-"; those of the column with colouredHeading, if any, are coloured().
void printTable(std::vector<std::vector<std::string>> rows, std::string_view colouredHeading = {});

} // namespace host
