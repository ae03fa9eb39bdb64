// Writes the manual pages and the shell completions of the command, from the declarations of its options.
#include "host/command_line.h"
#include "host/commands.h"
#include "manual/completion.h"
#include "manual/declared_option.h"
#include "manual/man_page.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace {

void write(const std::filesystem::path &path, const std::string &text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

} // namespace

/// make_manual DATE FOLDER: into man/, bash/ and zsh/ below the folder. DATE stands at the foot of each page.
int main(int count, char **words) {
    if (count != 3) {
        fmt::print(stderr, "usage: make_manual DATE FOLDER\n");
        return 2;
    }
    try {
        CLI::App app;
        host::Typed typed;
        host::declareCommandLine(app, typed);
        std::filesystem::path folder = words[2];
        for (const CLI::App *command : manual::commandsFrom(app))
            write(folder / "man" / (manual::pageName(*command) + ".1"), manual::manPage(typed, *command, words[1]));
        write(folder / "bash" / app.get_name(), manual::bashCompletion(app));
        write(folder / "zsh" / ("_" + app.get_name()), manual::zshCompletion(app));
        return 0;
    } catch (const std::exception &error) {
        fmt::print(stderr, "make_manual: {}\n", error.what());
        return 1;
    }
}
