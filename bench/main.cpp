// Takes the measures and prints their table. Exit code 1 when something breaks or bytes differ, whatever the figures are.
#include "rows.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>

namespace {

using bench::Row;
using bench::Settings;

constexpr struct {
    const char *name, *what;
    Row (*take)(const Settings &);
} kMeasures[] = {
    {"entry", "service 1 through the entry", bench::entryCopies},
    {"serial", "processor time per piece, pseudo-terminal", bench::serialProcessor},
    {"instructions", "user instructions per piece", bench::serialInstructions},
    {"later", "the same, a million pieces later", bench::instructionsLater},
    {"usb", "processor time per piece, USB", bench::usbProcessor},
    {"usb-own", "the same, transfers that cost nothing", bench::usbOwnWork},
    {"paced", "wall time, line of 38400 bit/s", bench::pacedLine},
    {"slopes", "wall time, 1 to 256 MB, flattest-steepest", bench::wallSlopes},
    {"cpu-slopes", "the same, processor time", bench::processorSlopes},
    {"convert", "convert of 32,000 shapes, beside librsvg", bench::convertDrawing},
    {"order", "putting 100,000 strokes in order", bench::orderStrokes},
    {"memory", "peak memory of 1 GB, and of 1 MB", bench::peakMemory},
    {"preview", "preview to PNG, 1.7 MB", bench::previewOutlines},
    {"preview-long", "preview, long lines, 1 MB", bench::previewLongLines},
    {"preview-small", "preview, small", bench::previewSmall},
};

void show(const char *what, const Row &row) {
    const bool isRatio = *row.unit == '\0';
    const std::string result = bench::text(isRatio ? "%.3f" : "%.0f %s", row.result, row.unit);
    const std::string wanted = row.wanted == 0 ? "" : bench::text(isRatio ? "%.2f" : "%.0f", row.wanted);
    printf("%-44s %16s %16s %17s %8s %s\n", what, row.plugin.c_str(), row.floor.c_str(), result.c_str(), wanted.c_str(),
           row.wanted == 0            ? ""
           : row.result <= row.wanted ? "yes"
                                      : "NO");
    fflush(stdout);
}

int usage() {
    fprintf(stderr, "usage: orb_bench [--quick] [MEASURE...]\nmeasures:");
    for (const auto &measure : kMeasures)
        fprintf(stderr, " %s", measure.name);
    fprintf(stderr, "\n");
    return 2;
}

} // namespace

int main(int count, char **arguments) try {
    if (count == 4 && strcmp(arguments[1], "--tell-memory") == 0)
        return bench::printAndTellMemory(arguments[2], arguments[3]);
    if (count == 4 && strcmp(arguments[1], "--under-callgrind") == 0)
        return bench::printUnderCallgrind(arguments[2], strtol(arguments[3], nullptr, 10));

    Settings settings;
    settings.self = std::filesystem::read_symlink("/proc/self/exe");
    settings.vectorix = std::filesystem::path(settings.self).replace_filename("vectorix");
    int first = 1;
    if (count > 1 && strcmp(arguments[1], "--quick") == 0) {
        settings.quick = true;
        ++first;
    }
    for (int i = first; i < count; ++i) {
        bool known = false;
        for (const auto &measure : kMeasures)
            known = known || strcmp(arguments[i], measure.name) == 0;
        if (!known) return usage();
    }

    if (settings.quick) printf("Small sizes, to see that it works: the figures say little.\n");
    printf("%-44s %16s %16s %17s %8s %s\n", "measure", "plug-in", "floor", "result", "at most", "met");
    int result = 0;
    for (const auto &measure : kMeasures) {
        bool wanted = first == count;
        for (int i = first; i < count; ++i)
            wanted = wanted || strcmp(arguments[i], measure.name) == 0;
        if (!wanted) continue;
        try {
            show(measure.what, measure.take(settings));
        } catch (const std::exception &problem) {
            printf("%-44s broke: %s\n", measure.what, problem.what());
            fflush(stdout);
            result = 1;
        }
    }
    return result;
} catch (const std::exception &problem) {
    fprintf(stderr, "orb_bench: %s\n", problem.what());
    return 1;
}
