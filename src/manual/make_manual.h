// Writes the manual pages and the shell completions of a program, from the declarations of its options. Each program has a
// generator of its own, which is this and its declarations: so none needs what another is built with.
#pragma once

#include "host/terminal/command.h"

namespace manual {

/// main() of a generator, which is called as GENERATOR DATE FOLDER: it writes into man/, bash/ and zsh/ below the folder.
/// DATE stands at the foot of each page.
int makeManual(host::CommandLine &line, int count, char **words);

} // namespace manual
