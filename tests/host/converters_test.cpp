// The converters themselves on files of the test's own, and programs in their place that behave badly, through PATH.

#include "host/converters/converters.h"
#include "host/host_fixture.h"
#include "host/plugin/stop_signals.h"
#include "host/print/plan.h"
#include "strokes/svg_reader.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace host;
namespace fs = std::filesystem;

namespace {

const std::string kPdf = "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                         "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
                         "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 720 360]/Contents 4 0 R>>endobj\n"
                         "4 0 obj<</Length 20>>stream\n0 0 m 720 360 l S  \n\nendstream endobj\ntrailer<</Root 1 0 R>>\n";

class Converters : public testing::Test {
protected:
    void SetUp() override {
        folder_ = fs::path(testing::TempDir()) / ("converters-" + std::to_string(getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override {
        setenv("PATH", path_.c_str(), 1);
        fs::remove_all(folder_);
    }

    PlotFile file(const std::string &text) {
        std::ofstream(folder_ / "in") << text;
        return PlotFile(folder_ / "in", "drawing");
    }
    std::string size(const std::string &text, FileKind kind) {
        const auto drawing = strokes::readSvg(plainSvgOf(file(text), kind, 1).text, {});
        return std::to_string(drawing.width) + ' ' + std::to_string(drawing.height) + ' ' +
               std::to_string(drawing.strokes.size());
    }
    /// With a shell script as the only program in PATH.
    Result failing(const std::string &script) {
        const fs::path program = folder_ / "rsvg-convert";
        fs::remove(program);
        if (!script.empty()) {
            std::ofstream(program) << "#!/bin/sh\nPATH=" + path_ + "\n" + script;
            fs::permissions(program, fs::perms::owner_all);
        }
        setenv("PATH", folder_.c_str(), 1);
        const PlotFile drawing = file("<svg/>");
        // A program that ends by itself has time for that, however busy the computer is.
        const std::chrono::milliseconds time(script.find("sleep") == std::string::npos ? 30'000 : 1000);
        return failureOf([&] { plainSvgOf(drawing, FileKind::Svg, 1, {time, uint64_t{1} << 28, 4096}); });
    }

    fs::path folder_;
    std::string path_ = getenv("PATH");
};

} // namespace

TEST_F(Converters, KeepTheSizeOfAPage) {
    const std::string line = "><path d='M0 0L9 9' stroke='#000'/></svg>", head = "<svg xmlns='http://www.w3.org/2000/svg' ";
    EXPECT_EQ(size(head + "width='254mm' height='127mm' viewBox='0 0 10 5'" + line, FileKind::Svg),
              "254.000000 127.000000 1");
    EXPECT_EQ(size(head + "width='960' height='480px'" + line, FileKind::Svg), "254.000000 127.000000 1");
    EXPECT_EQ(size(head + "viewBox='0 0 960 480'" + line, FileKind::Svg), "254.000000 127.000000 1");
    EXPECT_EQ(size(kPdf, FileKind::Pdf), "254.000000 127.000000 1");
}

TEST_F(Converters, MakeASheetOfEachPage) {
    std::string text = kPdf;
    text.replace(text.find("[3 0 R]/Count 1"), 15, "[3 0 R 3 0 R]/Count 2");
    file(text);
    PrintOptions options;
    options.plots = {folder_ / "in"};
    auto pages = [&](const char *typed) {
        options.pages = typed;
        std::string all;
        for (const PrintPlan &plan : plansOf(options))
            all += std::to_string(plan.page.value());
        return all;
    };
    for (auto [typed, become] : {std::pair(kEachPage, "12"), {"2", "2"}, {"2,1-", "212"}, {"2-2,1-2", "212"}})
        EXPECT_EQ(pages(typed), become) << typed;
    for (const char *typed : {"3", "3-", "2-9"})
        EXPECT_TRUE(ended(failureOf([&] { pages(typed); }), 2, "it has no page 3; its last page is 2")) << typed;
    EXPECT_TRUE(ended(failureOf([&] { pages("2,1-1000000"); }), 2, "more than 100 sheets"));
    EXPECT_EQ(pagesOf(file("%PDF-1.4")), 1) << "it is for the conversion to refuse it";
}

TEST_F(Converters, SayWhatIsWrongWithAFile) {
    const PlotFile pdf = file(kPdf);
    auto call = [&](int page) { return failureOf([&] { plainSvgOf(pdf, FileKind::Pdf, page); }); };
    EXPECT_TRUE(ended(call(2), 2, "drawing: it has no page 2; its last page is 1"));
    EXPECT_TRUE(ended(call(0), 2));
    EXPECT_TRUE(ended(failureOf([&] { plainSvgOf(file("%PDF-1.4"), FileKind::Pdf, 1); }), 7, "pdftocairo cannot read it"));
}

TEST_F(Converters, AreLimitedWhateverTheyDo) {
    constexpr struct {
        const char *what, *script;
        int code;
        const char *text;
    } kBad[] = {
        {"missing", "", 3, "librsvg2-bin"},
        {"hangs, and what it started as well", "sleep 77.25 & exec sleep 77.25", 7, "within 1 s"},
        {"closes its outputs and hangs", "exec >&- 2>&-; sleep 77.25", 7, "within 1 s"},
        {"leaves its outputs to another", "sleep 77.25 & exit 3", 7, "does not say why"},
        {"floods", "yes", 7, "more than 0 MiB"},
        {"floods what it tells", "yes too bad | head -c 300000 >&2; exit 1", 7, "too bad"},
        {"crashes", "kill -SEGV $$", 7, "it crashed (Segmentation fault)"},
        {"eats memory", "exec python3 -c '[b\"a\" * (1 << 24) for _ in range(99)]' 2>&-", 7, "more memory"},
        {"gives what it has without memory", "echo '<svg/>'; echo cairo error: out of memory >&2", 7, "more memory"},
        {"writes a file", "cd $(dirname $0) && echo x > written || { echo written: refused >&2; exit 1; }", 7, "written: "},
        {"says nothing", "exit 0", 7, "does not say why"},
        {"needs a password", "echo Incorrect password >&2; exit 1", 7, "qpdf --decrypt"},
    };
    for (const auto &[what, script, code, text] : kBad) {
        EXPECT_TRUE(ended(failing(script), code, text)) << what;
    }
    std::error_code none;
    EXPECT_EQ(fs::exists(folder_ / "written") ? fs::file_size(folder_ / "written", none) : 0, 0U);
    const StopOnSignal stop;
    EXPECT_TRUE(ended(failing("kill -INT $PPID; sleep 77.25"), 130));
    setenv("PATH", path_.c_str(), 1);
    EXPECT_NE(system("grep -qsa 'sleep.77[.]25' /proc/[0-9]*/cmdline"), 0) << "something was left behind";
}
