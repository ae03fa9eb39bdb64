// Mends DM/PL, of which only the end is told by a mark of its own: "@".
#pragma once

#include "host/mending/mender.h"

namespace host {

class DmplMender final : public Mender {
public:
    void finish() override;

private:
    void step(unsigned char byte) override;

    enum class State : uint8_t { Open, Label, Ended, Selecting } state_ = State::Open;
    bool isAfterBlank_ = true;
};

} // namespace host
