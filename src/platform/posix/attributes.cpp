// Terminal attributes as the platform that the plug-in was designed for sets them: the C library here leaves some bits of an
// earlier program's, which would reach into the next job.
#include "platform/posix/terminal.h"

namespace posix {

void cfmakeraw(termios *attributes) {
    // IXANY is not among that platform's; here it would let any byte of the plotter's take back its XOFF.
    attributes->c_iflag &= ~static_cast<tcflag_t>(BRKINT | PARMRK | INPCK | IGNPAR | ISTRIP | INLCR | IGNCR | ICRNL | IXON |
                                                  IXOFF | IXANY | IMAXBEL);
    attributes->c_iflag |= IGNBRK;
    attributes->c_oflag &= ~static_cast<tcflag_t>(OPOST);
    attributes->c_lflag &=
        ~static_cast<tcflag_t>(ICANON | ECHO | ECHOE | ECHOK | ECHONL | ISIG | IEXTEN | NOFLSH | TOSTOP | PENDIN);
    attributes->c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB);
    attributes->c_cflag |= CS8 | CREAD;
    attributes->c_cc[VMIN] = 1;
    attributes->c_cc[VTIME] = 0;
}

void cfsetspeed(termios *attributes, speed_t speed) {
    ::cfsetspeed(attributes, speed);
    // The rate of the input has bits of its own, which that call leaves; without them it is the output's.
    attributes->c_cflag &= ~static_cast<tcflag_t>(CIBAUD);
}

} // namespace posix
