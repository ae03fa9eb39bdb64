// What preview, simulate and "print --virtual" share when they draw: the options for sheet, resolution and language, and the
// picture with its file. The plotter in software answers with errors of its own, since it knows nothing of the command; here
// they become failures with the command's exit codes.
#pragma once

#include "host/terminal/command.h"

#include "language/reader.h"
#include "virtual_plotter/drawing/picture.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

struct DrawingOptions {
    std::string sheet = "a4";
    double dotsPerInch = 200;
    std::string language = "auto";
};

/// Adds --dpi alone.
Option addDotsPerInch(const Command &app, DrawingOptions &options);
/// Adds --sheet and --dpi; returns them.
std::vector<Option> addDrawingOptions(const Command &app, DrawingOptions &options);
/// Adds --sheet alone.
Option addSheet(const Command &app, DrawingOptions &options, const std::string &help);
/// Adds --language.
void addLanguage(const Command &app, DrawingOptions &options);

virtual_plotter::Sheet sheetOf(const DrawingOptions &options);
/// None for "auto".
std::optional<language::Language> languageOf(const DrawingOptions &options);

/// Throws Failure (usage) when the file to be written is one that is to be read; option names it in the message.
void requireOtherFile(const char *option, const std::string &output, const std::string &input);

/// A picture with its file. With an empty path it takes strokes all the same, but there is no file.
class Drawing {
public:
    /// Throws Failure.
    Drawing(const DrawingOptions &options, const std::string &path);
    virtual_plotter::Picture &sink() { return picture_; }
    const virtual_plotter::Sheet &sheet() const { return sheet_; }
    /// A remark on how it was drawn; mostly empty.
    const std::string &note() const { return picture_.note(); }
    /// Gives the complete file its name. Throws Failure; a Drawing that is destroyed without this leaves no file.
    void finish();

private:
    std::string path_;
    virtual_plotter::Sheet sheet_;
    virtual_plotter::Picture picture_;
};

} // namespace host
