#include "host/print/pages.h"

#include "host/convert/conversion.h"

#include <fmt/format.h>
#include <sstream>

namespace host {

namespace {

std::optional<int> typedPage(const std::string &text) {
    const std::optional<int64_t> number = typedWholeNumber(text);
    return number && *number >= 1 && *number <= kMostPages ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

std::optional<PageRange> typedRange(const std::string &text) {
    const size_t dash = text.find('-', 1);
    const std::optional<int> first = typedPage(text.substr(0, dash));
    if (!first) return std::nullopt;
    if (dash == std::string::npos) return PageRange{*first, first};
    if (dash + 1 == text.size()) return PageRange{*first, std::nullopt};
    const std::optional<int> last = typedPage(text.substr(dash + 1));
    return last && *last >= *first ? std::optional(PageRange{*first, last}) : std::nullopt;
}

/// What stands between the commas; one that is empty, too.
std::vector<std::string> wordsOf(const std::string &text) {
    std::istringstream list(text + ',');
    std::vector<std::string> words;
    for (std::string word; std::getline(list, word, ',');)
        words.push_back(word);
    return words;
}

std::string faultOf(const std::string &text) {
    for (const std::string &word : wordsOf(text)) {
        if (typedRange(word)) continue;
        return fmt::format("{} is not a whole number from 1 to {}, nor a range of them upwards, such as 2-4 or 3-", word,
                           kMostPages);
    }
    return {};
}

} // namespace

void addPages(const Command &command, std::string &pages) {
    command.option("--page", pages, "Pages of a PDF document, such as 2 or 1,3-5 or 3- (each), on a sheet of its own each")
        .check(faultOf)
        .valueName("PAGES")
        .group(kDrawingsGroup);
}

std::vector<PageRange> typedPages(const std::string &text) {
    std::vector<PageRange> ranges;
    for (const std::string &word : wordsOf(text))
        ranges.push_back(typedRange(word).value());
    return ranges;
}

} // namespace host
