// What goes wrong in the middle of a job: signals, a rival, a plot file that changes, a report that cannot be told. The far
// end holds the job where it is wanted: a plot of this size does not fit into the line.
#include "host/host_fixture.h"

#include <csignal>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>

namespace {

namespace fs = std::filesystem;

/// A print that waits for room in the line.
struct HeldPrint {
    explicit HeldPrint(std::string plotFile)
        : plot(std::move(plotFile)), printing({"print", plot, "--port", plotter.port()}) {
        EXPECT_TRUE(plotter.hasHeard());
        printing.awaitSleep();
    }
    FarEnd plotter;
    std::string plot;
    Running printing;
};

class FaultTest : public HostTest {
protected:
    const std::string plot_ = plotOf(4000);
    const std::string path_ = file("plot.plt", plot_);
};

/// The far end takes nothing: what the line shows is what it holds, but for the end of a piece under way.
TEST_F(FaultTest, TheProgressLineIsTrueWhileThePlotterHoldsTheLine) {
    FarEnd plotter, screen;
    Running printing = shell("exec \"$0\" \"$@\" 2>" + screen.port(), {"print", path_, "--port", plotter.port()});
    std::string shown;
    while (shown.find(": held by XOFF, or not taking data") == std::string::npos && screen.hasHeard())
        shown += screen.read(1);
    printing.signal(SIGINT);
    shown += screen.read();
    EXPECT_TRUE(ended(printing.wait(), 130));
    size_t heard = plotter.read().size();
    EXPECT_TRUE(holds(shown, "\r\x1B[K\x1B[31mvectorix:"));
    size_t at = shown.find(" of 81 791 bytes  waiting "), from = shown.rfind("% ", at) + 2;
    std::string figure = shown.substr(from, at - from);
    std::erase(figure, ' ');
    EXPECT_LE(std::stoul(figure), heard) << shown;
    EXPECT_GE(std::stoul(figure) + 64, heard) << shown;
    EXPECT_TRUE(holds(shown, "the plotter still held of them is not known"));
}

TEST_F(FaultTest, LeavesThePortFitForTheNextPrint) {
    constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGKILL};
    std::deque<HeldPrint> jobs;
    std::vector<Running> next;
    std::vector<UniqueFd> kept;
    const std::string small = file("next.plt", plotOf(1));
    for (int signal : kSignals) {
        SCOPED_TRACE(signal);
        auto &[plotter, name, printing] = jobs.emplace_back(path_);
        std::string heard = plotter.read(100);
        plotter.write("\x13"); // and never an XON again
        printing.awaitSleep();
        printing.signal(signal);
        if (signal == SIGINT) printing.signal(signal); // an impatient user
        const Result result = printing.wait();
        EXPECT_TRUE(ended(result, signal == SIGKILL ? -SIGKILL : 130));
        EXPECT_EQ(result.err.find("vectorix: stopped: sent ") != std::string::npos, signal != SIGKILL) << result.err;
        EXPECT_TRUE(isTidy());
        plotter.write("\x11"); // switched on again
        heard += plotter.read();
        EXPECT_TRUE(plot_.starts_with(heard.substr(0, heard.rfind(";PU;SP0;")))) << heard; // the pen is put away
        kept.push_back(plotter.openPort()); // else the far end would be at its end until the next print opens the line
        next.emplace_back(Words{"print", small, "--port", plotter.port()});
    }
    for (size_t i = 0; i < next.size(); ++i) {
        EXPECT_EQ(jobs[i].plotter.read(plotOf(1).size()), plotOf(1)) << kSignals[i];
        EXPECT_TRUE(ended(next[i].wait(), 0)) << kSignals[i];
    }
}

TEST_F(FaultTest, ASignalEndsWhateverIsWaitedFor) {
    const std::string disturbed = "LD_PRELOAD=" DISTURBED " ASAN_OPTIONS=verify_asan_link_order=0 exec \"$0\" \"$@\"";
    const std::tuple<Words, std::string, int> kRows[] = {{{"print", path_}, "", 0},
                                                         {{"send", "IN;"}, "", 0},
                                                         {{"limits"}, "", 0},
                                                         {{"print", path_}, "HELD_FOR_EVER=a ", SIGTERM}};
    for (auto [words, held, secondSignal] : kRows) {
        SCOPED_TRACE(held + words[0]);
        FarEnd plotter;
        words.insert(words.end(), {"--port", plotter.port()});
        Running command = shell(held + disturbed, words);
        ASSERT_TRUE(plotter.hasHeard());
        command.awaitSleep();
        command.signal(SIGINT);
        command.signal(secondSignal);
        EXPECT_TRUE(ended(command.wait(), 130));
    }
    FarEnd plotter; // that goes away while the port is closed
    Running sending = shell(disturbed, {"send", "IN;", "--port", plotter.port()});
    EXPECT_EQ(plotter.read(3), "IN;");
    sending.awaitSleep();
    plotter.hangUp();
    sending.signal(SIGALRM);
    EXPECT_TRUE(ended(sending.wait(), 6, "may not have reached it"));
    EXPECT_TRUE(ended(shell(disturbed, {"preview", path_, "-o", path("p.pdf")}).wait(), -SIGINT)) << "while it writes it";
    EXPECT_FALSE(fs::exists(path("p.pdf")));
}

TEST_F(FaultTest, TellsWhatBecameOfThePlotFile) {
    const struct {
        const char *what;
        void (*happens)(HeldPrint &job);
        int code;
        bool isWhole; ///< the plot as it was at the start
        const char *says;
    } kRows[] = {
        {"shrinks", [](auto &job) { fs::resize_file(job.plot, 70'000); }, 1, false, "from 81 791 to 70 000 bytes"},
        {"grows", [](auto &job) { std::ofstream(job.plot, std::ios::app) << "PU;"; }, 1, true, "to 81 794 bytes"},
        {"is written to", [](auto &job) { std::fstream(job.plot).seekp(70'000) << "\xE9"; }, 1, false,
         "part old and part new"},
        {"is written to, and dated back",
         [](auto &job) {
             auto before = fs::last_write_time(job.plot);
             std::fstream(job.plot).seekp(70'000) << "X";
             fs::last_write_time(job.plot, before);
         },
         1, false, "its dates were set"},
        {"is removed", [](auto &job) { fs::remove(job.plot); }, 0, true, "note: the plot file was replaced or removed"},
        {"is replaced", [](auto &job) { fs::rename(job.plot + ".new", job.plot); }, 0, true, "is the plot as it was before"},
        {"an alarm that whoever started the command had set", [](auto &job) { job.printing.signal(SIGALRM); }, 0, true, ""},
    };
    std::deque<HeldPrint> jobs; // side by side: each takes the two seconds of the close
    std::vector<std::future<std::string>> heard;
    for (const auto &row : kRows) {
        file(row.what + std::string(".new"), "IN;");
        HeldPrint &job = jobs.emplace_back(file(row.what, plot_));
        row.happens(job);
        heard.push_back(std::async(std::launch::async, [&job] { return job.plotter.read(); }));
    }
    for (size_t i = 0; i < jobs.size(); ++i) {
        EXPECT_EQ(heard[i].get() == plot_, kRows[i].isWhole) << kRows[i].what;
        EXPECT_TRUE(ended(jobs[i].printing.wait(), kRows[i].code, kRows[i].says)) << kRows[i].what;
    }
}

TEST_F(FaultTest, SendsAllWhereverItsReportGoes) {
    constexpr std::tuple<const char *, int, const char *> kRows[] = {
        {"exec \"$0\" \"$@\" <&- >&- 2>&-", 0, ""},
        {"\"$0\" \"$@\" >/dev/full", 1, "standard output: no space left on device"},
        {"\"$0\" \"$@\" -v 2>/dev/full", 0, ""},
        {"{ \"$0\" \"$@\"; echo $? >&2; } | :", 0, "0\n"},
    };
    const std::string plot = plotOf(2), path = file("small.plt", plot);
    FarEnd plotters[std::size(kRows)];
    std::vector<Running> printing;
    for (FarEnd &plotter : plotters)
        printing.push_back(shell(std::get<0>(kRows[printing.size()]), {"print", path, "--port", plotter.port()}));
    for (size_t i = 0; i < printing.size(); ++i) {
        const auto &[script, code, says] = kRows[i];
        EXPECT_EQ(plotters[i].read(), plot) << script;
        EXPECT_TRUE(ended(printing[i].wait(), code, says)) << script;
    }
}

} // namespace
