#include "host/examination/examination.h"

#include "emulations/emulations.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

using language::Language;

namespace {

bool isASCII(std::string_view text) {
    unsigned char all = 0;
    for (char c : text)
        all |= static_cast<unsigned char>(c);
    return all < 0x80;
}

/// Hands out parts of a file, in rising order and of at most the largest chunk, from blocks that are read at once. A part is
/// valid until the next one is asked for. Throws Failure.
class Window {
public:
    explicit Window(const PlotFile &file) : file_(file) {}

    std::string_view at(int64_t offset, int64_t length) {
        if (offset + length > start_ + static_cast<int64_t>(block_.size())) {
            start_ = offset;
            block_ = file_.read(offset, buffer_);
        }
        std::string_view part =
            block_.substr(std::min(static_cast<size_t>(offset - start_), block_.size()), static_cast<size_t>(length));
        if (static_cast<int64_t>(part.size()) == length) return part;
        throw Failure(ExitCode::Failed, fmt::format("{}: became shorter while it was read; print it once it is finished",
                                                    shown(file_.path())));
    }

private:
    const PlotFile &file_;
    std::string buffer_ = std::string(size_t{64} * 1024, '\0');
    std::string_view block_;
    int64_t start_ = 0;
};

/// Goes through the file as the sender does: chunk by chunk, each cut at its last command boundary.
class Walk {
public:
    Walk(const PlotFile &file, const PlotRules &rules, Examination &result)
        : size_(file.size()), window_(file), emulation_(emulations::of(rules.emulation)), terminator_(rules.terminator),
          chunk_(emulation_.chunkSize), result_(result) {}

    void run() {
        while (offset_ + chunk_ < size_) {
            std::string_view chunk = window_.at(offset_, chunk_);
            if (!isASCII(chunk)) return endBefore(chunk);
            size_t cut = emulations::findCut(chunk, terminator_, emulation_.cut);
            send(cut == 0 ? chunk : chunk.substr(0, cut));
        }
        std::string_view tail = window_.at(offset_, size_ - offset_);
        if (!isASCII(tail)) return endBefore(tail);
        size_t end = emulations::findEnd(tail, terminator_, emulation_.cut);
        send(tail.substr(0, end));
        tail.remove_prefix(end);
        const bool isHpgl = emulation_.language == Language::Hpgl;
        if (tail.find("@PJL") != std::string_view::npos)
            result_.endPadding = "a PJL trailer";
        else if (isHpgl && !isPadding(tail) && isPadding(tail, true))
            result_.endPadding = fmt::format("the question \"{}\"", shown(tail.substr(tail.find_last_of("Oo"), 2)));
        withhold(tail, Flaw::BehindMark, result_.endPaddingBytes, isHpgl);
    }

private:
    /// A piece is sent up to its first NUL: what stands behind that is lost.
    void send(std::string_view piece) {
        size_t nul = std::min(piece.find('\0'), piece.size());
        offset_ += static_cast<int64_t>(nul);
        if (!piece.empty()) ++result_.pieces; // also one that is lost as a whole
        withhold(piece.substr(nul), Flaw::BehindNul, result_.innerPaddingBytes);
    }

    void withhold(std::string_view bytes, Flaw flaw, int64_t &padding, bool hasQuestions = false) {
        auto count = static_cast<int64_t>(bytes.size());
        result_.withheldBytes += count;
        if (isPadding(bytes, hasQuestions)) {
            padding += count;
        } else {
            if (result_.flaw == Flaw::None) blame(flaw, offset_, bytes);
            if (result_.flaw == flaw) result_.flawBytes += count;
        }
        offset_ += count;
    }

    void endBefore(std::string_view chunk) {
        auto foreign =
            std::find_if(chunk.begin(), chunk.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        auto at = static_cast<size_t>(foreign - chunk.begin());
        blame(Flaw::NotASCII, offset_ + static_cast<int64_t>(at), chunk.substr(at));
        result_.flawBytes = size_ - offset_;
        result_.withheldBytes += result_.flawBytes;
    }

    void blame(Flaw flaw, int64_t offset, std::string_view bytes) {
        result_.flaw = flaw;
        result_.offset = offset;
        result_.excerpt = bytes;
    }

    int64_t size_;
    Window window_;
    const emulations::Emulation &emulation_;
    std::string_view terminator_;
    int64_t chunk_;
    int64_t offset_ = 0;
    Examination &result_;
};

} // namespace

bool PlotRules::hasOwnEnd() const { return !emulations::of(emulation).cut.end.empty(); }

std::string PlotRules::endMark() const { return hasOwnEnd() ? std::string(emulations::of(emulation).cut.end) : terminator; }

Examination examine(const PlotFile &file, const PlotRules &rules) {
    Examination result;
    result.fileBytes = file.size();
    result.nature = natureOf(file, emulations::of(rules.emulation).language);
    if (result.fileBytes == 0) {
        result.flaw = Flaw::Empty;
    } else if (rules.endMark().empty()) {
        result.flaw = Flaw::NoTerminator;
        result.flawBytes = result.withheldBytes = result.fileBytes;
    } else {
        Walk(file, rules, result).run();
        if (result.flaw == Flaw::None && result.withheldBytes == result.fileBytes) result.flaw = Flaw::Blank;
    }
    return result;
}

} // namespace host
