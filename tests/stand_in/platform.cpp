#include "stand_in/platform.h"

#include "platform/posix/stop.h"

namespace stand_in {

std::string quoted(std::string_view bytes) {
    std::string text = "\"";
    for (char c : bytes) {
        if (c >= 0x20 && c < 0x7F) {
            text += c;
        } else {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            text += hex;
        }
    }
    return text + "\"";
}

void Clock::sleep(unsigned seconds) {
    const Step step(fate_, Seam::other, "sleep");
    if (platform::stopRequested()) return; // it cuts the sleep short
    slept += seconds;
    step.log(seconds);
}

void Console::print(std::string_view text, bool isError) {
    const Step step(fate_, Seam::other, "print");
    (isError ? err : out) += text;
    if (fate_.keepsLog) fate_.log.push_back((isError ? "err " : "out ") + quoted(text));
}

bool CreationGate::mayCreate() {
    const Step step(fate_, Seam::other, "create");
    ++creations;
    return !step.fails() && (failAt == 0 || (failAllAfter ? creations < failAt : creations != failAt));
}

Platform::Platform() : before_(platform::backends()) {
    platform::backends() = {&terminal, &clock, &console, &files, &objects, &registry};
}

} // namespace stand_in
