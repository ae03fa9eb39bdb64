// The commands that README, help and manual pages show. All are parsed. Those that need no device are run as well, in a
// folder where the files they name are; a serial port is a pseudo-terminal there, and a print to it is a dry run.
#include "host/commands/command_line.h"
#include "host/commands/commands.h"
#include "host/host_fixture.h"
#include "manual/declared_option.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>

namespace {

class ExampleTest : public HostTest {
protected:
    /// Folders of their own, for the profiles of one are not those of the other.
    std::vector<std::string> lines_[2];

    ExampleTest() {
        // Of README, as they are typed once it is installed.
        std::istringstream readme(shell("sed -nE 's,^    (build/release/bin/)?(vectorix ),\\2,p' " README).wait().out);
        for (std::string line; std::getline(readme, line);)
            lines_[0].push_back(line);
        std::unique_ptr<host::CommandLine> commands = host::declaredCommandLine();
        for (const host::Command &command : manual::commandsFrom(commands->root())) {
            for (const host::Example &example : command.manual().examples)
                lines_[1].push_back(example.line);
        }
    }

    /// A shell in a folder with the files, in which "vectorix" is the function.
    Running inFolder(const std::string &function, const std::string &line) {
        return shell("cd '" + folder_ + "'; vectorix() { " + function + "; }; " + line);
    }

    void expectUnderstood(const std::string &line) {
        std::istringstream words(inFolder("printf 'vectorix\\n'; printf '%s\\n' \"$@\"", line).wait().out);
        Words kept;
        for (std::string word; std::getline(words, word);)
            kept.push_back(word);
        std::vector<const char *> arguments;
        for (const std::string &word : kept)
            arguments.push_back(word.c_str());
        std::unique_ptr<host::CommandLine> commands = host::declaredCommandLine();
        EXPECT_EQ(commands->parse(static_cast<int>(arguments.size()), arguments.data()), host::ExitCode::Done);
        EXPECT_TRUE(commands->run());
    }
};

TEST_F(ExampleTest, AreUnderstoodAndDoWhatIsSaid) {
    /// Only parsed: they depend on what is connected, or wait for another program or a plotter; tests of their own play
    /// that part.
    constexpr std::string_view kNotRun[] = {
        "vectorix ports", "vectorix plotters", "vectorix limits", "vectorix send", "vectorix doctor", "--usb", "--once"};
    constexpr std::string_view kPort = "/dev/ttyUSB0", kTemporary = "/tmp/";
    const auto examples = std::filesystem::path(EXAMPLE).parent_path();
    for (auto [from, to] :
         {std::pair("moonrise.plt", "drawing.plt"), {"lighthouse.svg", "drawing.svg"}, {"tides.pdf", "page.pdf"}})
        std::filesystem::copy_file(examples / from, path(to));
    ASSERT_EQ(run({"job", "write", path("roll.plist")}).code, 0);
    EXPECT_GE(lines_[0].size(), 8U) << "is README read?";
    const FarEnd plotter;
    std::vector<Running> printing;
    size_t runs = 0;
    for (const auto &lines : lines_) {
        setenv("XDG_CONFIG_HOME", path(std::to_string(lines.size())).c_str(), 1);
        for (std::string line : lines) {
            SCOPED_TRACE(line);
            expectUnderstood(line);
            auto holds = [&](std::string_view part) { return line.find(part) != std::string::npos; };
            if (std::any_of(std::begin(kNotRun), std::end(kNotRun), holds)) continue;
            ++runs;
            if (holds("vectorix print ") && (holds(kPort) || holds(" -p ")))
                line.insert(line.find(" print") + 6, " --dry-run");
            if (size_t at = line.find(kPort); at != std::string::npos) line.replace(at, kPort.size(), plotter.port());
            if (size_t at = line.find(kTemporary); at != std::string::npos)
                line.replace(at, kTemporary.size(), folder_ + "/");
            Running example = inFolder("exec \"$0\" \"$@\"", line);
            if (holds("vectorix simulate")) { // which ends as soon as it plays
                EXPECT_NE(example.line(), "");
                example.signal(SIGINT);
            }
            if (holds("vectorix print")) {
                printing.push_back(std::move(example)); // side by side: many take the two seconds of the close
            } else {
                EXPECT_TRUE(ended(example.wait(), 0));
            }
        }
    }
    for (Running &print : printing)
        EXPECT_TRUE(ended(print.wait(), 0));
    EXPECT_GE(runs, 15U);
    for (const char *made : {"drawing.out", "drawing.svg", "drawing.png", "drawing.pdf"})
        EXPECT_TRUE(std::filesystem::exists(path(made))) << made;
}

} // namespace
