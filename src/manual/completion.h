// Completions of what is typed in a shell.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace manual {

std::string bashCompletion(const CLI::App &app);
std::string zshCompletion(const CLI::App &app);

} // namespace manual
