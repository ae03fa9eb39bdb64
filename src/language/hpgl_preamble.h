// What stands around HP-GL in a job: job control lines, the switch into the language, the settings of the line by device
// control. None of it is an instruction, and initializing a plotter leaves it alone; but a job that goes on from the middle
// of another one must begin with it, too.
#pragma once

#include "language/kept_settings.h"

#include <string>
#include <string_view>

namespace language::hpgl {

class Preamble {
public:
    /// A universal exit: what came before is of another job.
    void beginJob();
    void jobByte(unsigned char byte);
    /// The switch into HP-GL was seen.
    void enter() { entered_ = true; }
    /// A device-control sequence from its ESC; one that is no setting is not kept.
    void control(std::string_view sequence);
    void append(std::string &text) const;

private:
    std::string job_; ///< universal exit and job control lines
    bool entered_ = false;
    KeptSettings controls_;
};

} // namespace language::hpgl
