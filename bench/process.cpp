#include "process.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace bench {

namespace {

double secondsOf(const timeval &time) { return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6; }

} // namespace

Finished run(const std::vector<std::string> &arguments) {
    std::vector<char *> words;
    words.reserve(arguments.size() + 1);
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    Finished finished;
    if (error == 0) {
        std::array<char, 4096> bytes;
        for (ssize_t count; (count = read(ends[0], bytes.data(), bytes.size())) > 0;)
            finished.said.append(bytes.data(), static_cast<size_t>(count));
        int status = 0;
        rusage usage{};
        wait4(child, &status, 0, &usage);
        finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        finished.seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    }
    close(ends[0]);
    if (error != 0) throw std::system_error(error, std::generic_category(), arguments[0]);
    return finished;
}

} // namespace bench
