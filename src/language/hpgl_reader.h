// Reads HP-GL, and HP-GL/2 as pen plotters know it. It acts on each byte as it comes, with a state for each place that a
// byte can stand in: a plot file may be larger than the memory, and on a line bytes come a few at a time.
#pragma once

#include "language/hpgl_escapes.h"
#include "language/hpgl_instructions.h"
#include "language/hpgl_preamble.h"
#include "language/reader.h"

#include <array>

namespace language {

/// Finds the instructions in the bytes and calls their handlers. A mnemonic is two letters; numbers follow, parted by commas
/// or blanks, up to a semicolon or the next letter. An instruction with too few numbers is left out, of too many the first
/// ones count; both are malformed.
class HpglReader final : public Reader {
public:
    HpglReader(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte);
    void take(std::string_view bytes) override;
    void finish() override;
    PenStatus status() const override;
    Place place() const override;
    std::string state() const override;

private:
    enum class State : uint8_t {
        Between,    // instructions
        Second,     // letter of a mnemonic
        NumberList, // of the instruction
        Quoted,     // text within an instruction
        Comment,    // where a text without quotation marks may begin
        Remark,     // such a text
        Character,  // the one that DT or SM takes
        Label,      // or another text up to the label terminator
        Polyline,
        Rubbish, // bytes that begin no instruction
        Escape,
        Foreign,  // another language
        JobStart, // behind a universal exit: job control lines, or HP-GL
        JobLine,
    };

    void step(unsigned char byte);
    void rubbishByte(unsigned char byte);
    void startAt(unsigned char byte);
    void beginInstruction(unsigned char second);
    void numbersByte(unsigned char byte);
    void completeNumber();
    void endInstruction();
    void characterByte(unsigned char byte);
    void labelByte(unsigned char byte);
    void escapeByte(unsigned char byte);
    void escapeMeans(hpgl::EscapeScanner::Meaning meaning);
    void endWhatIsOpen();
    void keep(unsigned char byte);
    void note(Oddity::Kind kind);

    hpgl::Plotter plotter_;
    State state_ = State::Between;
    State resumed_ = State::Between; // after an escape sequence
    hpgl::EscapeScanner escape_;
    std::string sequence_; // the escape sequence, while it is short
    hpgl::Preamble preamble_;
    unsigned char letter_ = 0; // first of the mnemonic
    const hpgl::Instruction *instruction_ = nullptr;
    NumberScanner number_;
    std::array<double, hpgl::kMostNumbers> numbers_{};
    size_t count_ = 0;
    bool broken_ = false; // the instruction holds what does not belong there
    uint64_t offset_ = 0; // of the instruction or the rubbish
    std::array<char, 24> text_{};
    size_t textLength_ = 0;
};

} // namespace language
