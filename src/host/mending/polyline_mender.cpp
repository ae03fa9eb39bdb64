#include "host/mending/polyline_mender.h"

#include <string_view>
#include <utility>

namespace host {

namespace {

constexpr unsigned char kLowestDigit = 63;
constexpr unsigned kLastDigit = 128 + kLowestDigit, kLargestLast = 254; // of eight bits
constexpr unsigned kBits = 6;
constexpr unsigned kSevenDigits = 32, kSevenBits = 5;
constexpr unsigned kMostShift = 58; // the reader takes no more of a number, either
constexpr size_t kMostHeld = 256;   // flags and digits, in bytes
constexpr std::string_view kFlags = ":<=>7";

bool isBlank(unsigned char byte) { return byte <= ' ' || byte == 127; }

} // namespace

PolylineMender::Step PolylineMender::take(unsigned char byte, std::string &text) {
    const unsigned char low = byte & 0x7Fu;
    if (isSevenBit_ && byte != ';') {
        text += static_cast<char>(low);
        return low == byte ? Step::Copied : Step::Rewritten;
    }
    const bool isLast = byte >= kLastDigit && byte <= kLargestLast;
    if (!isLast && (byte < kLowestDigit || byte > 126 || digits_.size() == kMostHeld)) return other(byte, text);
    digits_ += static_cast<char>(byte);
    if (shift_ < kMostShift) bits_ |= static_cast<uint64_t>(isLast ? byte - kLastDigit : byte - kLowestDigit) << shift_;
    if (shift_ < kMostShift) shift_ += kBits;
    if (!isLast) return Step::Copied;
    endNumber(text);
    return Step::Rewritten;
}

PolylineMender::Step PolylineMender::other(unsigned char byte, std::string &text) {
    const unsigned char low = byte & 0x7Fu;
    const bool isFlag = kFlags.find(static_cast<char>(low)) != std::string_view::npos;
    if (isBlank(low) && digits_.size() < kMostHeld) {
        if (low != byte) return Step::Rewritten;
        (digits_.empty() ? flags_ : digits_) += static_cast<char>(byte);
    } else if (!digits_.empty() || (byte != ';' && !isFlag)) {
        return Step::Astray;
    } else {
        isSevenBit_ = low == '7';
        if (!isSevenBit_ || !isOpen_) flags_ += static_cast<char>(low);
    }
    if (isOpen_ || isSevenBit_ || byte == ';' || flags_.size() == kMostHeld) text += std::exchange(flags_, {});
    return byte == ';' ? Step::Ends : low == byte ? Step::Copied : Step::Rewritten;
}

void PolylineMender::endNumber(std::string &text) {
    if (!isOpen_) text += '7' + std::exchange(flags_, {});
    isOpen_ = true;
    for (; bits_ >= kSevenDigits; bits_ >>= kSevenBits)
        text += static_cast<char>(kLowestDigit + bits_ % kSevenDigits);
    text += static_cast<char>(kLowestDigit + kSevenDigits + bits_);
    bits_ = shift_ = 0;
    digits_.clear();
}

} // namespace host
