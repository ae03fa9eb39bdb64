// SVG and PDF are read by programs made for that, whose output is SVG in one small dialect. They run as child processes with
// limits, not as libraries: what is handed to them comes from anywhere, and a crash of theirs, or a file that asks for hours
// of work, must stay outside of the process that holds the plotter.
#pragma once

#include "host/examination/file_kind.h"
#include "host/files/plot_file.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// What a converter may take.
struct ConverterLimits {
    std::chrono::milliseconds time{20'000};
    uint64_t memory = uint64_t{2} << 30;   ///< bytes of address space
    uint64_t output = uint64_t{512} << 20; ///< bytes
};

struct PlainSvg {
    std::string text;
    std::vector<std::string> notes; ///< what the converter found wrong, as sentences without a full stop
};

/// The drawing as SVG in the dialect of cairo, at its size in millimetres: of an SVG drawing (kind Svg), or of a page of a
/// PDF document (kind Pdf; pages count from 1). Its converter is found in PATH, reads the file on standard input, can open
/// no network connection where the system allows to forbid that, and is gone, with all that it started, when this returns.
/// Throws Failure: when the converter is missing, fails or exceeds a limit, when a password is needed or there is no such
/// page; Stopped when a StopOnSignal saw a stop.
PlainSvg plainSvgOf(const PlotFile &file, FileKind kind, int page, const ConverterLimits &limits = {});

/// How many pages a PDF document has. 1 where that cannot be told: converting the first one tells why. Throws Failure
/// (Stopped) when a StopOnSignal saw a stop.
int pagesOf(const PlotFile &file, const ConverterLimits &limits = {});

} // namespace host
