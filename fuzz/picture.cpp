// Pictures: the first byte chooses the file format, the second the sheet; the rest is the plot. A picture is made whole, or
// not at all.
#include "virtual_plotter/drawing/picture.h"
#include "language/plot_reader.h"
#include "support/input.h"

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

/// Gone with the process.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("orb-fuzz-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(path_);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string file(const char *name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace virtual_plotter;
    static const Folder folder;
    constexpr const char *kFiles[] = {"plot.svg", "plot.png", "plot.pdf"};
    constexpr const char *kSheets[] = {"a4", "10x10", "30x20000", "letter-portrait"};

    fuzz::Input input(data, size);
    const std::string file = folder.file(input.pick(kFiles));
    std::string error;
    const std::optional<Sheet> sheet = parseSheet(input.pick(kSheets), error);
    fuzz::require(sheet.has_value(), "the sheet is known");

    Picture picture(*sheet, {20, true});
    fuzz::require(!picture.open(file), "the picture can be begun");
    PlotReader plot(std::nullopt, picture, sheet->hardClip);
    plot.take(input.rest());
    plot.finish();
    fuzz::require(!picture.finish(), "the picture can be ended");
    fuzz::require(std::filesystem::file_size(file) > 100, "the picture is there");
    return 0;
}
