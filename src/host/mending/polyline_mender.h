// Encoded polylines in the form of eight bits, whose numbers end with bytes past ASCII, made those of seven bits: the same
// numbers in base 32 instead of base 64, behind a "7".
#pragma once

#include <cstdint>
#include <string>

namespace host {

class PolylineMender {
public:
    enum class Step : uint8_t {
        Copied,    ///< the byte went into the text as it is, or waits there
        Rewritten, ///< it is past ASCII, and was replaced
        Ends,      ///< a semicolon: the polyline ends, with all of its numbers
        Astray     ///< not taken: a byte that is none of a polyline's, or an end in the middle of a number
    };

    void begin() { *this = PolylineMender(); }
    /// Appends to text what the byte comes to.
    Step take(unsigned char byte, std::string &text);
    /// The bytes since the last whole number. What is none may be an instruction that no semicolon parts from the polyline.
    const std::string &rest() const { return digits_; }

private:
    Step other(unsigned char byte, std::string &text);
    void endNumber(std::string &text);

    std::string flags_; ///< that were read before it is known that the polyline needs to be rewritten
    bool isSevenBit_ = false, isOpen_ = false;
    std::string digits_;
    uint64_t bits_ = 0;
    unsigned shift_ = 0;
};

} // namespace host
