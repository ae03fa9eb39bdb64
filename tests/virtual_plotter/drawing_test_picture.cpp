#include "virtual_plotter/drawing/picture.h"
#include "virtual_plotter/drawing/png_size_chunk.h"

#include <gtest/gtest.h>

#include <cairo/cairo.h>
#include <cerrno>
#include <climits>
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
constexpr PictureOptions kTenDots = {.dotsPerInch = kDotsPerMillimetre * 25.4};

Sheet sheetOf(const char *text) {
    std::string error;
    return parseSheet(text, error).value();
}

constexpr uint32_t kWhite = 0xFFFFFF;

// A PNG of an A4 sheet, read back.
class Dots {
public:
    explicit Dots(const std::string &path) : m_surface(cairo_image_surface_create_from_png(path.c_str())) {
        EXPECT_EQ(cairo_surface_status(m_surface), CAIRO_STATUS_SUCCESS) << path;
        width = cairo_image_surface_get_width(m_surface);
        height = cairo_image_surface_get_height(m_surface);
    }
    Dots(const Dots &) = delete;
    Dots &operator=(const Dots &) = delete;
    ~Dots() { cairo_surface_destroy(m_surface); }

    uint32_t dot(int x, int y) const {
        const ptrdiff_t place = ptrdiff_t{y} * cairo_image_surface_get_stride(m_surface) + ptrdiff_t{x} * 4;
        uint32_t value;
        memcpy(&value, cairo_image_surface_get_data(m_surface) + place, sizeof value);
        return value & 0xFFFFFF;
    }
    // By plotter units: the margins are 12.25 and 9.375 mm.
    uint32_t at(double x, double y) const {
        return dot(static_cast<int>((12.25 + x / 40) * kDotsPerMillimetre),
                   static_cast<int>((210 - 9.375 - y / 40) * kDotsPerMillimetre));
    }

    struct Box {
        int left = INT_MAX, top = INT_MAX, right = -1, bottom = -1;
    };
    Box ink() const {
        Box box;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (dot(x, y) != kWhite)
                    box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1), y + 1};
        return box;
    }

    int width, height;

private:
    cairo_surface_t *m_surface;
};

class PictureTest : public testing::Test {
protected:
    PictureTest() {
        std::string pattern = fs::temp_directory_path() / "picture-XXXXXX";
        m_folder = mkdtemp(pattern.data());
    }
    ~PictureTest() override { fs::remove_all(m_folder); }

    std::string path(const std::string &name) const { return m_folder / name; }
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto &entry : fs::directory_iterator(m_folder))
            all.insert(entry.path().filename());
        return all;
    }
    std::string contents(const std::string &name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    template <typename Drawing>
    void draw(const std::string &name, Drawing drawing, const char *sheet = "a4", PictureOptions options = kTenDots) {
        Picture picture(sheetOf(sheet), options);
        auto error = picture.open(path(name));
        ASSERT_FALSE(error.has_value()) << error->message;
        drawing(static_cast<PenSink &>(picture));
        error = picture.finish();
        ASSERT_FALSE(error.has_value()) << error->message;
    }

    fs::path m_folder;
};

// 100 mm to the right from the corner of the pen's area, then 50 mm up.
void drawCorner(PenSink &sink) {
    sink.setPen(1, 1.0);
    sink.begin({0, 0});
    sink.line({4000, 0});
    sink.line({4000, 2000});
}

void drawMuch(PenSink &sink) {
    for (int i = 0; i < 1000; ++i) {
        if (i % 100 == 0) sink.setPen(i / 100, 0.3);
        sink.begin({i * 10.0, (i * 37) % 7650 + 0.5});
        sink.line({i * 10.0 + 300, (i * 91) % 7650 + 0.25});
    }
    const Point square[] = {{100, 100}, {900, 100}, {900, 900}, {100, 900}};
    const size_t ends[] = {4};
    sink.fill(square, ends);
}

TEST_F(PictureTest, InkIsAtItsMillimetres) {
    draw("corner.png", drawCorner);
    const Dots dots(path("corner.png"));
    EXPECT_EQ(dots.width, 2970);
    EXPECT_EQ(dots.height, 2100);
    const Dots::Box ink = dots.ink(); // half the pen's width around; to one dot
    EXPECT_NEAR(ink.left, 122.5 - 5, 1);
    EXPECT_NEAR(ink.right, 1122.5 + 5, 1);
    EXPECT_NEAR(ink.bottom, 2100 - 93.75 + 5, 1);
    EXPECT_NEAR(ink.top, 2100 - 93.75 - 500 - 5, 1);
    EXPECT_EQ(dots.at(0, 1000), kWhite); // the corner is on the right
    EXPECT_NE(dots.at(4000, 1000), kWhite);
}

TEST_F(PictureTest, FilesSayTheSizeOfTheSheet) {
    for (const char *ending : kEndings)
        draw(std::string("sheet") + ending, drawCorner);
    const std::string svg = contents("sheet.svg");
    EXPECT_NE(svg.find("width=\"297mm\" height=\"210mm\" viewBox=\"0 0 297 210\""), std::string::npos) << svg;
    EXPECT_NE(svg.find("matrix(0.025 0 0 -0.025 12.25 200.625)"), std::string::npos) << svg;
    EXPECT_NE(svg.find("stroke-width=\"40\" d=\"M0 0L4000 0 4000 2000\""), std::string::npos) << svg;
    const std::string pdf = contents("sheet.pdf");
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 841.889"), std::string::npos);
    EXPECT_EQ(pdf.find("Date"), std::string::npos); // tomorrow's file would be another
    EXPECT_NE(contents("sheet.png").find(std::string("pHYs\0\0\x27\x10\0\0\x27\x10\x01", 13)), std::string::npos);
    // The chunk of 72 dots per inch, as it stands in countless files.
    constexpr PngSizeChunk kKnown = {0,    0, 0, 9,    'p',  'H', 'Y',  's',  0,    0,   0x0B,
                                     0x13, 0, 0, 0x0B, 0x13, 1,   0x00, 0x9A, 0x9C, 0x18};
    EXPECT_EQ(pngSizeChunk(2835), kKnown);
}

TEST_F(PictureTest, PensHaveEightColoursAndDrawRoundDots) {
    const auto drawing = [](PenSink &sink) {
        for (int pen = 0; pen <= 9; ++pen) {
            sink.setPen(pen, 4.0);
            sink.begin({pen * 400.0, 2000});
        }
        sink.setPen(3, 0); // the thinnest line is still one
        sink.begin({0, 4000});
        sink.line({4000, 4000});
    };
    draw("pens.png", drawing);
    const Dots dots(path("pens.png"));
    EXPECT_EQ(dots.at(0, 2000), kWhite); // no pen
    std::set<uint32_t> colours = {kWhite};
    for (int pen = 1; pen <= 8; ++pen) {
        const double x = pen * 400;
        const uint32_t colour = dots.at(x, 2000);
        EXPECT_TRUE(colours.insert(colour).second) << pen;
        EXPECT_EQ(dots.at(x + 72, 2000), colour) << pen;
        EXPECT_EQ(dots.at(x, 2072), colour) << pen;
        EXPECT_EQ(dots.at(x + 64, 1936), kWhite) << pen; // a corner, were it square
    }
    EXPECT_EQ(dots.at(3600, 2000), dots.at(400, 2000));
    EXPECT_NE(dots.at(2000, 4000), kWhite);
    draw("pens.svg", drawing);
    EXPECT_NE(contents("pens.svg").find("stroke-width=\"160\" d=\"M400 2000h0\""), std::string::npos);
}

TEST_F(PictureTest, FillsByTheEvenOddRuleAndCoversWhatWasBefore) {
    draw("fill.png", [](PenSink &sink) {
        sink.setPen(2, 2.0);
        sink.begin({0, 2000});
        sink.line({4000, 2000});
        sink.setPen(4, 2.0);
        const Point squares[] = {{1000, 1000}, {3000, 1000}, {3000, 3000}, {1000, 3000},
                                 {1800, 1400}, {2200, 1400}, {2200, 1800}, {1800, 1800}};
        const size_t ends[] = {4, 8};
        sink.fill(squares, ends);
        sink.line({4000, 3600}); // goes on where the last stroke ended
    });
    const Dots dots(path("fill.png"));
    EXPECT_NE(dots.at(400, 2000), dots.at(2000, 2500));
    EXPECT_EQ(dots.at(2000, 2000), dots.at(2000, 2500)); // over the line
    EXPECT_EQ(dots.at(2000, 1600), kWhite);              // the hole
    EXPECT_EQ(dots.at(2000, 1100), dots.at(2000, 2500));
    EXPECT_EQ(dots.at(4000, 3000), dots.at(2000, 2500));
}

TEST_F(PictureTest, LongStrokesHaveNoGaps) {
    draw("long.png", [](PenSink &sink) {
        sink.setPen(1, 0.5);
        sink.begin({0, 3000});
        for (int i = 1; i <= 10000; ++i)
            sink.line({i * 1.0, 3000});
        for (int i = 0; i <= 10000; ++i) // a row of dots beside each other
            sink.begin({i * 1.0, 4000});
    });
    const Dots dots(path("long.png"));
    for (int x = 0; x < 10000; ++x) {
        ASSERT_EQ(dots.at(x, 3000), dots.at(5000, 3000)) << x;
        ASSERT_EQ(dots.at(x, 4000), dots.at(5000, 3000)) << x;
    }
}

TEST_F(PictureTest, SameStrokesGiveSameBytesAndReplaceAnOlderFile) {
    for (const char *ending : kEndings) {
        const std::string name = std::string("again") + ending;
        draw(name, drawMuch);
        const std::string first = contents(name);
        draw(name, drawCorner);
        EXPECT_NE(contents(name), first) << ending;
        draw(name, drawMuch);
        EXPECT_EQ(contents(name), first) << ending;
    }
    EXPECT_EQ(names(), (std::set<std::string>{"again.pdf", "again.png", "again.svg"}));
}

TEST_F(PictureTest, ResolutionIsLoweredForLargeSheets) {
    EXPECT_EQ(pngResolution(sheetOf("a0"), 200), 200);
    Picture picture(sheetOf("20000x10"));
    ASSERT_FALSE(picture.open(path("strip.png")).has_value());
    EXPECT_NE(picture.note().find("41 dots per inch"), std::string::npos) << picture.note();
    drawCorner(picture);
    ASSERT_FALSE(picture.finish().has_value());
    EXPECT_EQ(Dots(path("strip.png")).width, 32767);
}

TEST_F(PictureTest, PathsThatCannotBeWritten) {
    fs::create_directory(path("folder.svg"));
    fs::create_directory(path("locked"));
    fs::permissions(m_folder, fs::perms{0755});
    fs::permissions(path("locked"), fs::perms{0555});
    const struct {
        const char *name, *message;
        int errnoValue;
    } cases[] = {
        {"drawing.bmp", "drawing.bmp: a picture's name must end in .svg, .png or .pdf", 0},
        {"missing/drawing.SVG", "No such file or directory", ENOENT},
        {"folder.svg", "Is a directory", EISDIR},
        {"locked/drawing.pdf", "locked/drawing.pdf: Permission denied", EACCES},
    };
    const uid_t user = geteuid();
    ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0); // who may write anywhere
    for (const auto &c : cases) {
        Picture picture(sheetOf("a4"));
        const auto error = picture.open(path(c.name));
        const PictureError said = error.value_or(PictureError{"none", -1});
        EXPECT_NE(said.message.find(c.message), std::string::npos) << c.name << ": " << said.message;
        EXPECT_EQ(said.errnoValue, c.errnoValue) << c.name;
        drawCorner(picture); // is ignored
        EXPECT_TRUE(picture.finish().has_value()) << c.name;
    }
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(names(), (std::set<std::string>{"folder.svg", "locked"}));
    EXPECT_TRUE(fs::is_empty(path("locked")));
}

TEST_F(PictureTest, FullDiskKeepsTheOlderFile) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {100, limit.rlim_max};
    for (const char *ending : kEndings)
        for (const auto drawing : {drawCorner, drawMuch}) { // the first may fail only when the file is closed
            const std::string name = std::string("full") + ending;
            std::ofstream(path(name)) << "older";
            Picture picture(sheetOf("a4"));
            setrlimit(RLIMIT_FSIZE, &small);
            const bool opened = !picture.open(path(name)).has_value();
            drawing(picture);
            const PictureError error = picture.finish().value_or(PictureError{"none", -1});
            setrlimit(RLIMIT_FSIZE, &limit);
            EXPECT_TRUE(opened) << name;
            EXPECT_EQ(error.errnoValue, EFBIG) << error.message;
            EXPECT_EQ(contents(name), "older") << name;
        }
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(names().size(), std::size(kEndings));
}

TEST_F(PictureTest, GivenUpLeavesNothing) {
    for (const char *ending : kEndings) {
        Picture picture(sheetOf("a4"));
        ASSERT_FALSE(picture.open(path(std::string("draft") + ending)).has_value());
        drawMuch(picture);
        // Nor does it when the process is killed, where the file system knows files without a name.
        const int unnamed = ::open(m_folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
        EXPECT_TRUE(names().empty() || unnamed < 0) << ending;
        ::close(unnamed);
    }
    EXPECT_TRUE(names().empty());
}

} // namespace
