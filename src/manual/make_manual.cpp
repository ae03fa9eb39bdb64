// Writes the manual pages and the shell completions of the command, from the declarations of its options.
#include "host/commands/command_line.h"
#include "manual/completion.h"
#include "manual/declared_option.h"
#include "manual/man_page.h"

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
        const std::unique_ptr<host::CommandLine> line = host::declaredCommandLine();
        const host::Command root = line->root();
        std::filesystem::path folder = words[2];
        for (const host::Command &command : manual::commandsFrom(root))
            write(folder / "man" / (manual::pageName(command) + ".1"), manual::manPage(command, words[1]));
        write(folder / "bash" / root.name(), manual::bashCompletion(root));
        write(folder / "zsh" / ("_" + root.name()), manual::zshCompletion(root));
        return 0;
    } catch (const std::exception &error) {
        fmt::print(stderr, "make_manual: {}\n", error.what());
        return 1;
    }
}
