#include "host/print/destination.h"

#include "host/devices/usb_access.h"
#include "host/picture/plot_findings.h"
#include "host/plugin/usb_target.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

namespace host {

void requireOutput(const char *option, const std::string &file, const PrintOptions &options) {
    requireOtherFile(option, file, options.plot);
    requireOtherFile(option, file, options.jobFile);
}

Destination::Destination(const PrintOptions &options) : options_(options) {
    if (options.toUsb) {
        usb_ = chooseUsbDevice(usbDevices(), parseUsbChoice(options.usbChoice));
        requireFree(*usb_);
        if (options.verbose) printError("{}", notesOf(*usb_));
    } else if (!options.port.empty()) {
        lock_.emplace(options.port);
    } else if (!options.picture.empty()) {
        requireOutput("--virtual", options.picture, options);
        plotter_.emplace(options.drawing, options.picture);
    } else {
        requireOutput("--capture", options.capture, options);
        capture_.emplace(options.capture);
    }
}

const std::string &Destination::port() const {
    return plotter_ ? plotter_->port() : capture_ ? capture_->port() : options_.port;
}

std::string Destination::name() const {
    if (usb_) return usb_->id();
    return plotter_ ? options_.picture : capture_ ? options_.capture : options_.port;
}

WatchedLine Destination::line() const {
    return {lock_ ? lock_->descriptor() : -1, usb_.has_value(), options_.line.handshake == "hardware"};
}

void Destination::settle(PrintOutcome &outcome) {
    if (lock_) {
        outcome.isGone = lock_->isGone();
        lock_.reset(); // while signals can still end its close
    }
    if (usb_) outcome.isGone = accessTo(usb_->node) == NodeAccess::NoNode;
    if (plotter_) outcome.arrivedBytes = plotter_->end();
    if (capture_) outcome.arrivedBytes = capture_->end();
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
