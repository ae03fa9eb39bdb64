// The completions as the shells use them.
#include "host/host_fixture.h"

#include <filesystem>

namespace {

class CompletionTest : public HostTest {
protected:
    /// What bash offers for the last of the words, one a line, in the test's own folder.
    std::string offered(const std::string &words) {
        std::string script = "cd '" + folder_ + "' && . '" MADE "/bash/vectorix' && COMP_WORDS=(" + words +
                             ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _vectorix && printf '%s\\n' \"${COMPREPLY[@]}\"";
        Result result = Running({"-c", script}, false, "", "/bin/bash").wait();
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    /// A command that knows one port and two profiles.
    std::string lister() {
        std::string path = file("lister", "#!/bin/sh\n[ \"$*\" = 'profile list --names' ] && exec printf 'house\\nbarn\\n'\n"
                                          "[ \"$*\" = 'ports --json' ] || exit 9\n"
                                          "printf '{\\n  \"ports\": [\\n    {\\n      \"path\": \"/dev/ttyS7\",\\n"
                                          "      \"stableName\": \"\",\\n      \"bus\": \"usb\"\\n    }\\n  ]\\n}\\n'\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
};

TEST_F(CompletionTest, OffersInBashWhatMayFollow) {
    for (const char *name : {"a.plt", "b.hpgl", "c.txt", "d.plist"})
        file(name, "");
    std::filesystem::create_directory(path("plots"));
    const struct {
        const char *what;
        std::string words;
        const char *offers;
    } kRows[] = {
        {"a sub-command", "vectorix pri", "print\n"},
        {"one below another", "vectorix job w", "write\n"},
        {"an option", "vectorix print a.plt --par", "--parity\n"},
        {"a value", "vectorix print a.plt --parity e", "even\n"},
        {"a value behind a sign", "vectorix print --handshake = h", "hardware\n"},
        {"a value that names a command is none", "vectorix job write x --project show --pipe-o", "--pipe-out\n"},
        {"plot files", "vectorix print ''", "a.plt\nb.hpgl\nplots\ntmp\n"},
        {"job files", "vectorix print a.plt --job ''", "d.plist\nplots\ntmp\n"},
        {"any file where none has the ending", "vectorix print c", "c.txt\n"},
        {"ports", lister() + " print a.plt --port ''", "/dev/ttyS7\n"},
        {"profiles", lister() + " print a.plt -p h", "house\n"},
        {"nothing for a free text", "vectorix send I", "\n"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(offered(row.words), row.offers);
    }
}

TEST_F(CompletionTest, IsReadByZsh) {
    if (!std::filesystem::exists("/usr/bin/zsh")) GTEST_SKIP() << "no zsh here";
    Result result = Running({"-n", MADE "/zsh/_vectorix"}, false, "", "/usr/bin/zsh").wait();
    EXPECT_EQ(result.code, 0) << result.err;
}

} // namespace
