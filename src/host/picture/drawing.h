// Pictures of plots: the options for them, and failures in the command's form.
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

/// Adds --sheet and --dpi; returns them.
std::vector<Option> addDrawingOptions(const Command &app, DrawingOptions &options);
/// Adds --language.
void addLanguage(const Command &app, DrawingOptions &options);

virtual_plotter::Sheet sheetOf(const DrawingOptions &options);
/// None for "auto".
std::optional<language::Language> languageOf(const DrawingOptions &options);

/// Throws Failure (usage) when the file to be written is one that is to be read; option names it in the message.
void requireOtherFile(const char *option, const std::string &output, const std::string &input);

/// A picture with its file. Without a path it takes strokes and makes no file.
class Drawing {
public:
    /// Throws Failure.
    Drawing(const DrawingOptions &options, const std::string &path);
    virtual_plotter::Picture &sink() { return picture_; }
    const virtual_plotter::Sheet &sheet() const { return sheet_; }
    /// A remark on how it was drawn; mostly empty.
    const std::string &note() const { return picture_.note(); }
    /// The file appears. Throws Failure.
    void finish();

private:
    std::string path_;
    virtual_plotter::Sheet sheet_;
    virtual_plotter::Picture picture_;
};

} // namespace host
