// What preview, simulate and "print --virtual" share when they draw: the picture with its file. The plotter in software
// answers with errors of its own, since it knows nothing of the command; here they become failures with the command's exit
// codes.
#pragma once

#include "host/picture/drawing_options.h"
#include "host/picture/view.h"

#include "virtual_plotter/drawing/outside.h"
#include "virtual_plotter/drawing/picture.h"

#include <cstdint>
#include <map>
#include <string>

namespace host {

/// A file's name that stands for standard output.
inline constexpr const char *kStandardOutput = "-";

/// Throws Failure (usage) when the file to be written is one that is to be read; option names it in the message.
void requireOtherFile(const char *option, const std::string &output, const std::string &input);

/// A picture with its file. With an empty path it takes strokes all the same, but there is no file.
class Drawing {
public:
    /// Of one sheet, for strokes that do not leave it. Throws Failure.
    Drawing(const DrawingOptions &options, const std::string &path);
    /// Of a view; what the pen does not reach is grey, when the sheet was asked for. inks: of pens, 0xRRGGBB, where they are
    /// known. Throws Failure.
    Drawing(const View &view, const DrawingOptions &options, const std::string &path,
            const std::map<int, uint32_t> &inks = {});
    virtual_plotter::PenSink &sink();
    /// What follows has been drawn before, and is grey; or no longer has. To be called between strokes.
    void setDone(bool isDone);
    const virtual_plotter::Sheet &sheet() const { return view_.sheet; }
    /// A remark on how it was drawn; mostly empty.
    const std::string &note() const { return picture_.note(); }
    /// Gives the complete file its name. Throws Failure; a Drawing that is destroyed without this leaves no file.
    void finish();

private:
    std::string path_;
    View view_;
    virtual_plotter::Picture picture_;
    virtual_plotter::GreyOutside parted_;
};

} // namespace host
