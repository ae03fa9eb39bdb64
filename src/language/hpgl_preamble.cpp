#include "language/hpgl_preamble.h"

namespace language::hpgl {

namespace {

constexpr size_t kLongestJob = 4096; // longer is no job control: nothing of it is kept
constexpr std::string_view kOn = "(", kOnToo = "Y", kReset = "R";
constexpr std::string_view kWithParameters = "@HIMNPT"; // the settings of buffer and handshake

} // namespace

void Preamble::beginJob() {
    *this = Preamble();
    job_ = "\x1b%-12345X";
}

void Preamble::jobByte(unsigned char byte) {
    if (job_.size() < kLongestJob) job_ += static_cast<char>(byte);
}

void Preamble::control(std::string_view sequence) {
    const std::string_view letter = sequence.substr(2, 1);
    if (letter == kReset) return controls_.clear();
    if (letter == kOn || letter == kOnToo) return controls_.keep(kOn, KeptSettings::kWhole, std::string(sequence));
    const size_t known = kWithParameters.find(letter);
    if (known == std::string_view::npos) return;
    // Without its colon a sequence would take the bytes behind it for parameters.
    controls_.keep(kWithParameters.substr(known, 1), KeptSettings::kWhole,
                   std::string(sequence) + (sequence.ends_with(':') ? "" : ":"));
}

void Preamble::append(std::string &text) const {
    if (job_.size() < kLongestJob) text += job_;
    if (entered_) text += "\x1b%0B";
    controls_.append(text);
}

} // namespace language::hpgl
