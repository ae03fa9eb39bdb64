// Terminal attributes as the platform that the plug-in was designed for sets them. The C library's functions of these names
// leave some bits as an earlier program set them, and those would affect the job.
#include "platform/posix/terminal.h"

namespace posix {

void cfmakeraw(termios *attributes) {
    // That platform's does not clear IXANY; here it must go, or any byte from the plotter would undo its XOFF.
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
    // That call leaves the bits of a separate input speed; when they are 0, input has the output's speed.
    attributes->c_cflag &= ~static_cast<tcflag_t>(CIBAUD);
}

} // namespace posix
