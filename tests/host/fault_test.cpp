// What goes wrong in the middle of a job: signals, a rival, a plot file that changes, a report that cannot be told. The far
// end holds the job where it is wanted: a plot of this size does not fit into the line.
#include "host/host_fixture.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <optional>

namespace {

class FaultTest : public HostTest {
protected:
    void expectNextPrintWorks(FarEnd &plotter) {
        Running printing({"print", file("next.plt", plotOf(1)), "--port", plotter.port()}, false);
        plotter.awaitOpen();
        EXPECT_EQ(plotter.read(), plotOf(1));
        EXPECT_EQ(printing.wait().code, 0);
    }

    const std::string plot_ = plotOf(4000);
    const std::string path_ = file("plot.plt", plot_);
};

/// One that whoever started the command had set.
TEST_F(FaultTest, AnAlarmIsNoStop) {
    FarEnd plotter;
    Running printing({"print", path_, "--port", plotter.port()}, false);
    ASSERT_TRUE(plotter.hasHeard());
    printing.awaitSleep();
    printing.signal(SIGALRM);
    EXPECT_EQ(plotter.read(), plot_);
    EXPECT_EQ(printing.wait().code, 0);
}

/// The far end takes nothing: what the line shows is what it holds, but for the end of a piece under way.
TEST_F(FaultTest, TheProgressLineIsTrueWhileThePlotterHoldsTheLine) {
    FarEnd plotter;
    Running printing({"print", path_, "--port", plotter.port()}, true);
    printing.awaitError(": held by XOFF, or not taking data");
    printing.signal(SIGINT);
    Result result = printing.wait();
    size_t heard = plotter.read().size();
    EXPECT_NE(result.err.find("\r\x1B[K\x1B[31mvectorix:"), std::string::npos) << result.err;
    const std::string shown = " of 81 791 bytes  waiting ";
    size_t at = result.err.find(shown), from = result.err.rfind("% ", at) + 2;
    std::string figure = result.err.substr(from, at - from);
    std::erase(figure, ' ');
    EXPECT_LE(std::stoul(figure), heard) << result.err;
    EXPECT_GE(std::stoul(figure) + 64, heard) << result.err;
    EXPECT_NE(result.err.find("the plotter still held of them is not known"), std::string::npos) << result.err;
}

TEST_F(FaultTest, LeavesThePortFitForTheNextPrint) {
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
        SCOPED_TRACE(signal);
        FarEnd plotter;
        Running printing({"print", path_, "--port", plotter.port()}, false);
        std::string heard = plotter.read(100);
        plotter.write("\x13"); // and never an XON again
        printing.awaitSleep();
        printing.signal(signal);
        if (signal == SIGINT) printing.signal(signal); // an impatient user
        Result result = printing.wait();
        EXPECT_EQ(result.code, signal == SIGKILL ? -SIGKILL : 130);
        EXPECT_EQ(result.err.find("vectorix: stopped: sent ") != std::string::npos, signal != SIGKILL) << result.err;
        EXPECT_TRUE(isTidy());
        plotter.write("\x11"); // switched on again
        heard += plotter.read();
        EXPECT_EQ(plot_.compare(0, heard.size(), heard), 0);
        expectNextPrintWorks(plotter);
    }
}

TEST_F(FaultTest, ASignalEndsWhateverIsWaitedFor) {
    const auto disturbed = [](const char *how, std::vector<std::string> words) {
        words.insert(words.begin(), {"LD_PRELOAD=" DISTURBED, "ASAN_OPTIONS=verify_asan_link_order=0", how, VECTORIX});
        return words;
    };
    const struct {
        std::vector<std::string> words;
        const char *held;
        int secondSignal;
    } rows[] = {{{"print", path_}, "HELD=a", 0},
                {{"send", "IN;"}, "HELD=a", 0},
                {{"limits"}, "HELD=a", 0},
                {{"print", path_}, "HELD_FOR_EVER=a", SIGTERM}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.words[0] + row.held);
        FarEnd plotter;
        std::vector<std::string> words = disturbed(row.held, row.words);
        words.insert(words.end(), {"--port", plotter.port()});
        Running command(words, false, "", "/usr/bin/env");
        ASSERT_TRUE(plotter.hasHeard());
        command.awaitSleep();
        command.signal(SIGINT);
        command.signal(row.secondSignal);
        EXPECT_EQ(command.wait().code, 130);
    }
    Running drawing(disturbed("HELD=a", {"preview", path_, "-o", path("p.pdf")}), false, "", "/usr/bin/env");
    EXPECT_EQ(drawing.wait().code, -SIGINT) << "while it writes the picture";
    EXPECT_FALSE(std::filesystem::exists(path("p.pdf")));
}

TEST_F(FaultTest, TellsWhatBecameOfThePlotFile) {
    namespace fs = std::filesystem;
    struct Row {
        const char *what;
        void (*change)(const std::string &path);
        int code;
        bool isWhole; ///< the plot as it was at the start
        const char *says;
    };
    const Row kRows[] = {
        {"shrinks", [](auto &path) { fs::resize_file(path, 70'000); }, 1, false, "from 81 791 to 70 000 bytes"},
        {"grows", [](auto &path) { std::ofstream(path, std::ios::app) << "PU;"; }, 1, true, "to 81 794 bytes"},
        {"is written to", [](auto &path) { std::fstream(path).seekp(70'000) << "\xE9"; }, 1, false, "part old and part new"},
        {"is written to, and dated back",
         [](auto &path) {
             auto before = fs::last_write_time(path);
             std::fstream(path).seekp(70'000) << "X";
             fs::last_write_time(path, before);
         },
         1, false, "its dates were set"},
        {"is removed", [](auto &path) { fs::remove(path); }, 0, true, "note: the plot file was replaced or removed"},
        {"is replaced",
         [](auto &path) {
             std::ofstream(path + ".new") << "IN;";
             fs::rename(path + ".new", path);
         },
         0, true, "what was printed is the plot as it was before"},
    };
    struct Job {
        FarEnd plotter;
        std::string path;
        std::optional<Running> printing;
        std::future<std::string> heard;
    };
    std::vector<std::unique_ptr<Job>> jobs; // side by side: each takes the two seconds of the close
    for (const Row &row : kRows) {
        Job &job = *jobs.emplace_back(std::make_unique<Job>());
        job.path = file(row.what, plot_);
        job.printing.emplace(std::vector<std::string>{"print", job.path, "--port", job.plotter.port()}, false);
        ASSERT_TRUE(job.plotter.hasHeard());
        job.printing->awaitSleep();
        row.change(job.path);
        job.heard = std::async(std::launch::async, [&plotter = job.plotter] { return plotter.read(); });
    }
    for (size_t i = 0; i < jobs.size(); ++i) {
        SCOPED_TRACE(kRows[i].what);
        EXPECT_EQ(jobs[i]->heard.get() == plot_, kRows[i].isWhole);
        Result result = jobs[i]->printing->wait();
        EXPECT_EQ(result.code, kRows[i].code) << result.err;
        EXPECT_NE(result.err.find(kRows[i].says), std::string::npos) << result.err;
    }
}

TEST_F(FaultTest, SendsAllWhereverItsReportGoes) {
    const struct {
        const char *what;
        const char *redirections;
        int code;
        const char *says;
    } kRows[] = {
        {"no standard output", ">&-", 0, ""},
        {"no standard streams", "<&- >&- 2>&-", 0, ""},
        {"a full disk", ">/dev/full", 1, "standard output: no space left on device"},
        {"a full disk under the errors", "-v 2>/dev/full", 0, ""},
        {"a reader that leaves", "", 0, ""},
    };
    const std::string plot = plotOf(2), path = file("small.plt", plot);
    FarEnd plotters[std::size(kRows)];
    std::vector<std::unique_ptr<Running>> printing;
    for (size_t i = 0; i < std::size(kRows); ++i) {
        printing.push_back(std::make_unique<Running>(std::vector<std::string>{"print", path, "--port", plotters[i].port()},
                                                     false, kRows[i].redirections));
    }
    printing.back()->ignoreOutput();
    for (size_t i = 0; i < std::size(kRows); ++i) {
        SCOPED_TRACE(kRows[i].what);
        EXPECT_EQ(plotters[i].read(), plot) << "no more, and no less";
        Result result = printing[i]->wait();
        EXPECT_EQ(result.code, kRows[i].code) << result.err;
        EXPECT_NE(result.err.find(kRows[i].says), std::string::npos) << result.err;
    }
}

} // namespace
