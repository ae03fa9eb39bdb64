#include "host/print/destination.h"

#include "host/devices/node_access.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/picture/plot_findings.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>

namespace host {

namespace {

/// Between two sheets or pens nobody has claimed the plotter: so that no second print begins there. None of a node that
/// cannot be opened; the print itself tells why.
UniqueFd lockOf(const UsbDevice &device) {
    UniqueFd node(open(device.node.c_str(), O_RDONLY | O_CLOEXEC));
    if (node.get() >= 0 && flock(node.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw Failure(ExitCode::Busy,
                      fmt::format("{}: busy: another print has it; wait until it is done, or end it", shown(device.id())));
    return node;
}

} // namespace

void requireFree(const Target &target) {
    switch (target.kind) {
    case Target::Kind::Port: return requireFreePort(target.path);
    case Target::Kind::Usb: return requireFree(*target.usb);
    case Target::Kind::File: return requireWritable(target.path);
    case Target::Kind::Picture: Drawing unfinished(target.drawing, target.path); // its file never appears
    }
}

Destination::Destination(const Target &target) : target_(target) {
    switch (target.kind) {
    case Target::Kind::Port: lock_.emplace(target.path); break;
    case Target::Kind::Usb:
        requireFree(*target.usb);
        usbLock_ = lockOf(*target.usb);
        break;
    case Target::Kind::File: capture_.emplace(target.path); break;
    case Target::Kind::Picture: plotter_.emplace(target.drawing, target.path); break;
    }
}

const std::string &Destination::port() const {
    return plotter_ ? plotter_->port() : capture_ ? capture_->port() : target_.path;
}

WatchedLine Destination::line() const {
    return {lock_ ? lock_->descriptor() : -1, target_.usb.has_value(), target_.line.handshake == "hardware"};
}

bool Destination::isGone() const {
    if (lock_) return lock_->isGone();
    return target_.usb && accessTo(target_.usb->node) == NodeAccess::NoNode;
}

void Destination::settle(PrintReport &report) {
    report.isGone = isGone();
    lock_.reset(); // while signals can still end its close
    if (plotter_) report.arrivedBytes = plotter_->end();
    if (capture_) report.arrivedBytes = capture_->end();
}

void Destination::addNotes(Verdict &verdict) const {
    if (!plotter_) return;
    for (const std::string &note : findingNotes(plotter_->plot(), plotter_->drawing().sheet()))
        verdict.notes.push_back(note);
    if (!plotter_->drawing().note().empty()) verdict.notes.push_back(shown(plotter_->drawing().note()));
}

void Destination::finish() {
    if (capture_) capture_->finish();
    if (plotter_) plotter_->finish();
}

} // namespace host
