// Mends HP-GL. It goes from place to place as the reader of the language does (language/hpgl_reader.cpp), for the same byte
// is a separator behind a number, and text within a label; but where the reader draws, it copies.
#pragma once

#include "host/mending/mender.h"
#include "host/mending/polyline_mender.h"
#include "language/hpgl_escapes.h"
#include "language/hpgl_instructions.h"

namespace host {

class HpglMender final : public Mender {
public:
    struct Wishes {
        bool ends = false;  ///< with a semicolon
        bool parts = false; ///< its instructions with semicolons, where line ends or ETX do it
    };

    explicit HpglMender(Wishes wishes) : wishes_(wishes) {}
    void finish() override;

private:
    enum class State : uint8_t {
        Between, // instructions, or within what is none
        Second,  // letter of a mnemonic
        NumberList,
        Quoted,
        Comment, // where a text without quotation marks may begin
        Remark,  // such a text
        Character,
        Label,
        Polyline,
        Escape,
        Foreign,  // the printer's language
        JobStart, // behind a universal exit: job control lines, or HP-GL
        JobLine,
    };

    void step(unsigned char byte) override;
    void nul();
    void betweenByte(unsigned char byte);
    void secondByte(unsigned char byte);
    void beginInstruction();
    void numbersByte(unsigned char byte);
    void commentByte(unsigned char byte);
    void characterByte(unsigned char byte);
    void labelByte(unsigned char byte);
    void polylineByte(unsigned char byte);
    void endPolylineEarly(Unmendable::Why otherwise);
    void foreignByte(unsigned char byte);
    void jobStartByte(unsigned char byte);
    void jobLineByte(unsigned char byte);
    void escapeByte(unsigned char byte);
    void deviceControl();
    void leavePlot(language::hpgl::EscapeScanner::Meaning meaning);
    void endWhatIsOpen();
    void partFromNext();
    void holdByte(unsigned char byte);
    void flush() override;
    void endInstruction();

    const Wishes wishes_;
    State state_ = State::Between;
    State resumed_ = State::Between; // after an escape sequence
    language::hpgl::EscapeScanner escape_;
    std::string sequence_; // of it
    std::string mnemonic_; // its first letter, with blanks behind it
    const language::hpgl::Instruction *instruction_ = nullptr;
    unsigned char terminator_ = language::hpgl::Lettering::kEtx; // of labels
    std::string question_;                                       // held back, for it may be the last
    PolylineMender polyline_;
    bool isEnded_ = true;    // the last instruction, by a semicolon
    bool hidesMark_ = false; // device control is last, and has semicolons of its own, at which the sender would stop
    bool isReset_ = false;   // by the printer's language, before the next instruction
    bool isBegun_ = false;   // something was written
};

} // namespace host
