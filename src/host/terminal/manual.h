// What is told of a command beside its options: paragraphs, examples, and the fields of its --json report. Kept as data, as
// it is set twice: in plain text at the end of --help (helpText), and by make_manual as a manual page.
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

/// The text that --help prints behind the options: all of the manual, and the exit codes. Its paragraphs are as wide as the
/// terminal, its examples and fields as they are.
std::string helpText(const Manual &manual);

} // namespace host
