#include "language/reader.h"

#include "language/dmpl_reader.h"
#include "language/hpgl_reader.h"

namespace language {

void Findings::note(Oddity::Kind kind, uint64_t offset, std::string_view text) {
    ++(kind == Oddity::Unknown ? unknown : malformed);
    if (oddities.size() == kMaxOddities) return;
    Oddity &oddity = oddities.emplace_back(Oddity{kind, offset, std::string(text.substr(0, Oddity::kLongest))});
    for (char &c : oddity.text) {
        if (c < ' ' || c > '~') c = '.';
    }
}

std::unique_ptr<Reader> makeReader(Language language, PenSink &sink, const Rectangle &hardClip, Clipping clipping,
                                   double secondsPerByte) {
    if (language == Language::Dmpl) return std::make_unique<DmplReader>(sink, hardClip, clipping, secondsPerByte);
    return std::make_unique<HpglReader>(sink, hardClip, clipping, secondsPerByte);
}

Language guessLanguage(std::string_view firstBytes) noexcept {
    size_t start = 0;
    while (start < firstBytes.size() && static_cast<unsigned char>(firstBytes[start]) <= ' ')
        ++start;
    return firstBytes.substr(start, 2) == ";:" ? Language::Dmpl : Language::Hpgl;
}

} // namespace language
