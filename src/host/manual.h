// What is told of a command beside its options: in its help, and on its manual page.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace host {

struct Typed;

struct Example {
    const char *line; ///< as it is typed
    const char *what; ///< what it does, as a sentence
};

/// Fields of the --json report that are explained together.
struct JsonFields {
    const char *names;
    const char *meaning; ///< may have several lines; may be empty
};

struct Manual {
    std::string about; ///< paragraphs with an empty line between them; may be empty
    std::vector<Example> examples;
    std::vector<JsonFields> json; ///< empty for a command without a report
};

/// Tells it at the end of the command's help, before the exit codes, and keeps it.
void explain(Typed &typed, CLI::App &command, Manual manual);

/// What was kept. Of a command that nothing was kept of: what its help ends with.
Manual manualOf(const Typed &typed, const CLI::App &command);

} // namespace host
