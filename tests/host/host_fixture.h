// Runs the command, or another host program, as a user would, and plays the far end of its serial line.
#pragma once

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <sys/types.h>
#include <termios.h>
#include <vector>

/// A file descriptor with an owner.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    Descriptor &operator=(Descriptor &&other) noexcept;
    ~Descriptor() { reset(); }
    int get() const { return fd_; }
    void reset();

private:
    int fd_;
};

struct Result {
    int code = -1;
    std::string out;
    std::string err;
};

/// The command while it runs.
class Running {
public:
    /// terminal: standard error is one. redirections: as a shell takes them.
    Running(const std::vector<std::string> &words, bool terminal, const std::string &redirections = "",
            const std::string &program = VECTORIX);
    Running(const Running &) = delete;
    Running &operator=(const Running &) = delete;
    ~Running();
    pid_t pid() const { return pid_; }
    void signal(int number) const;
    /// Waits until it waits for something: in the middle of a job, for room in the line.
    void awaitSleep() const;
    /// From now on nobody reads its output.
    void ignoreOutput() { out_.reset(); }
    /// The next line of its output, which wait() does not give again.
    std::string line();
    /// Waits until its error output holds a text.
    void awaitError(const std::string &text);
    /// Takes its outputs until it ends.
    Result wait();

private:
    pid_t pid_;
    Descriptor out_;
    Descriptor err_;
    std::string errSoFar_;
};

/// A pseudo-terminal's far end: the plotter.
class FarEnd {
public:
    FarEnd();
    const std::string &port() const { return port_; }
    /// Everything until the near end is closed, or at least so many bytes.
    std::string read(size_t enough = SIZE_MAX);
    void write(const std::string &text);
    /// After a command has closed the line: waits until another opens it.
    void awaitOpen() const;
    /// Waits until something can be read, and leaves it there.
    bool hasHeard() const;
    termios attributes() const;
    void hangUp() { master_.reset(); }

private:
    Descriptor master_;
    std::string port_;
};

/// What the command refuses: the exit code, and a part of the message.
struct Refusal {
    std::vector<std::string> words;
    int code;
    std::string says;
};

/// A process of its own that has a port open, or only lives.
class Bystander {
public:
    Bystander(const std::string &port, bool locks);
    Bystander(const Bystander &) = delete;
    Bystander &operator=(const Bystander &) = delete;
    ~Bystander();
    pid_t pid() const { return pid_; }

private:
    pid_t pid_;
};

class HostTest : public testing::Test {
protected:
    HostTest();
    ~HostTest() override;

    Result run(const std::vector<std::string> &words) { return Running(words, false).wait(); }
    /// Expects a failure's form of each, and that nothing is left behind. A print must be refused as a dry run, too.
    void expectRefusals(std::initializer_list<Refusal> rows);
    /// A path in the test's own folder, with the contents given; folders are made as needed.
    std::string file(const std::string &name, const std::string &contents) const;
    std::string path(const std::string &name) const { return folder_ + "/" + name; }
    static std::string contents(const std::string &path);
    /// True when no temporary file of the command was left.
    bool isTidy() const;

    std::string folder_;
};

/// A plot with so many lines, each with a command boundary.
std::string plotOf(int lines);
