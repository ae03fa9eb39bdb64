#include "host/mending/dmpl_mender.h"

namespace host {

void DmplMender::step(unsigned char byte) {
    if (byte >= 0x80) refuse(Unmendable::Stray, byte);
    if (byte == 0) {
        note(Mending::Nul);
        if (isAfterBlank_) return;
        byte = ' '; // it may part two numbers
    }
    isAfterBlank_ = byte <= ' ';
    const char c = static_cast<char>(byte);
    if (isAfterBlank_) {
        hold({&c, 1});
    } else {
        flush();
        put(c);
    }
    switch (state_) {
    case State::Open:
        if (byte == 'S') state_ = State::Label;
        if (byte == '@') state_ = State::Ended;
        break;
    case State::Label:
        if (byte == '_' || byte == '\r' || byte == '\n') state_ = State::Open;
        break;
    case State::Ended:
        if (byte == ';') state_ = State::Selecting;
        break;
    case State::Selecting: state_ = byte == ':' ? State::Open : byte == ';' ? State::Selecting : State::Ended; break;
    }
}

void DmplMender::finish() {
    if (state_ == State::Label) refuse(Unmendable::CutOff);
    if (state_ == State::Open) {
        put('@');
        note(Mending::End);
    }
    flush();
}

} // namespace host
