// The manual pages: that they are clean, and that nothing declared is missing from them.
#include "host/commands/command_line.h"
#include "host/commands/commands.h"
#include "host/host_fixture.h"
#include "manual/declared_option.h"
#include "manual/man_page.h"
#include "manual/roff.h"

#include <filesystem>

namespace {

TEST(RoffTest, LeavesNothingToBeTakenForARequest) {
    EXPECT_EQ(manual::roff(".R a\\e -b 'c' \xE2\x80\xA6"), "\\&.R a\\ee \\-b \\(aqc\\(aq \\[u2026]");
    EXPECT_EQ(manual::paragraphs("one\n  two\n\nthree\nfour"), ".PP\n.nf\none\n  two\n.fi\n.PP\nthree\nfour\n");
}

class ManPageTest : public HostTest {};

TEST_F(ManPageTest, ShowsAllThatIsDeclaredWithoutAWarning) {
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
        Result result = Running({"-man", "-Tutf8", "-ww", file("page", page)}, false, "", kGroff).wait();
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err, "");
    }
    if (!canShow) GTEST_SKIP() << "no groff here: the pages were not shown";
}

} // namespace
