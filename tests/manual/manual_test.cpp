// The manual pages: that they are clean, and that nothing declared is missing from them. The completions as shells use them.
#include "host/commands/command_line.h"
#include "host/commands/commands.h"
#include "host/host_fixture.h"
#include "manual/completion.h"
#include "manual/declared_option.h"
#include "manual/man_page.h"
#include "manual/roff.h"

#include <filesystem>

namespace {

TEST(RoffTest, LeavesNothingToBeTakenForARequest) {
    EXPECT_EQ(manual::roff(".R a\\e -b 'c' \xE2\x80\xA6"), "\\&.R a\\ee \\-b \\(aqc\\(aq \\[u2026]");
    EXPECT_EQ(manual::paragraphs("one\n  two\n\nthree\nfour"), ".PP\n.nf\none\n  two\n.fi\n.PP\nthree\nfour\n");
}

class ManualTest : public HostTest {};

TEST_F(ManualTest, ShowsAllThatIsDeclaredWithoutAWarning) {
    constexpr const char *kGroff = "/usr/bin/groff";
    bool canShow = std::filesystem::exists(kGroff);
    std::unique_ptr<host::CommandLine> commands = host::declaredCommandLine();
    for (const host::Command &command : manual::commandsFrom(commands->root())) {
        std::string name = manual::pageName(command);
        SCOPED_TRACE(name);
        EXPECT_TRUE(std::filesystem::exists(MADE "/man/" + name + ".1.gz"));
        std::string page = manual::manPage(command, "1 Jan 2000");
        for (const manual::DeclaredOption &option : manual::optionsOf(command)) {
            for (const std::string &word : option.names)
                EXPECT_NE(page.find(manual::bold(word)), std::string::npos) << word;
            EXPECT_EQ(option.valueName.find(" in "), std::string::npos) << "not meant for people: " << option.valueName;
        }
        if (!canShow) continue;
        Result result = Running({"-man", "-Tutf8", "-ww", file("page", page)}, kGroff).wait();
        EXPECT_TRUE(ended(result, 0) && result.err.empty()) << result.err;
    }
    if (!canShow) GTEST_SKIP() << "no groff here: the pages were not shown";
}

TEST_F(ManualTest, OffersInBashWhatMayFollow) {
    for (const char *name : {"a.plt", "b.hpgl", "c.txt", "d.plist", "plots/x"})
        file(name, "");
    // A command that knows one port and two profiles.
    const std::string lister =
        file("tmp/vectorix", "#!/bin/sh\n[ \"$*\" = 'profile list --names' ] && exec printf "
                             "'house\\nbarn\\n'\n[ \"$*\" = 'ports --json' ] || exit 9\n"
                             "printf '{\\n  \"ports\": [\\n    {\\n      \"path\": \"/dev/ttyS7\",\\n"
                             "      \"stableName\": \"\",\\n      \"bus\": \"usb\"\\n    }\\n  ]\\n}\\n'\n");
    std::filesystem::permissions(lister, std::filesystem::perms::owner_all);
    constexpr std::pair<const char *, const char *> kRows[] = {
        {"pri", "print\n"},
        {"print a.plt --par", "--parity\n"},
        {"print --handshake = h", "hardware\n"},
        {"job write x --project show --pipe-o", "--pipe-out\n"}, // a value that names a command is none
        {"print ''", "a.plt\nb.hpgl\nplots\ntmp\n"},
        {"print a.plt --job ''", "d.plist\nplots\ntmp\n"},
        {"print c", "c.txt\n"}, // any file where none has the ending
        {"print a.plt --port ''", "/dev/ttyS7\n"},
        {"print a.plt -p h", "house\n"},
    };
    for (auto [typed, offers] : kRows) {
        const std::string script =
            "cd " + folder_ + " && . " MADE "/bash/vectorix && COMP_WORDS=(" + lister + " " + typed +
            ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _vectorix && printf '%s\\n' \"${COMPREPLY[@]}\"";
        const Result result = Running({"-c", script}, "/bin/bash").wait();
        EXPECT_TRUE(ended(result, 0));
        EXPECT_EQ(result.out + result.err, offers) << typed;
    }
}

TEST_F(ManualTest, CompletesAProgramWithoutSubcommands) {
    host::CommandLine line("plot-queues", "Makes queues.", "1");
    bool isShared = false;
    line.root().flag("--share", isShared, "Let others print");
    const Result result =
        Running({"-c", ". " + file("completion", manual::bashCompletion(line.root())) +
                           " && COMP_WORDS=(plot-queues --s) && COMP_CWORD=1 && _plot-queues && echo $COMPREPLY"},
                "/bin/bash")
            .wait();
    EXPECT_EQ(result.out + result.err, "--share\n");
}

TEST_F(ManualTest, IsReadByZsh) {
    if (!std::filesystem::exists("/usr/bin/zsh")) GTEST_SKIP() << "no zsh here";
    EXPECT_TRUE(ended(Running({"-n", MADE "/zsh/_vectorix"}, "/usr/bin/zsh").wait(), 0));
}

} // namespace
