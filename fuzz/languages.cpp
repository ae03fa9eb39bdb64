// Plotter languages, heard by the plotter in software with its buffer, pace and faults: once whole and once in pieces, which
// must make no difference, and now and then for a picture.
#include "support/platform.h"
#include "virtual_plotter/drawing/picture.h"
#include "virtual_plotter/face/plotter.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <unistd.h>

namespace {

using namespace virtual_plotter;
using language::Findings, language::Point;

constexpr language::Rectangle kSheet{{0, 0}, {10900, 7650}};

/// Draws nothing, and holds the strokes to their contract.
struct Sink final : language::PenSink {
    void setPen(int, double width) override { fuzz::require(std::isfinite(width) && width >= 0, "a pen has a width"); }
    void begin(Point at) override {
        constexpr double kRounding = 1e-6;
        const Point over{at.x - kSheet.upper.x, at.y - kSheet.upper.y};
        fuzz::require(std::max({-at.x, -at.y, over.x, over.y}) <= kRounding, "a stroke stays where the pen can reach");
    }
    void line(Point to) override { begin(to); }
    void fill(std::span<const Point> points, std::span<const size_t> ends) override {
        for (const Point &point : points)
            begin(point);
        const bool inOrder = std::is_sorted(ends.begin(), ends.end()) && (ends.empty() || ends.back() <= points.size());
        fuzz::require(inOrder, "contours end in order");
    }
};

/// What a plotter makes of a text that comes in pieces as time goes by.
Findings draw(const PlotterOptions &options, language::PenSink &sink, std::string_view text, size_t piece) {
    VirtualPlotter plotter(options, sink, kSheet);
    VirtualPlotter::Time now{0};
    size_t heard = 0;
    bool isHeld = false;
    while (heard < text.size()) {
        const size_t room = plotter.room(), taken = plotter.hear(text.substr(heard, piece), now);
        fuzz::require(taken <= piece && (room == 0 || taken > 0), "what there is room for is taken");
        heard += taken;
        for (char c : plotter.takeSaid()) {
            if (c != VirtualPlotter::kXoff && c != VirtualPlotter::kXon) continue;
            fuzz::require((c == VirtualPlotter::kXoff) != isHeld, "the host is held and let go in turns");
            isHeld = !isHeld;
        }
        if (taken == 0 && plotter.isIdle()) break; // for good
        plotter.advance(now += std::chrono::milliseconds(7));
    }
    plotter.finish();
    fuzz::require(plotter.heardBytes() == heard, "every byte is counted");
    return plotter.plot().reader() ? plotter.plot().reader()->findings() : Findings{};
}

void makePicture(const PlotterOptions &options, const char *type, const std::string &text) {
    const std::string file = std::filesystem::temp_directory_path() / ("orb-fuzz-" + std::to_string(getpid()) + type);
    std::string error;
    const Sheet sheet = parseSheet("10x10", error).value();
    Picture picture(sheet, {20, edgesOf(sheet)});
    fuzz::require(!picture.open(file), "the picture can be begun");
    draw(options, picture, text, text.size());
    fuzz::require(!picture.finish(), "the picture can be ended");
    fuzz::require(std::filesystem::file_size(file) > 100, "the picture is there");
    std::filesystem::remove(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider input(data, size);
    PlotterOptions options;
    setEmulation(options, input.PickValueInArray({17002, 17005, 17008, 17009, 0}));
    options.fault = input.PickValueInArray({Fault::None, Fault::Hang, Fault::HangUp, Fault::Rubbish, Fault::Xoff});
    options.faultAfter = input.ConsumeIntegral<uint8_t>();
    options.bufferBytes = input.ConsumeIntegral<uint8_t>();
    options.perByte = std::chrono::milliseconds(input.ConsumeIntegral<uint8_t>() % 4);
    const size_t piece = 1 + input.ConsumeIntegral<uint8_t>() % 64, type = input.ConsumeIntegral<uint8_t>();
    const std::string text = input.ConsumeRemainingBytesAsString();

    Sink sink;
    const Findings whole = draw(options, sink, text, text.size()), pieces = draw(options, sink, text, piece);
    fuzz::require(whole.oddities.size() <= Findings::kMaxOddities, "oddities are kept up to a number");
    const auto lengths = [](const Findings &of) { return std::array{of.downMillimetres, of.upMillimetres, of.seconds}; };
    const auto counts = [](const Findings &of) { return std::array{of.bytes, of.instructions, of.unknown, of.malformed}; };
    for (double length : lengths(whole))
        fuzz::require(std::isfinite(length) && length >= 0, "lengths and times");
    fuzz::require(lengths(whole) == lengths(pieces) && counts(whole) == counts(pieces),
                  "how bytes are cut makes no difference");
    constexpr const char *kTypes[] = {".svg", ".png", ".pdf"};
    if (type < std::size(kTypes)) makePicture(options, kTypes[type], text);
    return 0;
}
