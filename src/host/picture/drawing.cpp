#include "host/picture/drawing.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <filesystem>
#include <fmt/format.h>

namespace host {

using language::Language;
using virtual_plotter::PictureError;

namespace {

/// With a frame, so that the edge of the sheet can be seen on a white background.
virtual_plotter::PictureOptions pictureOptions(const DrawingOptions &options) { return {options.dotsPerInch, true}; }

Failure failureOf(const std::string &path, const PictureError &error) {
    if (error.errnoValue != 0) return outputFailure(path, error.errnoValue);
    return {ExitCode::Usage, shown(error.message)};
}

} // namespace

Option addSheet(const Command &app, DrawingOptions &options, const std::string &help) {
    auto check = [](const std::string &text) {
        std::string error;
        return virtual_plotter::parseSheet(text, error) ? std::string() : error;
    };
    return app.option("--sheet", options.sheet, help).check(check).valueName("SHEET");
}

Option addDotsPerInch(const Command &app, DrawingOptions &options) {
    return app.option("--dpi", options.dotsPerInch, "Dots per inch of a PNG picture, 10 to 1200 (200)")
        .between(10, 1200)
        .valueName("N")
        .group("Picture");
}

std::vector<Option> addDrawingOptions(const Command &app, DrawingOptions &options) {
    Option sheet = addSheet(app, options, "Sheet of the picture: a0 to a4, letter, tabloid, or WxH in mm (a4)");
    sheet.group("Picture");
    return {sheet, addDotsPerInch(app, options)};
}

void addLanguage(const Command &app, DrawingOptions &options) {
    app.option("--language", options.language, "Language of the plot; auto looks at its first bytes (auto)")
        .oneOf({"hpgl", "dmpl", "auto"})
        .valueName("hpgl|dmpl|auto");
}

virtual_plotter::Sheet sheetOf(const DrawingOptions &options) {
    std::string error;
    auto sheet = virtual_plotter::parseSheet(options.sheet, error);
    if (!sheet) throw Failure(ExitCode::Usage, "--sheet: " + shown(error));
    return *sheet;
}

std::optional<Language> languageOf(const DrawingOptions &options) {
    if (options.language == "auto") return std::nullopt;
    return options.language == "dmpl" ? Language::Dmpl : Language::Hpgl;
}

void requireOtherFile(const char *option, const std::string &output, const std::string &input) {
    std::error_code ignored;
    if (!input.empty() && std::filesystem::equivalent(output, input, ignored)) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {} is the input; name another file", option, shown(output)));
    }
}

Drawing::Drawing(const DrawingOptions &options, const std::string &path)
    : path_(path), sheet_(sheetOf(options)), picture_(sheet_, pictureOptions(options)) {
    if (path.empty()) return;
    if (auto error = picture_.open(path)) throw failureOf(path, *error);
}

void Drawing::finish() {
    if (path_.empty()) return;
    if (auto error = picture_.finish()) throw failureOf(path_, *error);
}

} // namespace host
