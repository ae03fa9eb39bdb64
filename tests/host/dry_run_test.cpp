// Prints that are only looked at: what they say, that they end as the print would, and that nothing is sent or made.
#include "host/host_fixture.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

class DryRunTest : public HostTest {
protected:
    Result dryRun(std::vector<std::string> words) {
        words.insert(words.begin(), "print");
        words.push_back("--dry-run");
        return run(words);
    }
};

TEST_F(DryRunTest, SaysWhatWouldBeSentAndForHowLong) {
    std::string plot = file("plot", plotOf(400));
    auto bytes = static_cast<double>(std::filesystem::file_size(plot));
    FarEnd plotter;
    const struct {
        std::vector<std::string> settings;
        double bitsPerByte, rate;
    } kLines[] = {{{}, 10, 9600}, {{"--baud", "300", "--bits", "7", "--parity", "even", "--stop-bits", "2"}, 11, 300}};
    for (const auto &row : kLines) {
        std::vector<std::string> words = {plot, "--port", plotter.port(), "--json"};
        words.insert(words.end(), row.settings.begin(), row.settings.end());
        Result result = dryRun(words);
        EXPECT_EQ(result.code, 0) << result.err;
        auto report = nlohmann::json::parse(result.out);
        EXPECT_EQ(report["dryRun"], true);
        EXPECT_EQ(report["bytesToSend"], bytes);
        EXPECT_EQ(report["withheldBytes"], 0);
        EXPECT_EQ(report["line"]["baud"], row.rate);
        EXPECT_DOUBLE_EQ(report["estimatedSeconds"], bytes * row.bitsPerByte / row.rate);
    }
    Result text = dryRun({plot, "--port", plotter.port()});
    EXPECT_NE(text.out.find("9600 bit/s, 8 data bits, parity none, 1 stop bit, handshake xonxoff"), std::string::npos)
        << text.out;
    // Were anything sent before, it would be read first.
    Result sent = run({"send", "IN;", "--port", plotter.port()});
    EXPECT_EQ(sent.code, 0) << sent.err;
    EXPECT_EQ(plotter.read(3), "IN;");
}

/// What is refused before anything is opened is refused here as well: the tests of those refusals try both.
TEST_F(DryRunTest, EndsAsThePrintWould) {
    std::string plot = file("plot", plotOf(3)), part = file("part", "IN;PD1,1;PU2,2");
    std::string badJob = file("job", "<plist><dict><key>X Tile :</key><integer>12x</integer></dict></plist>");
    std::string bareJob =
        file("bare", "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer></dict></plist>");
    std::string oddJob = file("odd", "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer>"
                                     "<key>Plotfile terminator :</key><string>;</string>"
                                     "<key>X Tile :</key><string>a</string></dict></plist>");
    FarEnd plotter;
    const struct {
        const char *what;
        std::vector<std::string> words;
        int code;
        const char *says;
    } kRows[] = {
        {"an unfit plot all the same", {part, "--port", plotter.port(), "--force"}, 1, "5 bytes at the end not sent"},
        {"an unfit job", {plot, "--port", plotter.port(), "--job", badJob}, 7, "\"12x\" is no integer"},
        {"a job without a terminator", {plot, "--port", plotter.port(), "--job", bareJob}, 7, "names no terminator"},
        {"a job of which not all is read", {plot, "--port", plotter.port(), "--job", oddJob}, 0, "must be a number"},
        {"a file", {plot, "--capture", path("o")}, 0, ""},
        {"a picture", {plot, "--virtual", path("o.svg")}, 0, ""},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        Result result = dryRun(row.words);
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
    }
    EXPECT_FALSE(std::filesystem::exists(path("o")));
    EXPECT_FALSE(std::filesystem::exists(path("o.svg")));
    EXPECT_TRUE(isTidy());
}

} // namespace
