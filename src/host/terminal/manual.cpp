#include "host/terminal/manual.h"

#include "host/terminal/failure.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <fmt/format.h>
#include <sstream>

namespace host {

namespace {

constexpr size_t kNamesWidth = 35;

std::string examplesText(const std::vector<Example> &examples) {
    std::string text = "Examples:\n";
    for (const Example &example : examples)
        text += fmt::format("  {}\n      {}\n", example.line, example.what);
    return text;
}

/// Names too long for their column have their meaning on the next line.
std::string jsonText(const std::vector<JsonFields> &fields) {
    std::string text = "Fields of the --json report:\n";
    for (const JsonFields &row : fields) {
        std::string names = row.names;
        std::istringstream meaning(row.meaning);
        if (names.size() >= kNamesWidth && *row.meaning) {
            text += fmt::format("  {}\n", names);
            names.clear();
        }
        std::string line;
        do {
            std::getline(meaning, line);
            text += line.empty() ? fmt::format("  {}\n", names) : fmt::format("  {:<{}}{}\n", names, kNamesWidth, line);
            names.clear();
        } while (meaning.good());
    }
    return text;
}

/// Paragraphs, as wide as the terminal.
std::string aboutText(std::string text) {
    constexpr size_t kWidth = 118; // where there is none
    for (size_t at = 1; at + 1 < text.size(); ++at) {
        if (text[at] == '\n' && text[at - 1] != '\n' && text[at + 1] != '\n') text[at] = ' ';
    }
    const size_t columns = outputColumns();
    return wrapped(text, columns == 0 ? kWidth : columns, 0);
}

} // namespace

std::string helpText(const Manual &manual) {
    std::string text = aboutText(manual.about);
    if (!text.empty()) text += "\n\n";
    if (!manual.examples.empty()) text += examplesText(manual.examples) + "\n";
    if (!manual.json.empty()) text += jsonText(manual.json) + "\n";
    return text + exitCodeHelp();
}

} // namespace host
