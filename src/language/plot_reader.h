// Reads plots whose language is not known beforehand: a file, or what a program sends to a port, may be HP-GL or DM/PL. Its
// first bytes tell, and must not be lost by being looked at.
#pragma once

#include "language/reader.h"

#include <memory>
#include <optional>
#include <string>

namespace language {

/// A reader that is chosen when the first bytes have told the language, unless it is given.
class PlotReader {
public:
    /// The sink must live as long as the reader.
    PlotReader(std::optional<Language> language, PenSink &sink, const Rectangle &hardClip,
               Clipping clipping = Clipping::Reach, double secondsPerByte = 0);

    void take(std::string_view bytes);
    void finish();

    /// Called once with the chosen reader, before it reads anything; may be empty.
    std::function<void(Reader &)> onChoice;

    /// The reader; nullptr while the language is not known. After finish() there is one.
    const Reader *reader() const { return reader_.get(); }
    /// Valid once there is a reader.
    Language language() const { return language_.value_or(Language::Hpgl); }

private:
    void choose();

    std::optional<Language> language_;
    PenSink &sink_;
    Rectangle hardClip_;
    Clipping clipping_;
    double secondsPerByte_;
    std::string head_; ///< what came before the choice; at most kLongestHead bytes
    std::unique_ptr<Reader> reader_;
};

} // namespace language
