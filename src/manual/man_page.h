// Manual pages, in the language of the man macros.
#pragma once

#include <string>

namespace CLI {
class App;
}
namespace host {
struct Typed;
}

namespace manual {

/// "vectorix-print".
std::string pageName(const CLI::App &command);

/// The page of one command. date stands at its foot.
std::string manPage(const host::Typed &typed, const CLI::App &command, const std::string &date);

} // namespace manual
