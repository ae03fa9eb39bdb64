// Lists for people.
#pragma once

#include <string>
#include <vector>

namespace host {

/// Columns on standard output, as wide as they need to be; the first row is the headings. What is empty shows as "-".
void printTable(std::vector<std::vector<std::string>> rows);

} // namespace host
