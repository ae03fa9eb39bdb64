#include "virtual_plotter/face/limit_questions.h"

#include "virtual_plotter/face/replies.h"

#include <algorithm>
#include <utility>

namespace virtual_plotter {

LimitQuestions::LimitQuestions(bool inPairs, const LimitTexts &texts, const Rectangle &hardClip)
    : inPairs_(inPairs), texts_(texts), hardClip_(hardClip) {}

void LimitQuestions::take(std::string_view bytes) {
    const bool hasTexts = std::any_of(texts_.begin(), texts_.end(), [](std::string_view text) { return !text.empty(); });
    if (!inPairs_ && !hasTexts) return onPlot(bytes);
    for (char byte : bytes) {
        if (!inPairs_ || !takeCorner(byte)) takeText(byte);
    }
}

bool LimitQuestions::takeCorner(char byte) {
    const bool isRepeated = byte == std::exchange(answered_, '\0');
    betweenCorners_ = byte == '[' || (byte == 'U' && betweenCorners_);
    if (betweenCorners_ && !isRepeated) {
        answered_ = byte;
        onReply(cornerReply(byte == '[' ? hardClip_.lower : hardClip_.upper));
    }
    return betweenCorners_;
}

void LimitQuestions::takeText(char byte) {
    const auto begins = [this](std::string_view text) { return text.starts_with(held_); };
    held_ += byte;
    while (!held_.empty() && std::none_of(texts_.begin(), texts_.end(), begins)) {
        onPlot({held_.data(), 1});
        held_.erase(0, 1);
    }
    if (held_.empty() || std::find(texts_.begin(), texts_.end(), held_) == texts_.end()) return;
    onReply(limitsReply(hardClip_));
    held_.clear();
}

void LimitQuestions::finish() { onPlot(std::exchange(held_, {})); }

} // namespace virtual_plotter
