#include "host/host_fixture.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <poll.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kPatience = 20'000; // ms: what says nothing for so long hangs

bool isReadable(const UniqueFd &fd) {
    pollfd wait{fd.get(), POLLIN, 0};
    return poll(&wait, 1, kPatience) == 1;
}

std::string contents(const UniqueFd &fd) { return ::contents("/proc/self/fd/" + std::to_string(fd.get())); }

/// What is executed next may open what the file's permissions allow, and no more, though root runs the tests.
bool becomeSubjectToPermissions() {
    return geteuid() != 0 ||
           (prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) == 0 && prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) == 0);
}

} // namespace

testing::AssertionResult holds(const std::string &text, std::string_view part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << '"' << part << "\" is not in: " << text;
}

testing::AssertionResult ended(const Result &result, int code, std::string_view says) {
    if (result.code == code) return holds(result.out + result.err, says);
    return testing::AssertionFailure() << "exit code " << result.code << ": " << result.out << result.err;
}

Running::Running(const Words &words, const std::string &program)
    : out_(memfd_create("out", MFD_CLOEXEC)), err_(memfd_create("err", MFD_CLOEXEC)) {
    std::vector<char *> arguments = {const_cast<char *>(program.c_str())};
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(out_.get(), STDOUT_FILENO);
        dup2(err_.get(), STDERR_FILENO);
        if (becomeSubjectToPermissions()) execv(arguments[0], arguments.data());
        perror(arguments[0]);
        _exit(127);
    }
}

Running::~Running() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void Running::signal(int number) const { kill(pid_, number); }

void Running::awaitSleep() const {
    // The state stands behind the program's name in parentheses.
    for (std::string text; text.find(") S ") == std::string::npos;) {
        std::getline(std::ifstream("/proc/" + std::to_string(pid_) + "/stat"), text);
        ASSERT_FALSE(text.empty() || text.find(") Z ") != std::string::npos) << "it has ended";
    }
}

std::string Running::line() {
    std::string text;
    for (int i = 0; i < kPatience && text.find('\n') == std::string::npos; ++i) {
        usleep(1000);
        text = contents(out_).substr(lines_);
    }
    text.resize(std::min(text.find('\n'), text.size()));
    lines_ += text.size() + 1;
    return text;
}

Result Running::wait() {
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contents(out_).substr(lines_), contents(err_)};
}

FarEnd::FarEnd() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    char name[64];
    if (grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0 || ptsname_r(master_.get(), name, 64) != 0) abort();
    port_ = name;
}

UniqueFd FarEnd::openPort() const { return UniqueFd(open(port_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)); }

std::string FarEnd::read(size_t enough) {
    std::string text;
    for (ssize_t count = 0; text.size() < enough && count >= 0;) {
        const bool isReady = isReadable(master_);
        EXPECT_TRUE(isReady) << "nothing more came; so far: " << text;
        std::array<char, 4096> bytes;
        count = isReady ? ::read(master_.get(), bytes.data(), bytes.size()) : -1;
        if (count > 0) text.append(bytes.data(), static_cast<size_t>(count));
    }
    return text;
}

void FarEnd::write(const std::string &text) {
    EXPECT_EQ(::write(master_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

bool FarEnd::hasHeard() const { return isReadable(master_); }

termios FarEnd::attributes() const {
    termios result{};
    tcgetattr(master_.get(), &result);
    return result;
}

constexpr const char *kHold = "import fcntl, os, sys, time\nfile = os.open(sys.argv[1], os.O_RDWR | os.O_NOCTTY)\n"
                              "if sys.argv[2] == '1': fcntl.flock(file, fcntl.LOCK_EX)\nprint(flush=True)\ntime.sleep(999)";

Bystander::Bystander(const std::string &file, bool locks)
    : Running({"python3", "-c", kHold, file, locks ? "1" : "0"}, "/usr/bin/env") {
    line();
}

HostTest::HostTest() {
    folder_ = (fs::temp_directory_path() / "vectorix-test-XXXXXX").string();
    if (!mkdtemp(folder_.data())) abort();
    fs::create_directory(path("tmp"));
    setenv("TMPDIR", path("tmp").c_str(), 1);
    setenv("TERM", "xterm", 1);
    setenv("XDG_CONFIG_HOME", path("config").c_str(), 1); // the test's own profiles, and not those of who runs it
    setenv("XDG_CONFIG_DIRS", path("system").c_str(), 1); // likewise the system's
    setenv("XDG_STATE_HOME", path("state").c_str(), 1);   // likewise where its prints ended
}

HostTest::~HostTest() {
    unsetenv("TMPDIR");
    fs::remove_all(folder_);
}

Running HostTest::shell(const std::string &script, Words words) {
    words.insert(words.begin(), {"-c", script, VECTORIX});
    return Running(words, "/bin/sh");
}

void HostTest::expectRefusals(std::vector<Refusal> rows) {
    for (size_t i = 0, typed = rows.size(); i < typed; ++i) {
        if (rows[i].words.empty() || rows[i].words[0] != "print") continue;
        rows.push_back(rows[i]);
        rows.back().words.push_back("--dry-run");
    }
    for (const auto &[words, code, says] : rows) {
        const Result result = run(words);
        EXPECT_TRUE(ended(result, code, says)) << testing::PrintToString(words);
        EXPECT_TRUE(result.out.empty() && result.err.starts_with("vectorix: ")) << result.out << result.err;
    }
    EXPECT_TRUE(isTidy());
}

std::string HostTest::file(const std::string &name, const std::string &contents) const {
    fs::create_directories(fs::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << contents;
    return path(name);
}

std::string contents(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

bool HostTest::isTidy() const { return fs::is_empty(path("tmp")); }

std::string plotOf(int lines) {
    std::string plot = "IN;SP1;";
    for (int line = 0; line < lines; ++line)
        plot += "PU" + std::to_string(line) + ",0;PD" + std::to_string(line) + ",1000;";
    return plot + "SP0;";
}
