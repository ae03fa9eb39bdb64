// Measures that need a process of their own: peak memory, and instructions counted by callgrind.
#include "far_end.h"
#include "platform/backends.h"
#include "platform/posix/terminal.h"
#include "print.h"
#include "process.h"
#include "rows.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <valgrind/callgrind.h>

namespace bench {

namespace {

constexpr long kCounted = 1000; // pieces

/// A terminal that takes everything at once, and has callgrind write down its counts on the way.
class Taker final : public platform::Terminal {
public:
    explicit Taker(long late) : marks_{kCounted, 2 * kCounted, late, late + kCounted} {}
    int open(const char *, int) override { return 5; }
    int close(int) override { return 0; }
    ssize_t read(int, void *, size_t) override { return 0; }
    ssize_t write(int, const void *, size_t size) override {
        if (++pieces_ == marks_[next_]) {
            CALLGRIND_DUMP_STATS;
            if (next_ < std::size(marks_) - 1) ++next_;
        }
        return static_cast<ssize_t>(size);
    }
    int setStatusFlags(int, int) override { return 0; }
    int ioctl(int, unsigned long, int *lines) override {
        if (lines != nullptr) *lines = 0;
        return 0;
    }
    int tcgetattr(int, termios *attributes) override {
        *attributes = {};
        return 0;
    }
    int tcsetattr(int, int, const termios *) override { return 0; }
    int tcdrain(int) override { return 0; }
    int tcflush(int, int) override { return 0; }
    int identify(int, platform::DeviceIdentity *) override { return 0; }

private:
    long marks_[4];
    size_t next_ = 0;
    long pieces_ = 0;
};

/// The instructions that one dump of callgrind counts.
double countIn(const std::string &path) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("summary:")) return std::stod(line.substr(line.find(':') + 1));
    throw std::runtime_error(path + ": no count of instructions in it; is valgrind installed?");
}

/// Instructions per piece: of the second thousand pieces, and of the thousand behind `late`.
struct Counts {
    double first, later;
};

Counts count(const Settings &settings) {
    const long late = settings.quick ? 20'000 : 1'000'000;
    const Plot plot(kMB * (late / 20'000 + 1)); // more pieces than needed
    std::string folder = "/tmp/orb-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error(folder + " cannot be made");
    const std::string out = folder + "/counts";
    const int status = run({"valgrind", "--quiet", "--tool=callgrind", "--callgrind-out-file=" + out, settings.self,
                            "--under-callgrind", plot.path(), std::to_string(late)})
                           .status;
    Counts counts{};
    if (status == 0) counts = {countIn(out + ".2") / kCounted, countIn(out + ".4") / kCounted};
    std::filesystem::remove_all(folder);
    if (status != 0) throw std::runtime_error("callgrind gave no counts; script/bootstrap --bench installs valgrind");
    return counts;
}

const Counts &counts(const Settings &settings) {
    static const Counts counted = count(settings); // two measures ask
    return counted;
}

/// Peak memory of a print, in kB, its bytes compared.
double peakOf(const Settings &settings, int64_t bytes) {
    const Plot plot(bytes);
    FarEnd farEnd(plot);
    farEnd.listen();
    const Finished child = run({settings.self, "--tell-memory", plot.path(), farEnd.port()});
    farEnd.finish();
    if (child.status != 0) throw std::runtime_error("the printing process failed");
    return std::stod(child.said);
}

} // namespace

int printAndTellMemory(const std::string &plotFile, const std::string &port) {
    const Hasty hasty;
    PrintJob(plotFile, port).run();
    // Not getrusage: its peak includes that of the process before it became this program.
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) printf("%ld\n", std::stol(line.substr(6)));
    return 0;
}

int printUnderCallgrind(const std::string &plotFile, long late) {
    const Hasty hasty;
    Taker taker(late);
    platform::backends().terminal = &taker;
    PrintJob(plotFile, "/dev/taker").run();
    return 0;
}

Row serialInstructions(const Settings &settings) {
    const double instructions = counts(settings).first;
    return {text("%.0f", instructions), "-", instructions, "instructions", 1200};
}

Row instructionsLater(const Settings &settings) {
    const Counts &both = counts(settings);
    return {text("%.0f", both.later), text("%.0f", both.first), both.later / both.first, "", 1.01};
}

Row peakMemory(const Settings &settings) {
    const double small = peakOf(settings, kMB), large = peakOf(settings, settings.quick ? 16 * kMB : 1000 * kMB);
    return {text("%.0f kB", large), text("%.0f kB", small), large - small, "kB more", 1024};
}

} // namespace bench
