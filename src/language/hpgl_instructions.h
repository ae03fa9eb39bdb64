// HP-GL's instructions as data: what follows each mnemonic, and what it does. The reader must know how far an instruction
// reaches even if it draws nothing (a label's text could hold other mnemonics); so those without effect have rows, too, and
// are not reported as unknown.
#pragma once

#include "language/hpgl_plotter.h"

#include <string_view>

namespace language::hpgl {

/// What stands behind a mnemonic.
enum class Form : uint8_t {
    NumberList, ///< up to the terminator or the next letter
    Groups,     ///< the same, any number of them: carried out group by group as they come
    Remark,     ///< numbers and texts in quotation marks, which are skipped
    Comment,    ///< the same, or a text without quotation marks up to the semicolon
    Label,      ///< characters up to the label terminator
    Text,       ///< the same, but nothing is drawn
    Terminator, ///< one character, then numbers: the label terminator
    Symbol,     ///< one character: what marks each point
    Polyline,   ///< encoded
    Strokes,    ///< numbers, carried out one by one: a character that the plot itself makes
    Request,    ///< a question to the plotter
};

/// How an instruction's last text is kept as a setting. Nothing: it acts once, or the plotter's other members tell what came
/// of it.
enum class Kept : uint8_t {
    Nothing,
    Whole,
    ByFirst,  ///< apart for each value of its first number: a line type, a character
    BySecond, ///< the same of its second: a pen
    Corners,  ///< P1 and P2, or P1 alone, which takes P2 along
};

using Handler = bool (*)(Plotter &, Numbers);

constexpr uint8_t kAny = 255;
constexpr size_t kMostNumbers = 72; // as a fill pattern of 8 by 8 has; beyond them, numbers are only counted

struct Instruction {
    std::string_view name;
    Handler handler = nullptr;      ///< null: known, and nothing to do for a drawing
    uint8_t least = 0, most = kAny; ///< numbers
    bool draws = false;             ///< cannot stand within the definition of a polygon
    Form form = Form::NumberList;
    uint8_t group = 2; ///< numbers that are carried out at a time
    Kept kept = Kept::Nothing;
    std::string_view replaced = {}; ///< a setting that this one takes the place of
};

/// The instruction with this mnemonic, in upper or lower case; null when there is none.
const Instruction *findInstruction(unsigned char first, unsigned char second) noexcept;

/// Keeps what an instruction has set, with the numbers that it had.
void keepSetting(Plotter &plotter, const Instruction &instruction, Numbers numbers);

} // namespace language::hpgl
