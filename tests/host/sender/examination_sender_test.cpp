// The examination of a plot against the sender itself: for random plots of every emulation, what it says will be withheld is
// what the report of the print says.
#include "host/examination/examination.h"
#include "support/job.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace {

std::mt19937 generator; // with its fixed first seed: each run sees the same plots

size_t below(size_t limit) { return generator() % limit; }

/// Made of what cutting depends on. Some are exactly a chunk long, or a byte to either side.
std::string randomPlot() {
    static const std::string kParts[] = {
        ";PD", ",D", "\3D", "D", ";", ",", "@", "\x03", "PU1,2", "12,34", "LBtext", std::string(17, 'x'), "\r\n", "\x1B.("};
    static const std::string kRare[] = {std::string(1, '\0'), std::string(3, '\0'), "\x80", std::string(300, ' ')};
    std::string plot;
    size_t rareOneIn = below(2) == 0 ? 100'000 : 60;
    for (size_t length = 1 + below(700); plot.size() < length;)
        plot += below(rareOneIn) == 0 ? kRare[below(std::size(kRare))] : kParts[below(std::size(kParts))];
    constexpr size_t kEdges[] = {16, 64, 255};
    if (below(8) == 0) plot.resize(kEdges[below(3)] - 1 + below(3), ';');
    return plot;
}

TEST(ExaminationAgainstSender, SaysWhatWillBeWithheld) {
    constexpr std::pair<const char *, const char *> kTerminators[] = {// in XML, and what it is
                                                                      {";", ";"},
                                                                      {",", ","},
                                                                      {"&#3;", "\x03"},
                                                                      {";P", ";P"},
                                                                      {"", ""}};
    const std::string path = testing::TempDir() + "examination_sender_" + std::to_string(getpid()) + ".plt";
    int counts[2] = {};
    for (int i = 0; i < 60 * 37; ++i) {
        const int emulation = 17001 + i / 60;
        const auto &[xml, terminator] = kTerminators[below(40) == 0 ? 4 : below(4)];
        const host::PlotRules rules{emulation, terminator};
        std::string plot = randomPlot();
        if (below(2) == 0) plot += rules.endMark();
        std::ofstream(path, std::ios::binary) << plot;
        host::Examination found = host::examine(host::PlotFile(path), rules);

        scripted::Platform platform;
        platform.terminal.logWrites = false;
        ORB_getVectorixCS2(jobs::printRecord(platform, jobs::simpleJob(emulation, xml), plot));
        ORB_JobReport report = jobs::lastReport();
        SCOPED_TRACE(testing::Message() << emulation << " \"" << xml << "\" " << testing::PrintToString(plot));
        ASSERT_EQ(report.sentBytes, found.fileBytes - found.withheldBytes);
        const std::string sent = plot.substr(0, static_cast<size_t>(report.sentBytes));
        ASSERT_TRUE(platform.terminal.written == sent || plot.find('\0') != std::string::npos);
        ASSERT_EQ(report.piecesSent, static_cast<uint64_t>(found.pieces));
        ASSERT_EQ(report.stopReason == kORB_StopNotASCII, found.flaw == host::Flaw::NotASCII);
        ASSERT_EQ(report.firstErrorID == kORB_ErrorNoTerminator, found.flaw == host::Flaw::NoTerminator);
        int64_t padding = found.innerPaddingBytes + found.endPaddingBytes;
        ASSERT_EQ(found.flaw == host::Flaw::None, found.withheldBytes == padding && report.sentBytes > 0);
        ++counts[found.withheldBytes > 0];
    }
    std::filesystem::remove(path);
    EXPECT_GT(std::min(counts[0], counts[1]), 300) << "too few plots that tell something";
}

} // namespace
