// The commands that README, help and manual pages show. All are parsed. Those that need no device are run as well, in a
// folder where the files they name are; a serial port is a pseudo-terminal there, and a print to it is a dry run.
#include "host/commands/command_line.h"
#include "host/commands/commands.h"
#include "host/host_fixture.h"
#include "manual/declared_option.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

constexpr std::string_view kPort = "/dev/ttyUSB0";

/// The lines of README that begin with the command, as they are typed once it is installed.
std::vector<std::string> readmeLines() {
    constexpr std::string_view kIndent = "    ", kBuilt = "build/release/bin/";
    std::vector<std::string> lines;
    std::ifstream readme(README);
    for (std::string line; std::getline(readme, line);) {
        if (!line.starts_with(kIndent)) continue;
        line.erase(0, kIndent.size());
        if (line.starts_with(kBuilt)) line.erase(0, kBuilt.size());
        if (line.starts_with("vectorix ")) lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> declaredLines() {
    std::unique_ptr<host::CommandLine> commands = host::declaredCommandLine();
    std::vector<std::string> lines;
    for (const host::Command &command : manual::commandsFrom(commands->root())) {
        for (const host::Example &example : command.manual().examples)
            lines.push_back(example.line);
    }
    return lines;
}

/// The words that a shell makes of a line.
std::vector<std::string> wordsOf(const std::string &line) {
    Result result =
        Running({"-c", "for word in " + line.substr(0, line.find(" < ")) + "; do printf '%s\\n' \"$word\"; done"}, false, "",
                "/bin/sh")
            .wait();
    std::vector<std::string> words;
    std::istringstream lines(result.out);
    for (std::string word; std::getline(lines, word);)
        words.push_back(word);
    return words;
}

class ExampleTest : public HostTest {
protected:
    ExampleTest() {
        std::filesystem::copy_file(EXAMPLE, path("drawing.plt"));
        EXPECT_EQ(run({"job", "write", path("roll.plist")}).code, 0);
    }

    /// Ends as soon as it plays.
    static Result interrupted(const std::string &line) {
        Running playing({"-c", line}, false, "", "/bin/sh");
        EXPECT_NE(playing.line(), "");
        playing.signal(SIGINT);
        return playing.wait();
    }

    /// profiles: the folder that holds them. A print to a port, or by a profile that names one, is a dry run.
    std::string lineHere(std::string line, const std::string &port, const std::string &profiles) const {
        constexpr std::string_view kPrint = "vectorix print";
        bool isForPort = line.find(kPort) != std::string::npos || line.find(" -p ") != std::string::npos;
        if (line.starts_with(kPrint) && isForPort && line.find("--dry-run") == std::string::npos)
            line.insert(kPrint.size(), " --dry-run");
        if (size_t at = line.find(kPort); at != std::string::npos) line.replace(at, kPort.size(), port);
        if (size_t at = line.find("/tmp/"); at != std::string::npos) line.replace(at, 5, folder_ + "/");
        return "cd '" + folder_ + "' && XDG_CONFIG_HOME='" + path(profiles) + "' exec '" VECTORIX "'" +
               line.substr(std::string_view("vectorix").size());
    }
};

TEST_F(ExampleTest, AreUnderstoodAndDoWhatIsSaid) {
    /// Only parsed: they depend on what is connected, or wait for another program or a plotter; tests of their own play
    /// that part.
    constexpr std::string_view kNotRun[] = {
        "vectorix ports", "vectorix plotters", "vectorix limits", "vectorix send", "vectorix doctor", "--usb", "--once"};
    const std::vector<std::string> declared = declaredLines(), readme = readmeLines();
    EXPECT_GE(readme.size(), 8U) << "is README read?";
    std::vector<std::string> lines = declared;
    lines.insert(lines.end(), readme.begin(), readme.end());
    FarEnd plotter;
    size_t runs = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string &line = lines[i];
        SCOPED_TRACE(line);
        std::vector<std::string> words = wordsOf(line);
        std::vector<const char *> arguments(words.size());
        std::transform(words.begin(), words.end(), arguments.begin(), [](const std::string &word) { return word.c_str(); });
        std::unique_ptr<host::CommandLine> commands = host::declaredCommandLine();
        EXPECT_EQ(commands->parse(static_cast<int>(arguments.size()), arguments.data()), host::ExitCode::Done);
        EXPECT_TRUE(commands->run());

        auto holds = [&](std::string_view part) { return line.find(part) != std::string::npos; };
        if (std::any_of(std::begin(kNotRun), std::end(kNotRun), holds)) continue;
        std::string here = lineHere(line, plotter.port(), i < declared.size() ? "manual" : "readme");
        Result result =
            line.starts_with("vectorix simulate") ? interrupted(here) : Running({"-c", here}, false, "", "/bin/sh").wait();
        EXPECT_EQ(result.code, 0) << result.out << result.err;
        ++runs;
    }
    EXPECT_GE(runs, 15U);
    for (const char *made : {"drawing.out", "drawing.svg", "drawing.png", "drawing.pdf"})
        EXPECT_TRUE(std::filesystem::exists(path(made))) << made;
}

} // namespace
