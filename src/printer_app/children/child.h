// A program that runs beside this one, with a pipe from it. All that touches a plotter or reads what a client sent happens
// in such children ("vectorix print", "vectorix preview"): one that crashes, hangs or eats memory takes nothing with it.
// They end with this process, however that ends, so that no plotter is left plotting for nobody.
#pragma once

#include "host/files/unique_fd.h"

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace printer_app {

class Child {
public:
    /// Starts a program found in PATH. It writes to channel (1: its standard output, or another), which read() gives; its
    /// standard input is empty. Throws std::system_error. It lives at most as long as the thread that started it.
    Child(const std::vector<std::string> &words, int channel);
    /// Kills it when it still runs.
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    /// Waits for what it writes and adds that to text. False when it has closed the channel and its standard error.
    bool read(std::string &text, std::chrono::milliseconds wait);
    void signal(int number) const;
    /// Waits for its end: its exit code, or 128 and the signal.
    int wait();
    /// The last of what it wrote to standard error.
    const std::string &diagnostics() const { return diagnostics_; }

private:
    pid_t pid_ = -1;
    host::UniqueFd channel_, errors_;
    std::string diagnostics_;
};

struct Ended {
    int code = -1; ///< -1: it took too long, or wrote without end
    std::string output, diagnostics;
};

/// Runs a program to its end and gives what it wrote to standard output.
Ended runToEnd(const std::vector<std::string> &words, std::chrono::seconds limit);

} // namespace printer_app
