#include "manual/make_manual.h"

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

namespace manual {

int makeManual(host::CommandLine &line, int count, char **words) {
    if (count != 3) {
        fmt::print(stderr, "usage: {} DATE FOLDER\n", words[0]);
        return 2;
    }
    try {
        const host::Command root = line.root();
        std::filesystem::path folder = words[2];
        for (const host::Command &command : commandsFrom(root))
            write(folder / "man" / (pageName(command) + ".1"), manPage(command, words[1]));
        write(folder / "bash" / root.name(), bashCompletion(root));
        write(folder / "zsh" / ("_" + root.name()), zshCompletion(root));
        return 0;
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}: {}\n", words[0], error.what());
        return 1;
    }
}

} // namespace manual
