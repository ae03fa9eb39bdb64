#include "host/print/follower.h"

#include <algorithm>

namespace host {

namespace {

constexpr size_t kBlock = size_t{16} * 1024;
constexpr size_t kLongestPiece = 255;     // bytes
constexpr std::string_view kLabel = "LB"; // of HP-GL; a terminator too many draws nothing there

} // namespace

Follower::Follower(const PlotFile &plot, std::optional<language::Language> language, std::string_view terminator,
                   const language::Rectangle &hardClip)
    : plot_(plot), mark_(terminator.empty() ? ';' : terminator.back()),
      reader_(language, noPen_, hardClip, language::Clipping::None), buffer_(kBlock, '\0') {}

DrawnSoFar Follower::goTo(int64_t sentBytes) {
    while (read_ < sentBytes) {
        std::string_view block = plot_.read(read_, buffer_);
        block = block.substr(0, static_cast<size_t>(std::min<int64_t>(sentBytes - read_, kBlock)));
        if (block.empty()) break;
        reader_.take(block);
        read_ += static_cast<int64_t>(block.size());
        follow(block);
    }
    if (reader_.reader() == nullptr) return {};
    const language::PenStatus status = reader_.reader()->status();
    return {reader_.reader()->findings().strokes, status.pen, !status.down && mayWait()};
}

/// Keeps what stands behind the last mark: the beginning of an instruction, of which two letters tell enough.
void Follower::follow(std::string_view block) {
    if (const size_t mark = block.rfind(mark_); mark != std::string_view::npos) {
        begun_.clear();
        block.remove_prefix(mark + 1);
    }
    for (char c : block)
        if (begun_.size() < 2 && static_cast<unsigned char>(c) > ' ') begun_ += c;
}

/// Plots whose pieces hold no mark end in the middle of instructions; one that only moves the pen may be left so.
bool Follower::mayWait() const {
    const bool isNumber = begun_.empty() || begun_[0] < 'A';
    return isNumber || begun_ == "PU" || begun_ == "PA" || begun_ == "U";
}

std::string Follower::behindText(const std::string &instruction) {
    constexpr char kEtx = '\3'; // unless the plot has chosen another one
    const language::Reader *reader = reader_.reader();
    if (reader == nullptr) return instruction;
    const bool mayBeInLabel = plot_.read(read_, buffer_).substr(0, kLongestPiece).find(kLabel) != std::string_view::npos;
    for (int end = mayBeInLabel ? 0 : -1; end < 0x80; ++end) {
        std::string tried = instruction;
        if (end >= 0) tried.insert(0, 1, end == 0 ? kEtx : static_cast<char>(end));
        reader_.take(tried);
        if (reader->status().pen == 0) return tried;
    }
    return instruction;
}

} // namespace host
