#include "host/host_fixture.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <poll.h>
#include <sstream>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kPatience = 20'000; // ms: a command that says nothing for so long hangs

bool readable(int fd) {
    pollfd wait{fd, POLLIN, 0};
    return poll(&wait, 1, kPatience) == 1;
}

std::pair<Descriptor, Descriptor> pipePair() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) abort();
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::pair<Descriptor, std::string> terminalPair() {
    Descriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    std::array<char, 64> name{};
    if (grantpt(master.get()) != 0 || unlockpt(master.get()) != 0) abort();
    if (ptsname_r(master.get(), name.data(), name.size()) != 0) abort();
    return {std::move(master), name.data()};
}

/// What is executed next may open what the file's permissions allow, and no more, though root runs the tests.
bool becomeSubjectToPermissions() {
    return geteuid() != 0 ||
           (prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) == 0 && prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) == 0);
}

/// Reads both until both are at their end.
void drain(Descriptor &out, std::string &outText, Descriptor &err, std::string &errText) {
    std::array<char, 4096> bytes;
    while (out.get() >= 0 || err.get() >= 0) {
        pollfd waits[] = {{out.get(), POLLIN, 0}, {err.get(), POLLIN, 0}};
        if (poll(waits, 2, kPatience) <= 0) {
            ADD_FAILURE() << "the command hangs; so far: " << outText << errText;
            return;
        }
        auto take = [&](const pollfd &wait, Descriptor &from, std::string &text) {
            if (from.get() < 0 || wait.revents == 0) return;
            ssize_t count = read(from.get(), bytes.data(), bytes.size());
            if (count > 0) text.append(bytes.data(), static_cast<size_t>(count));
            if (count <= 0) from.reset();
        };
        take(waits[0], out, outText);
        take(waits[1], err, errText);
    }
}

} // namespace

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

void Descriptor::reset() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
}

Running::Running(const std::vector<std::string> &words, bool terminal, const std::string &redirections,
                 const std::string &program) {
    auto [out, outEnd] = pipePair();
    Descriptor errEnd;
    if (terminal) {
        auto [master, name] = terminalPair();
        err_ = std::move(master);
        errEnd = Descriptor(open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    } else {
        std::tie(err_, errEnd) = pipePair();
    }
    out_ = std::move(out);
    std::vector<char *> arguments = {const_cast<char *>(program.c_str())};
    const std::string line = "exec \"$0\" \"$@\" " + redirections;
    if (!redirections.empty())
        arguments = {const_cast<char *>("/bin/sh"), const_cast<char *>("-c"), const_cast<char *>(line.c_str()),
                     arguments[0]};
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(outEnd.get(), STDOUT_FILENO);
        dup2(errEnd.get(), STDERR_FILENO);
        if (becomeSubjectToPermissions()) execv(arguments[0], arguments.data());
        perror(VECTORIX);
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
    for (char byte; readable(out_.get()) && read(out_.get(), &byte, 1) == 1 && byte != '\n';)
        text += byte;
    return text;
}

void Running::awaitError(const std::string &text) {
    for (char byte; errSoFar_.find(text) == std::string::npos;) {
        if (!readable(err_.get()) || read(err_.get(), &byte, 1) != 1) {
            ADD_FAILURE() << "never said " << text << " but " << errSoFar_;
            return;
        }
        errSoFar_ += byte;
    }
}

Result Running::wait() {
    Result result;
    result.err = std::move(errSoFar_);
    drain(out_, result.out, err_, result.err);
    if (testing::Test::HasFailure()) kill(pid_, SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}

FarEnd::FarEnd() { std::tie(master_, port_) = terminalPair(); }

std::string FarEnd::read(size_t enough) {
    std::string text;
    std::array<char, 4096> bytes;
    while (text.size() < enough) {
        if (!readable(master_.get())) {
            ADD_FAILURE() << "nothing more came; so far: " << text;
            break;
        }
        ssize_t count = ::read(master_.get(), bytes.data(), bytes.size());
        if (count <= 0) break;
        text.append(bytes.data(), static_cast<size_t>(count));
    }
    return text;
}

void FarEnd::write(const std::string &text) {
    EXPECT_EQ(::write(master_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void FarEnd::awaitOpen() const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
    pollfd line{master_.get(), 0, 0};
    while (poll(&line, 1, 0) == 1 && (line.revents & POLLHUP) != 0)
        ASSERT_LT(std::chrono::steady_clock::now(), end) << "nobody opens the line";
}

bool FarEnd::hasHeard() const { return readable(master_.get()); }

termios FarEnd::attributes() const {
    termios result{};
    tcgetattr(master_.get(), &result);
    return result;
}

Bystander::Bystander(const std::string &port, bool locks) {
    auto [ready, readyEnd] = pipePair();
    pid_ = fork();
    if (pid_ == 0) {
        // Nothing of the test program is to stay open here: it would hold the far end as well.
        int fd = port.empty() ? -1 : open(port.c_str(), O_RDWR | O_NOCTTY);
        if (locks) flock(fd, LOCK_EX | LOCK_NB);
        [[maybe_unused]] ssize_t told = write(readyEnd.get(), "x", 1);
        for (int other = 3; other < 256; ++other) {
            if (other != fd) close(other);
        }
        for (;;)
            pause();
    }
    readyEnd.reset();
    char closed;
    while (read(ready.get(), &closed, 1) > 0) {
    }
}

Bystander::~Bystander() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

HostTest::HostTest() {
    folder_ = (fs::temp_directory_path() / "vectorix-test-XXXXXX").string();
    if (!mkdtemp(folder_.data())) abort();
    fs::create_directory(path("tmp"));
    setenv("TMPDIR", path("tmp").c_str(), 1);
    setenv("TERM", "xterm", 1);
    setenv("XDG_CONFIG_HOME", path("config").c_str(), 1); // the test's own profiles, and not those of who runs it
}

HostTest::~HostTest() {
    unsetenv("TMPDIR");
    unsetenv("XDG_CONFIG_HOME");
    fs::remove_all(folder_);
}

void HostTest::expectRefusals(std::initializer_list<Refusal> rows) {
    auto expect = [&](const std::vector<std::string> &words, const Refusal &row) {
        SCOPED_TRACE(testing::PrintToString(words));
        Result result = run(words);
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("vectorix: ", 0), 0U) << result.err;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
    };
    for (const Refusal &row : rows) {
        expect(row.words, row);
        if (row.words.empty() || row.words[0] != "print") continue;
        std::vector<std::string> dryRun = row.words;
        dryRun.push_back("--dry-run");
        expect(dryRun, row);
    }
    EXPECT_TRUE(isTidy());
}

std::string HostTest::file(const std::string &name, const std::string &contents) const {
    fs::create_directories(fs::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << contents;
    return path(name);
}

std::string HostTest::contents(const std::string &path) {
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
