#include "virtual_plotter/drawing/outside.h"

#include <gtest/gtest.h>

#include <cairo/cairo.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace virtual_plotter;
namespace fs = std::filesystem;

constexpr const char *kEndings[] = {".svg", ".png", ".pdf"};
constexpr double kDotsPerMillimetre = 10;
constexpr uint32_t kWhite = 0xFFFFFF;

Sheet sheetOf(const char *text) {
    std::string error;
    return parseSheet(text, error).value();
}

TEST(Sheet, Sizes) {
    constexpr struct {
        const char *text;
        Point size, area;
    } kSheetCases[] = {
        {"a4-portrait", {210, 297}, {7650, 10900}},
        {"A0", {1189, 841}, {46760, 32840}},
        {"297.5X100", {297.5, 100}, {11100, 3200}},
        {"10x20000", {10, 20000}, {320, 799200}}, // a narrow strip keeps most of its width
    };
    for (const auto &c : kSheetCases) {
        const Sheet sheet = sheetOf(c.text);
        EXPECT_EQ((Point{sheet.width, sheet.height}), c.size) << c.text;
        EXPECT_EQ(sheet.hardClip.upper, c.area) << c.text;
    }
    std::string error;
    for (const char *text :
         {"", "a4 ", "x210", "297x210mm", "297 x 210", "297x210-portrait", "9.9x100", "nanx100", "100xnan", "100x20001"})
        EXPECT_FALSE(parseSheet(text, error).has_value()) << text;
    EXPECT_EQ(error, "sheet 100x20001: each side must be 10 to 20000 millimetres long");
}

TEST(Sheet, AreasCountAsTheirPlotter) {
    std::string error;
    const Sheet area = parseArea("-100, -50,172.5,150", error).value();
    EXPECT_EQ((Point{area.width, area.height}), (Point{272.5, 200}));
    EXPECT_EQ(areaOrigin(area), (Point{100, 50}));
    for (const char *text : {"", "0,0,100", "0,0,100,100,", "0,0,100,9", "100,0,0,100", "0,0,nan,100", "0,0,100001,100"})
        EXPECT_FALSE(parseArea(text, error).has_value()) << text;
}

/// A PNG of an A4 sheet, read back.
class Dots {
public:
    explicit Dots(const std::string &path)
        : m_surface(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy) {}
    int width() const { return cairo_image_surface_get_width(m_surface.get()); }
    /// By plotter units: the margins are 12.25 and 9.375 mm.
    uint32_t at(double x, double y) const {
        const auto column = static_cast<ptrdiff_t>((12.25 + x / 40) * kDotsPerMillimetre);
        const auto row = static_cast<ptrdiff_t>((210 - 9.375 - y / 40) * kDotsPerMillimetre);
        const unsigned char *data = cairo_image_surface_get_data(m_surface.get());
        uint32_t value;
        memcpy(&value, data + row * cairo_image_surface_get_stride(m_surface.get()) + column * 4, sizeof value);
        return value & 0xFFFFFF;
    }

private:
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> m_surface;
};

class PictureTest : public testing::Test {
protected:
    PictureTest() {
        std::string pattern = fs::temp_directory_path() / "picture-XXXXXX";
        m_folder = mkdtemp(pattern.data());
    }
    ~PictureTest() override { fs::remove_all(m_folder); }

    std::string path(const std::string &name) const { return m_folder / name; }
    auto fileCount() const { return std::distance(fs::directory_iterator(m_folder), {}); }
    std::string contents(const std::string &name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void draw(const std::string &name, void (*drawing)(PenSink &)) const {
        Picture picture(sheetOf("a4"), {.dotsPerInch = kDotsPerMillimetre * 25.4});
        auto error = picture.open(path(name));
        ASSERT_FALSE(error.has_value()) << error->message;
        drawing(picture);
        error = picture.finish();
        ASSERT_FALSE(error.has_value()) << error->message;
    }

    fs::path m_folder;
};

// 100 mm to the right from the corner of the pen's area, then 50 mm up; and a dot.
void drawCorner(PenSink &sink) {
    sink.setPen(1, 1.0);
    sink.begin({0, 0});
    sink.line({4000, 0});
    sink.line({4000, 2000});
    sink.setPen(2, 4.0);
    sink.begin({400, 1000});
}

/// The corner, a dot of each pen, a line that is filled over, a long one of many points, and many dots beside each other.
void drawPens(PenSink &sink) {
    drawCorner(sink);
    for (int pen = 0; pen <= 9; ++pen) {
        sink.setPen(pen, 4.0);
        sink.begin({pen * 400.0, 3000});
    }
    sink.setPen(3, 0); // the thinnest line is still one
    sink.begin({0, 4000});
    sink.line({4000, 4000});
    sink.setPen(2, 2.0);
    sink.begin({5000, 2000});
    sink.line({9000, 2000});
    sink.setPen(4, 2.0);
    const Point squares[] = {{6000, 1000}, {8000, 1000}, {8000, 3000}, {6000, 3000},
                             {6800, 1400}, {7200, 1400}, {7200, 1800}, {6800, 1800}};
    const size_t ends[] = {4, 8};
    sink.fill(squares, ends);
    sink.line({9000, 3600});
    sink.begin({0, 5000});
    for (int i = 1; i <= 10000; ++i)
        sink.line({i * 1.0, 5000});
    for (int i = 0; i <= 10000; ++i)
        sink.begin({i * 1.0, 6000});
    sink.setPen(2, 1.0);
    sink.begin({6100, 2300});
    sink.line({6700, 2500});
}

TEST_F(PictureTest, InkIsWhereItWasDrawn) {
    draw("pens.png", drawPens);
    const Dots dots(path("pens.png"));
    EXPECT_EQ(dots.width(), 2970);
    const auto colourOf = [&dots](int pen) { return dots.at(pen * 400, 3000); };
    std::set<uint32_t> colours;
    for (int pen = 0; pen <= 8; ++pen)
        EXPECT_TRUE(colours.insert(colourOf(pen)).second) << pen;
    EXPECT_EQ(colourOf(9), colourOf(1));
    EXPECT_EQ(colourOf(1), 0x111111U) << "black";
    EXPECT_NE(dots.at(2000, 4000), kWhite);

    constexpr struct {
        const char *what;
        double x, y;
        int pen; // 0: no ink
    } kPlaces[] = {
        {"left end, half the pen's width out", -16, 0, 1},
        {"left of it", -26, 0, 0},
        {"right edge", 4016, 1000, 1},
        {"right of it", 4026, 1000, 0},
        {"upper end", 4000, 2016, 1},
        {"above it", 4000, 2026, 0},
        {"a dot to the right", 872, 3000, 2},
        {"but round", 864, 2936, 0},
        {"beside the fill", 5400, 2000, 2},
        {"a fill covers what was before", 7000, 2000, 4},
        {"a hole", 7000, 1600, 0},
        {"goes on where the last stroke ended", 9000, 3000, 4},
    };
    EXPECT_EQ(colourOf(0), kWhite);
    for (const auto &p : kPlaces)
        EXPECT_EQ(dots.at(p.x, p.y), colourOf(p.pen)) << p.what;
    for (int x = 0; x < 10000; ++x)
        EXPECT_TRUE(dots.at(x, 5000) == colourOf(4) && dots.at(x, 6000) == colourOf(4)) << "a gap at " << x;
    for (int x = 6050; x < 6750; ++x)
        EXPECT_LT(dots.at(x, 2400) >> 8 & 0xFF, 0x50U) << "paper between red and blue at " << x;
}

TEST_F(PictureTest, ColoursThatMeetFindRoomInThePalette) {
    draw("two.png", [](PenSink &sink) {
        for (int pen = 1; pen <= 2; ++pen) {
            sink.setPen(pen, 2.0);
            sink.begin({1000, pen * 2000.0});
            sink.line({5000, 6000 - pen * 2000.0});
        }
    });
    EXPECT_NE(contents("two.png").find("PLTE"), std::string::npos);
    const Dots dots(path("two.png"));
    EXPECT_EQ(dots.at(3000, 3000), 0xD21F26U) << "red over black";
    for (int x = 2970; x <= 3030; ++x)
        EXPECT_LE(dots.at(x, 2960) >> 8 & 0xFF, 0x1FU) << "paper between red and black at " << x;
}

TEST_F(PictureTest, AnyNumberOfProcessorsDrawsTheSame) {
    draw("all.png", drawPens);
    cpu_set_t all, one;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
    draw("one.png", drawPens);
    sched_setaffinity(0, sizeof all, &all);
    EXPECT_TRUE(contents("all.png") == contents("one.png"));
}

TEST_F(PictureTest, GreyIsWhatThePenDoesNotReach) {
    draw("grey.png", [](PenSink &sink) {
        GreyOutside parted(dynamic_cast<Picture &>(sink), {{1000, 1000}, {5000, 5000}});
        parted.setPen(2, 2.0);
        parted.begin({0, 2000});
        parted.line({6000, 2000});
        parted.begin({0, 0});
        parted.line({6000, 0});
        parted.line({4000, 1500});
        parted.begin({500, 2500});
        const Point square[] = {{4000, 3000}, {6000, 3000}, {6000, 4000}, {4000, 4000}};
        const size_t ends[] = {4};
        parted.fill(square, ends);
    });
    const Dots dots(path("grey.png"));
    for (const Point p : {Point{500, 2000}, {5500, 2000}, {3000, 0}, {500, 2500}, {5500, 3500}})
        EXPECT_EQ(dots.at(p.x, p.y), 0xA0A0A0U) << p.x << ',' << p.y;
    for (const Point p : {Point{3000, 2000}, {4000, 1500}, {4500, 3500}})
        EXPECT_EQ(dots.at(p.x, p.y), 0xD21F26U) << p.x << ',' << p.y;
}

TEST_F(PictureTest, FilesSayTheSizeOfTheSheet) {
    for (const char *ending : kEndings)
        draw(std::string("sheet") + ending, drawCorner);
    const std::string svg = contents("sheet.svg"), pdf = contents("sheet.pdf");
    for (const char *words :
         {"width=\"297mm\" height=\"210mm\" viewBox=\"0 0 297 210\"", "matrix(0.025 0 0 -0.025 12.25 200.625)",
          "stroke-width=\"40\" d=\"M0 0L4000 0 4000 2000\"", "stroke-width=\"160\" d=\"M400 1000h0\""})
        EXPECT_NE(svg.find(words), std::string::npos) << words << " in " << svg;
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 841.889"), std::string::npos);
    EXPECT_EQ(pdf.find("Date"), std::string::npos); // tomorrow's file would be another
    EXPECT_NE(contents("sheet.png").find(std::string("pHYs\0\0\x27\x10\0\0\x27\x10\x01", 13)), std::string::npos);
}

TEST_F(PictureTest, ResolutionIsLoweredForLargeSheets) {
    EXPECT_EQ(pngResolution(sheetOf("a0"), 200), 200);
    Picture picture(sheetOf("20000x10"));
    ASSERT_FALSE(picture.open(path("strip.png")).has_value());
    EXPECT_NE(picture.note().find("41 dots per inch"), std::string::npos) << picture.note();
    drawCorner(picture);
    ASSERT_FALSE(picture.finish().has_value());
    EXPECT_EQ(Dots(path("strip.png")).width(), 32767);
}

TEST_F(PictureTest, WithoutAFileThereIsNoPicture) {
    fs::create_directory(path("folder.svg"));
    Picture picture(sheetOf("a4"));
    EXPECT_EQ(picture.open(path("folder.svg")).value().errnoValue, EISDIR);
    drawCorner(picture); // is ignored
    EXPECT_TRUE(picture.finish().has_value());
    EXPECT_EQ(fileCount(), 1);
}

TEST_F(PictureTest, WhatIsNotFinishedKeepsTheOlderFile) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {100, limit.rlim_max};
    for (const char *ending : kEndings) {
        const std::string name = std::string("older") + ending;
        std::ofstream(path(name)) << "older";
        const auto files = fileCount();
        Picture givenUp(sheetOf("a4"));
        EXPECT_FALSE(givenUp.open(path(name)).has_value());
        drawPens(givenUp);
        // Nor is anything left when the process is killed, where the file system knows files without a name.
        const int unnamed = ::open(m_folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
        EXPECT_TRUE(fileCount() == files || unnamed < 0) << ending;
        ::close(unnamed);
        for (const auto drawing : {drawCorner, drawPens}) { // on a full disk the first may fail only when the file is closed
            Picture picture(sheetOf("a4"));
            setrlimit(RLIMIT_FSIZE, &small);
            EXPECT_FALSE(picture.open(path(name)).has_value());
            drawing(picture);
            const PictureError error = picture.finish().value_or(PictureError{"none", -1});
            setrlimit(RLIMIT_FSIZE, &limit);
            EXPECT_EQ(error.errnoValue, EFBIG) << error.message;
            EXPECT_EQ(contents(name), "older") << name;
        }
    }
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(fileCount(), std::ssize(kEndings));
}

} // namespace
