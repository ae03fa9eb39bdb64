// Profiles: kept, read, refused, and what becomes of them beside what is typed.
#include "host/host_fixture.h"

#include "host/failure_of.h"
#include "host/options/apply_profile.h"
#include "host/options/profile.h"

#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

class ProfileTest : public HostTest {
protected:
    std::string profile(const std::string &name, const std::string &text) const {
        return file("config/vectorix/profiles/" + name + ".toml", text);
    }
    Result add(std::vector<std::string> words) {
        words.insert(words.begin(), {"profile", "add"});
        return run(words);
    }
    size_t files() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(path("config/vectorix/profiles")), {}));
    }
};

TEST_F(ProfileTest, ShowsWhatItWasGiven) {
    const struct {
        const char *what;
        std::vector<std::string> words;
        json settings;
    } kRows[] = {
        {"a line",
         {"--port", "/dev/ttyUSB0", "--bits", "7", "--parity", "even", "--variant", "2", "--project", "B\u00fcro \"A\"",
          "--plotter", "it's"},
         {{"port", "/dev/ttyUSB0"},
          {"bits", 7},
          {"parity", "even"},
          {"variant", 2},
          {"project", "B\u00fcro \"A\""},
          {"plotter", "it's"}}},
        {"escapes, quotes and control characters",
         {"--emulation", "17008", "--tool", "\\x50'\"1,", "--tool", "\t\x1B", "--tool", "a=b #c", "--terminator", "\\n"},
         {{"emulation", 17008}, {"tool", {"\\x50'\"1,", "\t\x1B", "a=b #c"}}, {"terminator", "\\n"}}},
        {"the only USB plotter", {"--usb"}, {{"usb", true}}},
        {"one USB plotter",
         {"--usb", "0b75:0402@01080000", "--plotter-id", "0x5073"},
         {{"usb", "0b75:0402@01080000"}, {"plotter-id", 20595}}},
    };
    for (size_t i = 0; i < std::size(kRows); ++i) {
        SCOPED_TRACE(kRows[i].what);
        std::vector<std::string> words = kRows[i].words;
        std::string name = fmt::format("row_{}.x", i);
        words.insert(words.begin(), name);
        Result added = add(words);
        ASSERT_EQ(added.code, 0) << added.err;
        Result shown = run({"profile", "show", name, "--json"});
        ASSERT_EQ(shown.code, 0) << shown.err;
        EXPECT_EQ(json::parse(shown.out)["settings"], kRows[i].settings);
    }
    Result text = run({"profile", "show", "row_0.x"});
    EXPECT_EQ(text.out.rfind(path("config/vectorix/profiles/row_0.x.toml\n"), 0), 0U) << text.out;
    EXPECT_NE(text.out.find("\n  bits        7\n"), std::string::npos) << text.out;

    EXPECT_EQ(run({"profile", "remove", "row_1.x"}).code, 0);
    profile("bad", "baud = 1");
    EXPECT_EQ(run({"profile", "list", "--names"}).out, "bad\nrow_0.x\nrow_2.x\nrow_3.x\n");
    Result list = run({"profile", "list", "--json"});
    EXPECT_EQ(list.code, 7) << "one is unfit, which hides no other";
    json profiles = json::parse(list.out)["profiles"];
    ASSERT_EQ(profiles.size(), 4U);
    EXPECT_NE(profiles[0]["error"].get<std::string>().find("bad.toml: line 1: baud"), std::string::npos);
    EXPECT_EQ(profiles[1]["settings"], kRows[0].settings);
}

/// The options of a command that takes profiles, without one that does anything.
std::string merged(const std::string &typed) {
    host::CommandLine line("print", "", "");
    const host::Command command = line.root();
    host::ProfileOptions options;
    std::string capture, job;
    host::addProfileOption(command);
    host::addProfileOptions(command, options);
    auto option = [&](const char *name) { return *command.find(name); };
    command.option("--capture", capture, "").excludes(option("--port")).excludes(option("--usb"));
    command.option("--job", job, "")
        .excludes(option("--emulation"))
        .excludes(option("--terminator"))
        .excludes(option("--tool"));
    std::vector<const char *> words = {"print"};
    std::istringstream stream(typed);
    std::vector<std::string> kept(std::istream_iterator<std::string>(stream), {});
    for (const std::string &word : kept)
        words.push_back(word.c_str());
    line.parse(static_cast<int>(words.size()), words.data());
    host::applyProfile(command);
    return fmt::format("port={} usb={} id={} baud={} emulation={} variant={} terminator={} tools={}", options.port,
                       option("--usb").isTyped() ? "[" + options.usbChoice + "]" : "", options.plotterID, options.line.baud,
                       options.job.emulation, options.variant, options.job.terminator, fmt::join(options.job.tools, "|"));
}

TEST_F(ProfileTest, WhatIsTypedWins) {
    profile("dmp", "port = '/dev/a'\nbaud = 2400\nemulation = 17008\nvariant = 2\nterminator = ','\ntool = ['P1,', 'P2,']");
    profile("usb", "plotter-id = 7\nusb = true");
    const struct {
        const char *typed;
        const char *merged;
    } kRows[] = {
        {"-p dmp", "port=/dev/a usb= id=0 baud=2400 emulation=17008 variant=2 terminator=, tools=P1,|P2,"},
        {"--baud 300 -p dmp --tool X", "port=/dev/a usb= id=0 baud=300 emulation=17008 variant=2 terminator=, tools=X"},
        {"-p dmp --port /dev/b", "port=/dev/b usb= id=0 baud=2400 emulation=17008 variant=2 terminator=, tools=P1,|P2,"},
        {"-p dmp --usb", "port= usb=[] id=0 baud=2400 emulation=17008 variant=2 terminator=, tools=P1,|P2,"},
        {"-p dmp --capture f", "port= usb= id=0 baud=2400 emulation=17008 variant=2 terminator=, tools=P1,|P2,"},
        {"-p dmp --emulation 17002", "port=/dev/a usb= id=0 baud=2400 emulation=17002 variant=1 terminator=; tools="},
        {"-p dmp --emulation 17008", "port=/dev/a usb= id=0 baud=2400 emulation=17008 variant=2 terminator=, tools=P1,|P2,"},
        {"-p dmp --job f", "port=/dev/a usb= id=0 baud=2400 emulation=17002 variant=2 terminator=; tools="},
        {"-p usb", "port= usb=[] id=7 baud=9600 emulation=17002 variant=1 terminator=; tools="},
        {"-p usb --port /dev/b", "port=/dev/b usb= id=0 baud=9600 emulation=17002 variant=1 terminator=; tools="},
    };
    for (const auto &row : kRows)
        EXPECT_EQ(merged(row.typed), row.merged) << row.typed;
}

TEST_F(ProfileTest, NamesTheLineOfWhatIsUnfit) {
    const struct {
        const char *what;
        std::string text;
        const char *says;
    } kRows[] = {
        {"no TOML", "# x\nport /dev/a", "line 2: "},
        {"an unknown key", "port = '/dev/a'\n\nbuad = 9600",
         "line 3: \"buad\" is nothing that a profile has; did you mean baud?"},
        {"a number in quotes", "\nbaud = '9600'", "line 2: baud must be a whole number"},
        {"a text without its list", "tool = 'P1,'", "line 1: tool must be a list"},
        {"USB that is not", "usb = false", "line 1: usb must be true"},
        {"a NUL", "port = \"/dev/a\\u0000b\"", "line 1: port holds a NUL"},
        {"a rate that would become 9600", "\n\nbaud = 57600", "line 3: baud: 57600 is not a rate"},
        {"a number past its type", "usb = true\nplotter-id = 4294967296",
         "line 2: plotter-id: 4294967296 is not a whole number"},
        {"two links", "usb = true\nport = '/dev/a'", "line 1: usb and port exclude each other"},
        {"an identifier without its link", "\nplotter-id = 1", "line 2: plotter-id needs usb"},
        {"nine tools", "tool = ['1','2','3','4','5','6','7','8','9']", "line 1: tool: "},
        {"tools of another emulation", "emulation = 17002\ntool = ['P1,']", "line 2: tool: emulation 17002"},
        {"half an escape", "port = '/dev/a'\nterminator = '\\x0'", "line 2: terminator: "},
        {"no terminator", "terminator = ''", "line 1: terminator: empty"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        profile("house", row.text);
        auto [code, said] = failureOf([] { host::readProfile("house"); });
        EXPECT_EQ(code, host::ExitCode::Unfit);
        EXPECT_NE(said.find(std::string("house.toml: ") + row.says), std::string::npos) << said;
    }
    profile("house", "# nothing yet\n");
    EXPECT_TRUE(host::readProfile("house").values.empty());
    for (size_t depth : {size_t{6'000}, size_t{40'000}}) {
        std::string key = "a";
        for (size_t i = 1; i < depth; ++i)
            key += ".a";
        for (const std::string &text : {key + " = 1", "tool = " + std::string(2 * depth, '[')}) {
            profile("house", text);
            EXPECT_EQ(run({"profile", "show", "house"}).code, 7) << "no depth ends in a crash: " << depth;
        }
    }
}

TEST_F(ProfileTest, RefusesByNameWithItsRemedy) {
    std::string plot = file("plot.plt", plotOf(2));
    profile("house", "plotter = 'big'");
    profile("workshop", "baud = 1");
    expectRefusals({
        {{"print", plot, "-p", "huose"}, 3, "huose: no such profile; did you mean house? 'vectorix profile list'"},
        {{"profile", "remove", "shop"}, 3, "shop: no such profile; 'vectorix profile list'"},
        {{"print", plot, "-p", "workshop", "--capture", path("o")}, 7, "workshop.toml: line 1: baud: 1 is not a rate"},
        {{"print", plot, "-p", "house"}, 2, "print: say where to"},
        {{"send", "IN;", "-p", "house"}, 2, "send: say which plotter"},
        {{"limits", "-p", "house"}, 2, "limits: say which plotter"},
        {{"profile", "show", "../house"}, 2, "\"../house\": not a name"},
        {{"profile", "show", ".house"}, 2, "not a name"},
        {{"profile", "show", ""}, 2, "not a name"},
        {{"profile", "show", std::string(65, 'a')}, 2, "up to 64"},
        {{"profile", "add", "h\u00e4user", "--baud", "300"}, 2, "not a name"},
        {{"profile", "add", "empty"}, 2, "empty: nothing to keep"},
        {{"profile", "add", "new", "--tool", "P1"}, 2, "--tool: emulation 17002"},
        {{"profile", "add", "new", "--baud", "57600"}, 2, "57600 is not a rate"},
        {{"profile", "add", "new", "--port", "/dev/\xFF"}, 2, "--port: /dev/\\xFF is not UTF-8"},
        {{"profile", "add", "house", "--baud", "300"}, 1, "house.toml: exists already; add --force"},
    });
    EXPECT_EQ(json::parse(run({"print", plot, "-p", "none", "--json"}).out)["exitCode"], 3);
    EXPECT_EQ(files(), 2U) << "nothing was written";
    EXPECT_FALSE(fs::exists(path("o")));
}

TEST_F(ProfileTest, LivesInTheConfigurationFolder) {
    std::string home = getenv("HOME") ? getenv("HOME") : "";
    setenv("HOME", path("home").c_str(), 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(run({"profile", "list", "--names"}).code, 0) << "no folder, no profiles";
    EXPECT_EQ(add({"house", "--baud", "300"}).code, 0);
    EXPECT_TRUE(fs::exists(path("home/.config/vectorix/profiles/house.toml")));
    for (unsigned rights : {0U, 0500U}) {
        setenv("HOME", std::filesystem::path(file(fmt::format("{}/x", rights), "")).parent_path().c_str(), 1);
        fs::permissions(getenv("HOME"), fs::perms(rights));
        Result refused = add({"house", "--baud", "300"});
        EXPECT_EQ(refused.code, 4) << refused.err;
        EXPECT_NE(refused.err.find("profiles are kept below it"), std::string::npos) << refused.err;
        fs::permissions(getenv("HOME"), fs::perms(0700));
    }
    unsetenv("HOME");
    Result lost = add({"house", "--baud", "300"});
    EXPECT_EQ(lost.code, 2);
    EXPECT_NE(lost.err.find("set HOME"), std::string::npos) << lost.err;
    if (!home.empty()) setenv("HOME", home.c_str(), 1);
}

TEST_F(ProfileTest, ReplacesWholeOrNotAtAll) {
    std::string kept = file("kept.toml", "baud = 300\n");
    ASSERT_EQ(chmod(kept.c_str(), 0640), 0);
    std::string linked = profile("house", "");
    fs::remove(linked);
    fs::create_symlink("../../../kept.toml", linked);
    ASSERT_EQ(add({"house", "--baud", "600", "--force"}).code, 0);
    EXPECT_TRUE(fs::is_symlink(linked));
    EXPECT_NE(contents(kept).find("\nbaud = 600\n"), std::string::npos) << contents(kept);
    EXPECT_EQ(fs::status(kept).permissions(), fs::perms(0640));

    std::string old = profile("shop", "baud = 300\n");
    fs::path folder = fs::path(old).parent_path();
    fs::permissions(folder, fs::perms(0500));
    EXPECT_EQ(add({"shop", "--baud", "600", "--force"}).code, 4);
    EXPECT_EQ(run({"profile", "remove", "shop"}).code, 4);
    fs::permissions(folder, fs::perms(0700));
    EXPECT_EQ(contents(old), "baud = 300\n");
    EXPECT_EQ(files(), 2U) << "no draft is left";
}

TEST_F(ProfileTest, OfMakersAtTheSameTimeOneWins) {
    std::vector<std::unique_ptr<Running>> makers;
    for (int i = 0; i < 4; ++i) {
        for (const std::string &name : {std::string("shared"), fmt::format("own{}", i)})
            makers.push_back(std::make_unique<Running>(
                std::vector<std::string>{"profile", "add", name, "--emulation", fmt::format("{}", 17002 + i)}, false));
    }
    int winner = -1;
    for (size_t i = 0; i < makers.size(); ++i) {
        Result result = makers[i]->wait();
        bool isShared = i % 2 == 0;
        EXPECT_TRUE(isShared || result.code == 0) << result.err;
        if (!isShared || result.code != 0) continue;
        EXPECT_EQ(winner, -1) << "two made the same profile";
        winner = static_cast<int>(i / 2);
    }
    ASSERT_GE(winner, 0);
    EXPECT_EQ(host::readProfile("shared").values[0].words[0], fmt::format("{}", 17002 + winner));
    EXPECT_EQ(files(), 5U);
}

} // namespace
