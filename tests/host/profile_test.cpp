// Profiles: kept, read, refused, and what becomes of them beside what is typed.
#include "host/host_fixture.h"

#include "host/options/apply_profile.h"
#include "host/options/profile.h"

#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
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
    static Result add(Words words) {
        words.insert(words.begin(), {"profile", "add"});
        return run(words);
    }
    std::ptrdiff_t files() const {
        return std::distance(fs::directory_iterator(path("config/vectorix/profiles")), fs::directory_iterator());
    }
};

TEST_F(ProfileTest, ShowsWhatItWasGiven) {
    const std::string line = "\"$0\" profile add a.x --port /dev/ttyUSB0 --bits 7 --parity even --variant 2 --plotter it\\'s"
                             " --project 'Büro \"A\"' --emulation 17008 --tool \"$1\" --tool \"$2\" --terminator '\\n'";
    ASSERT_TRUE(ended(shell(line, {"\\x50'\"1,", "\t\x1B"}).wait(), 0));
    ASSERT_TRUE(ended(add({"b", "--usb", "0b75:0402@01080000", "--plotter-id", "0x5073"}), 0));
    ASSERT_TRUE(ended(add({"c", "--usb", "--area", "0,0,272.5,400", "--sheet", "a3", "--no-confirm"}), 0));
    profile("bad", "baud = 1");
    const json settings[] = {
        json::parse(R"({"port": "/dev/ttyUSB0", "bits": 7, "parity": "even", "variant": 2, "project": "Büro \"A\"",
            "plotter": "it's", "emulation": 17008, "tool": ["\\x50'\"1,", "\t\u001B"], "terminator": "\\n"})"),
        {{"usb", "0b75:0402@01080000"}, {"plotter-id", 20595}},
        {{"usb", true}, {"area", "0,0,272.5,400"}, {"sheet", "a3"}, {"confirm", false}}};
    Result list = run({"profile", "list", "--json"});
    EXPECT_EQ(list.code, 7) << "one is unfit, which hides no other";
    json profiles = json::parse(list.out)["profiles"];
    ASSERT_EQ(profiles.size(), 4U);
    EXPECT_EQ(profiles[0]["settings"], settings[0]);
    EXPECT_EQ(profiles[1]["settings"], settings[1]);
    EXPECT_TRUE(holds(profiles[2]["error"], "bad.toml: line 1: baud"));
    EXPECT_EQ(profiles[3]["settings"], settings[2]);
    EXPECT_EQ(json::parse(run({"profile", "show", "a.x", "--json"}).out)["settings"], settings[0]);
    Result text = run({"profile", "show", "a.x"});
    EXPECT_TRUE(text.out.starts_with(path("config/vectorix/profiles/a.x.toml\n"))) << text.out;
    EXPECT_TRUE(holds(text.out, "\n  bits        7\n"));
    EXPECT_TRUE(holds(run({"profile", "show", "c"}).out, "\n  confirm     false\n"));
    const std::string plot = file("plot.plt", plotOf(2));
    auto drawnOn = [&](const std::string &more) {
        return json::parse(shell("\"$0\" preview --json -p c \"$1\" " + more, {plot}).wait().out)["sheet"];
    };
    EXPECT_EQ(drawnOn(""), "0,0,272.5,400") << "what the pen reaches is known better than by the paper";
    EXPECT_EQ(drawnOn("--sheet a1"), "a1");
    profile("d", "sheet = 'a3'");
    EXPECT_EQ(json::parse(run({"preview", "--json", "-p", "d", plot}).out)["sheet"], "a3");
    EXPECT_EQ(run({"profile", "remove", "b"}).code, 0);
    EXPECT_EQ(run({"profile", "list", "--names"}).out, "a.x\nbad\nc\nd\n");
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
    auto jobOption = command.option("--job", job, "");
    for (const char *name : {"--emulation", "--terminator", "--tool"})
        jobOption.excludes(option(name));
    std::istringstream stream("print " + typed);
    const Words kept(std::istream_iterator<std::string>(stream), {});
    std::vector<const char *> words;
    for (const std::string &word : kept)
        words.push_back(word.c_str());
    line.parse(static_cast<int>(words.size()), words.data());
    host::applyProfile(command);
    return fmt::format("port={} usb={} id={} baud={} {}-{} {} {}", options.port, option("--usb").isTyped(),
                       options.plotterID, options.line.baud, emulationOf(options.job), options.variant,
                       terminatorOf(options.job), fmt::join(options.job.tools, "|"));
}

TEST_F(ProfileTest, WhatIsTypedWins) {
    profile("dmp", "port = '/dev/a'\nbaud = 2400\nemulation = 17008\nvariant = 2\nterminator = ','\ntool = ['P1,', 'P2,']");
    profile("usb", "plotter-id = 7\nusb = true");
    constexpr std::pair<const char *, const char *> kRows[] = {
        {"-p dmp", "port=/dev/a usb=false id=0 baud=2400 17008-2 , P1,|P2,"},
        {"--baud 300 -p dmp --tool X", "port=/dev/a usb=false id=0 baud=300 17008-2 , X"},
        {"-p dmp --emulation 17002", "port=/dev/a usb=false id=0 baud=2400 17002-1 ; "},
        {"-p dmp --emulation 17008", "port=/dev/a usb=false id=0 baud=2400 17008-2 , P1,|P2,"},
        {"-p dmp --job f", "port=/dev/a usb=false id=0 baud=2400 17002-2 ; "},
        {"-p usb", "port= usb=true id=7 baud=9600 17002-1 ; "},
        {"-p usb --port /dev/b", "port=/dev/b usb=false id=0 baud=9600 17002-1 ; "},
    };
    for (auto [typed, comesOut] : kRows)
        EXPECT_EQ(merged(typed), comesOut) << typed;
}

TEST_F(ProfileTest, NamesTheLineOfWhatIsUnfit) {
    constexpr std::pair<const char *, const char *> kRows[] = {
        {"port = '/dev/a'\n\nbuad = 9600", "line 3: \"buad\" is nothing that a profile has; did you mean baud?"},
        {"\nbaud = '9600'", "line 2: baud must be a whole number"},
        {"port = \"/dev/a\\u0000b\"", "line 1: port holds a NUL"},
        {"confirm = 'no'", "line 1: confirm must be true or false"},
        {"\n\nbaud = 57600", "line 3: baud: 57600 is not a rate"},
        {"usb = true\nplotter-id = 4294967296", "line 2: plotter-id: 4294967296 is not a whole number"},
        {"usb = true\nport = '/dev/a'", "line 1: usb and port exclude each other"},
        {"tool = ['1','2','3','4','5','6','7','8','9']", "line 1: tool: "},
        {"port = '/dev/a'\nterminator = '\\x0'", "line 2: terminator: "},
        {"port = '/dev/a'\nafter = 'PG;\xC3\xA4'", "line 2: after: holds characters outside ASCII"},
    };
    for (auto [text, says] : kRows) {
        profile("house", text);
        EXPECT_TRUE(ended(failureOf([] { host::readProfile("house"); }), 7, std::string("house.toml: ") + says)) << text;
    }
    profile("house", "# nothing yet\nconfirm = true\n");
    EXPECT_TRUE(host::readProfile("house").values.empty());
    std::string key = "a";
    for (size_t depth = 1; depth < 40'000; ++depth)
        key += ".a";
    for (const std::string &text : {key + " = 1", key.substr(0, 12'000) + " = 1", "tool = " + std::string(80'000, '[')}) {
        profile("house", text);
        EXPECT_EQ(run({"profile", "show", "house"}).code, 7) << "no depth ends in a crash";
    }
}

TEST_F(ProfileTest, RefusesByNameWithItsRemedy) {
    const std::string plot = file("plot.plt", plotOf(2));
    profile("house", "plotter = 'big'");
    profile("workshop", "baud = 1");
    expectRefusals({
        {{"print", plot, "-p", "huose"}, 3, "huose: no such profile; did you mean house? 'vectorix profile list'"},
        {{"profile", "remove", "shop"}, 3, "shop: no such profile; 'vectorix profile list'"},
        {{"print", plot, "-p", "workshop", "--capture", path("o")}, 7, "workshop.toml: line 1: baud: 1 is not a rate"},
        {{"print", plot, "-p", "house"}, 2, "print: say where to"},
        {{"send", "IN;", "-p", "house"}, 2, "send: say which plotter"},
        {{"profile", "show", "../house"}, 2, "\"../house\": not a name"},
        {{"profile", "add", "empty"}, 2, "empty: nothing to keep"},
        {{"profile", "add", "new", "--port", "/dev/\xFF"}, 2, "--port: /dev/\\xFF is not UTF-8"},
        {{"profile", "add", "house", "--baud", "300"}, 1, "house.toml: exists already; add --force"},
    });
    EXPECT_EQ(files(), 2) << "nothing was written";
    EXPECT_FALSE(fs::exists(path("o")));
}

TEST_F(ProfileTest, LivesInTheConfigurationFolder) {
    const std::string home = "XDG_CONFIG_HOME=relative HOME=" + folder_ + "/home ", add = "\"$0\" profile add x --baud 300";
    EXPECT_EQ(shell(home + "\"$0\" profile list --names").wait().code, 0) << "no folder, no profiles";
    EXPECT_EQ(shell(home + add).wait().code, 0);
    EXPECT_TRUE(fs::exists(path("home/.config/vectorix/profiles/x.toml")));
    for (const char *rights : {"0", "500"}) {
        const std::string closed =
            fmt::format("XDG_CONFIG_HOME=; rm -rf \"$1\"; mkdir -m {} \"$1\"; HOME=\"$1\" {}", rights, add);
        EXPECT_TRUE(ended(shell(closed, {path("closed")}).wait(), 4, "profiles are kept below it"));
    }
    EXPECT_TRUE(ended(shell("unset HOME XDG_CONFIG_HOME; " + add).wait(), 2, "set HOME"));
}

TEST_F(ProfileTest, OfTheSystemAreForAllAndHiddenByTheUsersOwn) {
    const std::string folder = path("system/vectorix/profiles"), hall = folder + "/hall.toml";
    const std::string add = "\"$0\" profile add ";
    const std::string script = "umask 077; " + add + "hall --baud 300 --system && " + add + "house --baud 300 --system && " +
                               add + "house --baud 600";
    ASSERT_EQ(shell(script).wait().code, 0);
    EXPECT_EQ(fs::status(hall).permissions(), fs::perms(0644));
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0755));
    EXPECT_EQ(run({"profile", "list", "--names"}).out, "hall\nhouse\n");
    EXPECT_EQ(host::readProfile("house").values[0].words, Words{"600"});
    host::keepInProfile("hall", "plotter", "big");
    EXPECT_TRUE(holds(contents(hall), "\nplotter = 'big'\n")) << "kept where it was found";
    EXPECT_EQ(run({"profile", "remove", "house", "--system"}).code, 0);
    fs::permissions(folder, fs::perms(0500));
    expectRefusals(
        {{{"profile", "remove", "hall"}, 3, "hall: a profile of the system; remove it with --system"},
         {{"profile", "remove", "house", "--system"}, 3, "house: a profile of yours; leave out --system"},
         {{"profile", "remove", "hall", "--system"}, 4, "hall.toml: permission denied; it is for all users: put sudo"},
         {{"profile", "add", "new", "--usb", "--system"}, 4, "put sudo before the command"}});
    fs::permissions(folder, fs::perms(0700));
}

TEST_F(ProfileTest, ReplacesWholeOrNotAtAll) {
    const std::string kept = file("kept.toml", "baud = 300\n"), linked = profile("house", "");
    ASSERT_EQ(chmod(kept.c_str(), 0640), 0);
    fs::remove(linked);
    fs::create_symlink("../../../kept.toml", linked);
    ASSERT_EQ(add({"house", "--baud", "600", "--force"}).code, 0);
    EXPECT_TRUE(fs::is_symlink(linked));
    EXPECT_TRUE(holds(contents(kept), "\nbaud = 600\n"));
    EXPECT_EQ(fs::status(kept).permissions(), fs::perms(0640));

    const std::string old = profile("shop", "baud = 300\n");
    const fs::path folder = fs::path(old).parent_path();
    fs::permissions(folder, fs::perms(0500));
    EXPECT_EQ(add({"shop", "--baud", "600", "--force"}).code, 4);
    EXPECT_EQ(run({"profile", "remove", "shop"}).code, 4);
    fs::permissions(folder, fs::perms(0700));
    EXPECT_EQ(contents(old), "baud = 300\n");
    EXPECT_EQ(files(), 2) << "no draft is left";
}

TEST_F(ProfileTest, OfMakersAtTheSameTimeOneWins) {
    std::vector<Running> makers;
    makers.reserve(4);
    for (int i = 0; i < 4; ++i)
        makers.emplace_back(Words{"profile", "add", "shared", "--emulation", fmt::format("{}", 17002 + i)});
    Words winners;
    for (size_t i = 0; i < makers.size(); ++i) {
        if (makers[i].wait().code == 0) winners.push_back(fmt::format("{}", 17002 + i));
    }
    EXPECT_EQ(winners, host::readProfile("shared").values[0].words);
    EXPECT_EQ(files(), 1);
}

} // namespace
