// A print before its first byte: what was typed, turned once into what shall go where, and by which rules it is cut. All
// that can be known beforehand is looked at here, and refused here. The dry run tells a plan, the print carries it out, the
// verdict judges it beside its report; none of them knows what was typed.
#pragma once

#include "host/convert/ready_plot.h"
#include "host/devices/usb_devices.h"
#include "host/job/job_options.h"
#include "host/options/line_settings.h"
#include "host/options/plotter_options.h"
#include "host/picture/estimate.h"
#include "host/print/pages.h"
#include "host/print/parts.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/// As typed.
struct PrintOptions {
    std::vector<std::string> plots;
    int32_t copies = 1;            ///< of all of them
    std::string pages = kEachPage; ///< of PDF documents, for typedPages(); the one in ready is not looked at
    std::string jobFile;
    JobOptions job;
    std::string port;
    std::string capture;
    std::string picture;    ///< the file of --virtual; of port, capture, picture and toUsb one is set
    DrawingOptions drawing; ///< the sheet that is drawn on, and of a picture the resolution
    ReadyOptions ready;
    StartOptions start;
    bool changesPens = true; ///< a person does, where the plotter holds too few; false: nobody
    bool toUsb = false;
    std::string usbChoice;
    LineSettings line;
    PlotterTexts texts;
    bool force = false;     ///< print whatever is wrong with the plot file
    bool keepGoing = false; ///< after a piece that the link did not take
};

/// Where a print goes. Two of the four are plotters; a file gets what a plotter would have got, and a picture is what a
/// plotter in software has drawn.
struct Target {
    enum class Kind { Port, Usb, File, Picture };
    Kind kind = Kind::Port;
    std::string path;             ///< of the port, or of the file to be written
    LineSettings line;            ///< of a port
    std::optional<UsbDevice> usb; ///< set when it is one
    DrawingOptions drawing;       ///< of a picture

    /// As people call it: the port, the plotter's identifier, or the file.
    std::string name() const { return usb ? usb->id() : path; }
};

struct PrintPlan {
    PlotFile plot;          ///< held open, so that what was examined is what is printed
    ReadyReport ready = {}; ///< what became of the file that was named
    std::string jobFile;    ///< empty when the job was typed
    std::string job;        ///< the property list of a job that was typed
    PlotRules rules;        ///< by which the job has the plot cut
    Examination examination = {};
    std::optional<int> page = {}; ///< of a PDF document
    Target target;
    bool keepGoing = false;
    std::vector<std::string> notes = {};   ///< what is worth knowing beforehand
    language::Rectangle hardClip = {};     ///< that the plot is read with
    std::optional<Estimate> estimate = {}; ///< of the plot, where somebody waits for it to be drawn
    std::vector<PlotPart> parts = {};      ///< that are sent in its stead; empty: the plot as it is
    int64_t begin = 0;                     ///< in the plot: where the print begins

    /// To be sent in all.
    int64_t bytes() const;
};

/// True for a plotter; a file and a plotter in software take what they get at once.
bool takesItsTime(const Target &target);

/// A plan for each sheet of one copy. Reads what is to be printed, a stream to its end, and looks at it and at the job.
/// Whether the target is free is not asked: that may change until the print takes it. Throws Failure.
std::vector<PrintPlan> plansOf(const PrintOptions &options);

} // namespace host
