#include "virtual_plotter/face/plotter.h"

#include "emulations/emulations.h"

#include <algorithm>
#include <array>
#include <utility>

namespace virtual_plotter {

namespace {

constexpr uint64_t kRubbishEvery = 256; // bytes heard

} // namespace

void setEmulation(PlotterOptions &options, int32_t emulation) {
    const emulations::Emulation &row = emulations::of(emulation);
    options.language = row.playedAs;
    options.limits = row.reply;
    options.limitTexts = row.questions;
}

VirtualPlotter::VirtualPlotter(const PlotterOptions &options, PenSink &sink, const Rectangle &hardClip)
    : options_(options), plot_(options.language, sink, hardClip),
      questions_(options.limits == ReplyForm::Pairs, options.limitTexts, hardClip) {
    questions_.onPlot = [this](std::string_view bytes) { plot_.take(bytes); };
    questions_.onReply = [this](std::string_view reply) { say(reply); };
    options_.bufferBytes = std::max<size_t>(options_.bufferBytes, 1);
    plot_.onChoice = [this](Reader &reader) {
        reader.onRequest = [this](std::string_view request) {
            if (request.front() != '\x1B') answer(request); // those were answered when they were heard
        };
    };
}

size_t VirtualPlotter::room() const {
    if (isHanging() || hasHungUp()) return 0;
    size_t room = options_.bufferBytes - buffer_.size();
    if (options_.fault == Fault::Hang || options_.fault == Fault::HangUp)
        room = static_cast<size_t>(std::min<uint64_t>(room, options_.faultAfter - heard_));
    return room;
}

size_t VirtualPlotter::hear(std::string_view bytes, Time now) {
    advance(now);
    bytes = bytes.substr(0, room());
    for (char byte : bytes)
        hearByte(byte, now);
    if (!isPaced()) carryOut(buffer_.size());
    return bytes.size();
}

void VirtualPlotter::hearByte(char byte, Time now) {
    if (buffer_.empty()) nextAt_ = now + options_.perByte;
    ++heard_;
    buffer_.push_back(byte);

    constexpr size_t kEscapeBytes = 3;
    if (byte == '\x1B')
        escape_ = byte;
    else if (escape_.size() == 2 || (escape_.size() == 1 && byte == '.'))
        escape_ += byte;
    else
        escape_.clear();
    if (escape_.size() == kEscapeBytes) {
        if (!isPaced()) carryOut(buffer_.size());
        answer(escape_);
        escape_.clear();
    }
    holdHost();
    if (reached(Fault::Rubbish) && heard_ % kRubbishEvery == 0) say("rubbish");
}

void VirtualPlotter::advance(Time now) {
    if (!isPaced() || buffer_.empty() || now < nextAt_) return;
    const auto due = static_cast<uint64_t>((now - nextAt_) / options_.perByte) + 1;
    const auto count = static_cast<size_t>(std::min<uint64_t>(due, buffer_.size()));
    nextAt_ += options_.perByte * static_cast<int64_t>(count);
    carryOut(count);
    holdHost();
}

void VirtualPlotter::carryOut(size_t count) {
    if (count == 0) return;
    std::array<char, 1024> bytes;
    while (count > 0) {
        const auto piece = static_cast<std::ptrdiff_t>(std::min(count, bytes.size()));
        std::copy_n(buffer_.begin(), piece, bytes.begin());
        buffer_.erase(buffer_.begin(), buffer_.begin() + piece);
        questions_.take({bytes.data(), static_cast<size_t>(piece)});
        count -= static_cast<size_t>(piece);
    }
}

void VirtualPlotter::finish() {
    carryOut(buffer_.size());
    questions_.finish();
    plot_.finish();
}

void VirtualPlotter::holdHost() {
    if (reached(Fault::Xoff)) {
        if (!holding_) said_ += kXoff;
        holding_ = true;
        return;
    }
    if (!isPaced()) return;
    const size_t free = options_.bufferBytes - buffer_.size();
    const bool hold = holding_ ? free < options_.bufferBytes - options_.bufferBytes / 4 : free < options_.bufferBytes / 4;
    if (hold != holding_) said_ += hold ? kXoff : kXon;
    holding_ = hold;
}

void VirtualPlotter::answer(std::string_view request) {
    Asked asked;
    if (const Reader *reader = plot_.reader()) {
        asked.pen = reader->status();
        asked.unknown = reader->findings().unknown - unknown_;
        asked.malformed = reader->findings().malformed - malformed_;
    }
    asked.isFresh = fresh_;
    asked.bufferBytes = options_.bufferBytes;
    asked.freeBytes = options_.bufferBytes - buffer_.size();
    say(replyTo(request, asked, options_.limits));
    if (request == "OS") fresh_ = false;
    if (request == "OE") {
        unknown_ += asked.unknown;
        malformed_ += asked.malformed;
    }
}

void VirtualPlotter::say(std::string_view text) {
    if (!reached(Fault::Rubbish)) {
        said_ += text;
        return;
    }
    // As many bytes, but never XON or XOFF: holding the line is a fault of its own.
    for (size_t i = 0; i < text.size(); ++i) {
        char byte;
        do {
            byte = static_cast<char>(random_());
        } while (byte == kXon || byte == kXoff);
        said_ += byte;
    }
}

std::string VirtualPlotter::takeSaid() { return std::exchange(said_, {}); }

} // namespace virtual_plotter
