// Writing a plot anew, byte by byte as it comes: a plot file may be larger than the memory. What a language needs is in the
// classes of hpgl_mender.h and dmpl_mender.h.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace host {

/// In the order in which they are told. Their words: mending.cpp.
enum class Mending : uint8_t { ByteOrderMark, Wrapper, Nul, LineEnds, Etx, Polylines, PolylineEnd, Comments, Question, End };
constexpr size_t kMendings = static_cast<size_t>(Mending::End) + 1;
using Mendings = std::bitset<kMendings>;

/// Thrown by a mender where there is no way to write the plot without another drawing.
struct Unmendable {
    enum Why : uint8_t {
        Stray,   ///< a byte that a plotter's wire does not take, and that may draw
        Printed, ///< what a printer would print beside the plot
        CutOff,  ///< the bytes end within an instruction
    };
    Why why;
    uint64_t offset;
    unsigned char byte = 0; ///< that is not ASCII; 0 where it is not the point
};

/// U+FEFF in UTF-8: before a text it draws nothing.
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

class Mender {
public:
    Mender() = default;
    Mender(const Mender &) = delete;
    Mender &operator=(const Mender &) = delete;
    virtual ~Mender() = default;

    /// Throws Unmendable.
    void take(std::string_view bytes) {
        for (char c : bytes) {
            step(static_cast<unsigned char>(c));
            ++offset_;
        }
    }
    /// The bytes end here. Throws Unmendable.
    virtual void finish() = 0;

    /// What was written since the last call.
    std::string written() { return std::exchange(out_, {}); }
    const Mendings &mendings() const { return mendings_; }
    bool did(Mending mending) const { return mendings_[static_cast<size_t>(mending)]; }

protected:
    virtual void step(unsigned char byte) = 0;

    void put(char c) {
        out_ += c;
        if (c > ' ') lastByte_ = c;
    }
    void put(std::string_view text) {
        for (char c : text)
            put(c);
    }
    /// Bytes that may be the last ones, behind the end of the plot. A long run of them goes on as it is.
    void hold(std::string_view blanks) {
        constexpr size_t kMost = 4096;
        if (pending_.size() + blanks.size() > kMost) flush();
        pending_ += blanks;
    }
    bool holds(std::string_view any) const { return pending_.find_first_of(any) != std::string::npos; }
    bool holdsNothing() const { return pending_.empty(); }
    std::string held() { return std::exchange(pending_, {}); }
    virtual void flush() { put(held()); }
    /// The last byte that is no blank.
    char lastByte() const { return lastByte_; }
    void note(Mending mending) { mendings_.set(static_cast<size_t>(mending)); }
    [[noreturn]] void refuse(Unmendable::Why why, unsigned char byte = 0) const { throw Unmendable{why, offset_, byte}; }

private:
    std::string out_, pending_;
    Mendings mendings_;
    uint64_t offset_ = 0;
    char lastByte_ = 0;
};

} // namespace host
