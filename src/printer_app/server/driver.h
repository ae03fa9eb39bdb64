// What the print system is told of plotters: which documents they take, which sheets, and that it has nothing to send them
// itself. The device that it opens for a job is none: a process for each sheet opens the real one.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

inline constexpr const char *kDriverName = "plotter";
inline constexpr const char *kDeviceId = "MFG:Vectorix;MDL:Pen plotter;CMD:HPGL,PDF;";

inline constexpr const char *kHpgl = "application/vnd.hp-HPGL";
inline constexpr const char *kDmpl = "application/x-dmpl";
inline constexpr const char *kSvg = "image/svg+xml";
inline constexpr const char *kPdf = "application/pdf";

/// The same at each start, and of no other plotter.
std::string deviceUriOf(const Queue &queue);

/// Puts all of it into the print system.
void addDriver(Service &service);

/// The type of a document by its first bytes; nullptr for none that a plotter takes.
const char *typeOf(std::string_view head);

/// How a client wants a job to lie. Called while the job is there.
JobOptions optionsOf(pappl_job_t *job);

} // namespace printer_app
