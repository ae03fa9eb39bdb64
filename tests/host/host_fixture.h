// Runs the command, or another host program, as a user would, and plays the far end of its serial line.
#pragma once

#include "host/files/unique_fd.h"
#include "host/terminal/failure.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <termios.h>
#include <utility>
#include <vector>

using host::UniqueFd;
using Words = std::vector<std::string>;

/// How a command ended.
struct Result {
    int code = -1;
    std::string out = {}, err = {};
};

testing::AssertionResult holds(const std::string &text, std::string_view part);
/// The exit code, and a part of what was said.
testing::AssertionResult ended(const Result &result, int code, std::string_view says = "");

/// What the Failure that the call throws would make of the command; code 0 and no words when it throws none.
template <class Call> Result failureOf(Call call) {
    try {
        call();
    } catch (const host::Failure &failure) {
        return {static_cast<int>(failure.code()), "", failure.what()};
    }
    return {0};
}

/// The command while it runs.
class Running {
public:
    explicit Running(const Words &words, const std::string &program = VECTORIX);
    Running(Running &&other) noexcept
        : out_(std::move(other.out_)), err_(std::move(other.err_)), pid_(std::exchange(other.pid_, -1)) {}
    ~Running();
    pid_t pid() const { return pid_; }
    void signal(int number) const;
    /// Waits until it waits for something: in the middle of a job, for room in the line.
    void awaitSleep() const;
    /// The next line of its output, which wait() does not give again.
    std::string line();
    Result wait();

private:
    UniqueFd out_, err_; ///< files in memory
    pid_t pid_;
    size_t lines_ = 0; ///< bytes of output that line() has given
};

/// A pseudo-terminal's far end: the plotter.
class FarEnd {
public:
    FarEnd();
    const std::string &port() const { return port_; }
    /// The near end as a program opens it.
    UniqueFd openPort() const;
    /// Everything until the near end is closed, or at least so many bytes.
    std::string read(size_t enough = SIZE_MAX);
    void write(const std::string &text);
    /// Waits until something can be read, and leaves it there.
    bool hasHeard() const;
    termios attributes() const;
    void hangUp() { master_ = UniqueFd(); }

private:
    UniqueFd master_;
    std::string port_;
};

/// A process "python3" that has a file open.
struct Bystander : Running {
    Bystander(const std::string &file, bool locks);
};

/// What the command refuses: the exit code, and a part of the message.
struct Refusal {
    Words words;
    int code;
    std::string says;
};

class HostTest : public testing::Test {
protected:
    HostTest();
    ~HostTest() override;

    static Result run(const Words &words) { return Running(words).wait(); }
    /// A shell in which the command is "$0", and the words are "$@".
    static Running shell(const std::string &script, Words words = {});
    /// Expects a failure's form of each, and that nothing is left behind. A print must be refused as a dry run, too.
    void expectRefusals(std::vector<Refusal> rows);
    /// A path in the test's own folder, with the contents given; folders are made as needed.
    std::string file(const std::string &name, const std::string &contents) const;
    std::string path(const std::string &name) const { return folder_ + "/" + name; }
    /// True when no temporary file of the command was left.
    bool isTidy() const;

    std::string folder_;
};

std::string contents(const std::string &path);

/// A plot with so many lines, each with a command boundary.
std::string plotOf(int lines);
