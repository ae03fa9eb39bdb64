// Pages of a PDF document as they are typed for a print, of which each is a sheet of its own: "2", "1,3-5", "3-". How many
// pages a document has, only its reader knows; a range to its end is left open until then.
#pragma once

#include "host/terminal/command.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

inline constexpr const char *kEachPage = "1-";

struct PageRange {
    int first;
    std::optional<int> last; ///< none: to the document's end
};

/// Adds --page.
void addPages(const Command &command, std::string &pages);

/// In the order in which they were typed. For a text that the option takes.
std::vector<PageRange> typedPages(const std::string &text);

} // namespace host
