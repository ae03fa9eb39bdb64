// Text in a manual page's language.
#pragma once

#include <string>
#include <string_view>

namespace manual {

/// One line of text, in which nothing is a request or an escape.
std::string roff(std::string_view line);

std::string bold(std::string_view line);
std::string italic(std::string_view line);

/// Lines that are one paragraph.
std::string filled(std::string_view text);

/// Paragraphs with an empty line between them. One that has a line with a blank before it keeps its lines.
std::string paragraphs(std::string_view text);

} // namespace manual
