// Text for manual pages. Their formatter would take some characters for requests, and set hyphens and quotes as typographic
// ones, so that a command copied from the page would not run; here they are escaped.
#pragma once

#include <string>
#include <string_view>

namespace manual {

/// A line of UTF-8 text, escaped so that it is printed as it is. bold() and italic() escape as well.
std::string roff(std::string_view line);

std::string bold(std::string_view line);
std::string italic(std::string_view line);

/// The lines of one paragraph, escaped, without the blanks before them; the formatter fills them.
std::string filled(std::string_view text);

/// Paragraphs that are parted by empty lines. One with an indented line (an example) keeps its line breaks.
std::string paragraphs(std::string_view text);

} // namespace manual
