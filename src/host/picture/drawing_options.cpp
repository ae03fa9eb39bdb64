#include "host/picture/drawing_options.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

namespace host {

using language::Language;
using virtual_plotter::Sheet;

namespace {

using Parser = std::optional<Sheet> (*)(std::string_view text, std::string &error);

/// What is wrong with a text, as the parser says it.
Option::Check checkBy(Parser parse) {
    return [parse](const std::string &text) {
        std::string error;
        return parse(text, error) ? std::string() : error;
    };
}

Sheet parsed(Parser parse, const char *option, const std::string &text) {
    std::string error;
    if (auto sheet = parse(text, error)) return *sheet;
    throw Failure(ExitCode::Usage, std::string(option) + ": " + shown(error));
}

} // namespace

Option addSheet(const Command &app, DrawingOptions &options, const std::string &help) {
    return app.option("--sheet", options.sheet, help).check(checkBy(virtual_plotter::parseSheet)).valueName("SHEET");
}

Option addArea(const Command &app, std::string &area) {
    return app.option("--area", area, "What the plotter's pen reaches, in mm as the plotter counts: lower left, upper right")
        .check(checkBy(virtual_plotter::parseArea))
        .valueName("X1,Y1,X2,Y2");
}

void addPlaceOn(const Command &app, DrawingOptions &options) {
    Option sheet =
        addSheet(app, options, "Sheet that is drawn on: a0 to a4, letter, tabloid, or WxH in mm (a4)").group("Place");
    addArea(app, options.area).excludes(sheet).group("Place");
}

Option addDotsPerInch(const Command &app, DrawingOptions &options) {
    return app
        .option("--dpi", options.dotsPerInch, "Dots per inch of a PNG picture, 10 to 1200 (200, on more than an A0 fewer)")
        .between(10, 1200)
        .valueName("N")
        .group("Picture");
}

std::vector<Option> addDrawingOptions(const Command &app, DrawingOptions &options) {
    Option sheet = addSheet(app, options, "Sheet of the picture: a0 to a4, letter, tabloid, or WxH in mm (a4)");
    Option area = addArea(app, options.area).excludes(sheet);
    for (Option option : {sheet, area})
        option.group("Picture");
    return {sheet, addDotsPerInch(app, options)};
}

Option addPensHeld(const Command &app, int32_t &pens) {
    return app.option("--pens-held", pens, "Pens that the plotter holds; of a drawing's colours, the nearest share one (8)")
        .between(1, 255)
        .valueName("N");
}

void addLanguage(const Command &app, DrawingOptions &options) {
    app.option("--language", options.language, "Language of the plot; auto looks at its first bytes (auto)")
        .oneOf({"hpgl", "dmpl", "auto"})
        .valueName("hpgl|dmpl|auto");
}

Sheet sheetOf(const DrawingOptions &options) {
    if (!options.area.empty()) return parsed(virtual_plotter::parseArea, "--area", options.area);
    return parsed(virtual_plotter::parseSheet, "--sheet", sheetName(options));
}

std::string sheetName(const DrawingOptions &options) {
    if (!options.area.empty()) return options.area;
    return options.sheet.empty() ? kUsualSheet : options.sheet;
}

std::optional<Language> languageOf(const DrawingOptions &options) {
    if (options.language == "auto") return std::nullopt;
    return options.language == "dmpl" ? Language::Dmpl : Language::Hpgl;
}

} // namespace host
