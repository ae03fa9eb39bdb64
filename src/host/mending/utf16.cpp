#include "host/mending/utf16.h"

namespace host {

std::optional<PlotFile> asciiOf(const PlotFile &text) {
    KeptFile kept(text.path());
    size_t count = 0; // bytes so far
    bool isAscii = true, isMarked = false, isBigEndian = false;
    text.readBlocks([&](std::string_view block) {
        std::string ascii;
        for (char c : block) {
            const bool isSecond = count % 2 == 1;
            if (count == 0) {
                isMarked = c == '\xFE' || c == '\xFF';
                isBigEndian = c == '\xFE' || c == '\0';
            }
            if (count++ < 2 && isMarked) continue;
            if (isSecond != isBigEndian)
                isAscii = isAscii && c == 0;
            else if (isAscii = isAscii && static_cast<unsigned char>(c) < 0x80; isAscii)
                ascii += c;
        }
        kept.add(ascii);
        return isAscii;
    });
    if (!isAscii || count % 2 == 1) return {};
    return PlotFile(std::move(kept));
}

} // namespace host
