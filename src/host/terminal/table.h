// Lists for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Columns on standard output, as wide as they need to be; the first row is the headings. What is empty shows as "-".
/// The words of the column with that heading, if any, are coloured.
void printTable(std::vector<std::vector<std::string>> rows, std::string_view colouredHeading = {});

} // namespace host
