// What is told of a command beside its options: in its help, and on its manual page.
#pragma once

#include <string>
#include <vector>

namespace host {

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

/// The end of the command's help: all of it, and the exit codes.
std::string helpText(const Manual &manual);

} // namespace host
