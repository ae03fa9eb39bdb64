// A serial line in software: a pseudo-terminal of which we keep the far end. Any program can open its near end like a serial
// port, and needs to know nothing of a plotter in software.
#pragma once

#include <string>

namespace virtual_plotter {

class PtyLine {
public:
    PtyLine() = default;
    PtyLine(const PtyLine &) = delete;
    PtyLine &operator=(const PtyLine &) = delete;
    ~PtyLine() { hangUp(); }

    /// Makes the line, in raw mode. Returns 0 or an errno.
    int open();

    /// The near end's path, for the program that sends.
    const std::string &path() const { return path_; }
    /// Where that program is heard and answered; -1 when there is no line.
    int farEnd() const { return farEnd_; }

    /// Opens the near end as well, so that it does not go away between the programs that open it. Returns 0 or an errno.
    int holdNearEnd();
    void releaseNearEnd();
    /// False once the last program that had opened the near end has closed it; true before the first one.
    bool isHeld() const;

    /// Takes the line away from whoever has it open.
    void hangUp();

private:
    std::string path_;
    int farEnd_ = -1;
    int nearEnd_ = -1;
};

} // namespace virtual_plotter
