// Escape sequences between and within HP-GL instructions. Files for printers that know HP-GL/2 are wrapped in them, and
// questions to a plotter may stand anywhere; read as instructions they would be reported as errors, or draw.
#pragma once

#include <cstdint>
#include <string_view>

namespace language::hpgl {

/// Reads one sequence, byte by byte. Three families meet here: device control (ESC . letter), which plotters take out of the
/// stream wherever it stands and which therefore leaves the instruction around it alone; the mode switches of HP-GL/2
/// devices (ESC % number letter, ESC E); and the sequences of such devices' printer language, to be skipped with their data.
class EscapeScanner {
public:
    enum class Step : uint8_t {
        More,
        Done,     ///< this byte was the last of the sequence
        DoneAway, ///< the sequence ended before this byte
    };
    enum class Meaning : uint8_t {
        Nothing,
        DeviceControl, ///< without a question
        Request,       ///< a device-control question: see text
        Enter,         ///< HP-GL from here on
        Leave,         ///< another language from here on
        Exit,          ///< universal exit: job control lines may follow
        Reset,
    };

    /// After the ESC.
    void begin() noexcept { *this = EscapeScanner(); }
    Step take(unsigned char byte) noexcept;
    Meaning meaning() const noexcept { return meaning_; }
    /// Of a request: ESC, a point and its letter.
    std::string_view text() const noexcept { return {text_, sizeof text_}; }

private:
    Step deviceControl(unsigned char letter) noexcept;
    Step modeSwitch(unsigned char byte) noexcept;
    Step printerCommand(unsigned char byte) noexcept;

    enum class State : uint8_t { First, Control, Parameters, Mode, Group, Command, Data } state_ = State::First;
    Meaning meaning_ = Meaning::Nothing;
    char text_[3] = {'\x1b', '.', 0};
    uint32_t number_ = 0; // digits of a mode switch or printer command; then the bytes of data still to come
    bool negative_ = false;
};

} // namespace language::hpgl
