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
    : plot_(plot), mark_(terminator.empty() ? ';' : terminator.back()), reader_(language, noPen_, hardClip),
      buffer_(kBlock, '\0') {}

DrawnSoFar Follower::goTo(int64_t sentBytes) {
    while (read_ < sentBytes) {
        std::string_view block = plot_.read(read_, buffer_);
        block = block.substr(0, static_cast<size_t>(std::min<int64_t>(sentBytes - read_, kBlock)));
        if (block.empty()) break;
        reader_.take(block);
        read_ += static_cast<int64_t>(block.size());
        last_ = block.back();
    }
    if (reader_.reader() == nullptr) return {};
    const language::PenStatus status = reader_.reader()->status();
    return {reader_.reader()->findings().strokes, status.pen, !status.down && last_ == mark_};
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
