#include "virtual_plotter/drawing/inked_dots.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>

namespace virtual_plotter {

namespace {

constexpr uint8_t whiteOf(uint8_t ink) { return static_cast<uint8_t>(ink * kShades); } // below the ink's first shade
constexpr uint8_t inkOf(uint8_t dot) { return static_cast<uint8_t>((dot - 1) / kShades); }
constexpr int shadeOf(uint8_t dot) { return dot == kWhiteDot ? 0 : dot - whiteOf(inkOf(dot)); }

/// What two strokes of an ink cover of a dot: as much of what the one left as the other covers of a white one.
constexpr uint8_t joined(uint8_t one, uint8_t other) {
    return static_cast<uint8_t>(one + static_cast<uint16_t>((kShades - one) * other + kShades / 2) / kShades);
}

/// A part of a colour as it looks under so much of an ink.
uint8_t mixed(int below, int ink, int shade) {
    return static_cast<uint8_t>((below * (kShades - shade) + ink * shade + kShades / 2) / kShades);
}

Colour mixed(Colour below, Colour ink, int shade) {
    return {mixed(below.red, ink.red, shade), mixed(below.green, ink.green, shade), mixed(below.blue, ink.blue, shade)};
}

constexpr uint8_t inverse(uint8_t part) { return static_cast<uint8_t>(255 - part); }

constexpr uint32_t keyOf(Colour colour) {
    return uint32_t{colour.red} << 16 | uint32_t{colour.green} << 8 | uint32_t{colour.blue};
}

constexpr Colour kWhite = {255, 255, 255};
constexpr size_t kMostNumbers = 256;

} // namespace

InkedDots::InkedDots(int width, int height)
    : width_(width), height_(height), stride_(static_cast<size_t>(width) + kRunLength),
      dots_(stride_ * static_cast<size_t>(height)), under_(static_cast<Under *>(std::calloc(dots_.size(), sizeof(Under)))) {
    if (under_ == nullptr) throw std::bad_alloc();
}

uint8_t InkedDots::inkOf(Colour colour) {
    const auto end = inks_.begin() + static_cast<ptrdiff_t>(inkCount_);
    const auto found = std::find(inks_.begin(), end, colour);
    if (found == inks_.end()) return kMostColours - 1;
    if (found == end) inks_[inkCount_++] = colour;
    return static_cast<uint8_t>(found - inks_.begin());
}

void InkedDots::cover(int x, int y, uint8_t ink, const Run &shades) {
    const size_t at = offset(x, y);
    uint8_t *dots = dots_.data() + at;
    const uint8_t white = whiteOf(ink);
    Run covered;
    unsigned others = 0;
    for (size_t i = 0; i < kRunLength; ++i) {
        const uint8_t dot = dots[i], shade = shades[i];
        const bool isOther = dot != kWhiteDot && static_cast<uint8_t>(dot - white - 1) >= kShades;
        others |= static_cast<unsigned>(isOther && shade > 0);
        const auto level = static_cast<uint8_t>(dot == kWhiteDot ? 0 : dot - white);
        covered[i] = shade > 0 ? static_cast<uint8_t>(white + joined(level, shade)) : dot;
    }
    if (others != 0)
        coverOther(at, ink, shades);
    else
        memcpy(dots, covered.data(), sizeof covered);
}

// The ink that was uppermost becomes part of what the new one lies on.
void InkedDots::coverOther(size_t at, uint8_t ink, const Run &shades) {
    for (size_t i = 0; i < kRunLength; ++i) {
        if (shades[i] == 0) continue;
        uint8_t &dot = dots_[at + i];
        if (dot != kWhiteDot && virtual_plotter::inkOf(dot) != ink) {
            const Colour below = seen(at + i);
            under_[at + i] = {inverse(below.red), inverse(below.green), inverse(below.blue)};
            dot = kWhiteDot;
            hasMixed_.store(true, std::memory_order_relaxed);
        }
        dot = static_cast<uint8_t>(whiteOf(ink) + joined(static_cast<uint8_t>(shadeOf(dot)), shades[i]));
    }
}

std::vector<Colour> InkedDots::takePalette() {
    std::vector<Colour> colours = {kWhite};
    for (size_t ink = 0; ink < inkCount_; ++ink)
        for (int shade = 1; shade <= kShades; ++shade)
            colours.push_back(mixed(kWhite, inks_[ink], shade));
    std::map<uint32_t, uint8_t> numbers;
    const bool fits = eachMixed([&](size_t at) {
        const Colour colour = seen(at);
        if (numbers.try_emplace(keyOf(colour), static_cast<uint8_t>(colours.size())).second) colours.push_back(colour);
        return colours.size() <= kMostNumbers;
    });
    if (!fits) return {};
    eachMixed([&](size_t at) {
        dots_[at] = numbers.at(keyOf(seen(at)));
        return true;
    });
    return colours;
}

bool InkedDots::isMixed(size_t at) const {
    return dots_[at] != kWhiteDot && shadeOf(dots_[at]) < kShades && under_[at] != Under{};
}

bool InkedDots::eachMixed(const std::function<bool(size_t at)> &visit) const {
    if (!hasMixed_) return true;
    for (size_t run = 0; run + kRunLength <= dots_.size();
         run += kRunLength) { // what is left behind the last lies off the page
        uint64_t dots;
        memcpy(&dots, dots_.data() + run, sizeof dots);
        for (size_t at = run; dots != 0 && at < run + kRunLength; ++at)
            if (isMixed(at) && !visit(at)) return false;
    }
    return true;
}

std::span<const uint8_t> InkedDots::colourRow(int y, std::vector<uint8_t> &room) const {
    room.assign(static_cast<size_t>(width_) * 3, 255);
    uint8_t *part = room.data();
    for (size_t at = offset(0, y), end = at + static_cast<size_t>(width_); at < end; ++at, part += 3) {
        if (dots_[at] == kWhiteDot) continue;
        const Colour colour = seen(at);
        part[0] = colour.red;
        part[1] = colour.green;
        part[2] = colour.blue;
    }
    return room;
}

// Where nothing shines through, what lies below need not be looked up.
Colour InkedDots::seen(size_t at) const {
    const Colour ink = inks_[virtual_plotter::inkOf(dots_[at])];
    const int shade = shadeOf(dots_[at]);
    if (shade == kShades) return ink;
    const auto [red, green, blue] = under_[at];
    const Colour below = {inverse(red), inverse(green), inverse(blue)};
    return mixed(below, ink, shade);
}

} // namespace virtual_plotter
