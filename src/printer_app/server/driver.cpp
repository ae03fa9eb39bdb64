#include "printer_app/server/driver.h"

#include "host/examination/file_kind.h"
#include "printer_app/server/job_order.h"
#include "printer_app/server/turn.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>

namespace printer_app {

namespace {

constexpr std::string_view kScheme = "vectorix";
constexpr int kDpi = 300; // of pictures that clients might send, which are refused

// The device that the print system opens: always there, for it would wait with its lock held for one that is not.
bool openNothing(pappl_device_t *, const char *, const char *) { return true; }
void closeNothing(pappl_device_t *) {}
ssize_t readNothing(pappl_device_t *, void *, size_t) { return 0; }
ssize_t writeNothing(pappl_device_t *, const void *, size_t bytes) { return static_cast<ssize_t>(bytes); }
pappl_preason_t noStatus(pappl_device_t *) { return PAPPL_PREASON_NONE; }

Service *theService = nullptr; // some of the print system's calls bring no pointer of ours

bool printFile(pappl_job_t *job, pappl_pr_options_t *, pappl_device_t *) { return takeTurn(*theService, job); }
bool printConverted(pappl_job_t *job, pappl_device_t *, void *) { return takeTurn(*theService, job); }

// Pictures made of dots, which the print system always offers to take.
bool refusePicture(pappl_job_t *job) {
    lineUp(papplJobGetPrinter(job));
    // It ends before the keeper comes round, and the page is where somebody reads why: CUPS says "completed" all the same.
    if (Queue *queue = theService->find(papplJobGetPrinter(job))) theService->note(*queue, job);
    papplJobSetReasons(job, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR, PAPPL_JREASON_NONE);
    papplJobSetMessage(job, "A plotter draws lines, and this document is a picture made of dots. Send PDF, SVG or HP-GL.");
    return false;
}
bool startRaster(pappl_job_t *job, pappl_pr_options_t *, pappl_device_t *) { return refusePicture(job); }
bool endRaster(pappl_job_t *, pappl_pr_options_t *, pappl_device_t *) { return true; }
bool noPage(pappl_job_t *, pappl_pr_options_t *, pappl_device_t *, unsigned) { return false; }
bool noLine(pappl_job_t *, pappl_pr_options_t *, pappl_device_t *, unsigned, const unsigned char *) { return false; }
bool refuseImage(pappl_job_t *job, pappl_device_t *, void *) { return refusePicture(job); }

bool keepStatus(pappl_printer_t *) { return true; }
void identify(pappl_printer_t *, pappl_identify_actions_t, const char *) {}

/// A queue that a client of this computer deletes: those who are using it come to an end first.
void forget(pappl_printer_t *printer, pappl_pr_driver_data_t *) {
    Queue *queue = theService ? theService->find(printer) : nullptr;
    if (!queue) return;
    queue->printer = nullptr;
    if (queue->isAlive.try_lock_for(std::chrono::seconds(5))) queue->isAlive.unlock();
}

int hundredths(double millimetres) { return static_cast<int>(std::lround(millimetres * 100)); }

pappl_media_col_t mediaColumn(const Media &media, const pappl_pr_driver_data_t &data) {
    pappl_media_col_t column{};
    papplCopyString(column.size_name, media.name.c_str(), sizeof column.size_name);
    column.size_width = hundredths(std::min(media.width, media.height)); // paper stands in print dialogs
    column.size_length = hundredths(std::max(media.width, media.height));
    column.left_margin = column.right_margin = data.left_right;
    column.top_margin = column.bottom_margin = data.bottom_top;
    papplCopyString(column.source, "main", sizeof column.source);
    papplCopyString(column.type, "stationery", sizeof column.type);
    return column;
}

void describe(const QueueConfig &queue, pappl_pr_driver_data_t &data) {
    papplCopyString(data.make_and_model, "Vectorix pen plotter", sizeof data.make_and_model);
    data.format = kHpgl;
    data.printfile_cb = printFile;
    data.rstartjob_cb = startRaster;
    data.rendjob_cb = endRaster;
    data.rstartpage_cb = data.rendpage_cb = noPage;
    data.rwriteline_cb = noLine;
    data.status_cb = keepStatus;
    data.identify_cb = identify;
    data.delete_cb = forget;
    data.ppm = data.ppm_color = 1;
    data.kind = PAPPL_KIND_LARGE_FORMAT | PAPPL_KIND_DOCUMENT;
    // CUPS offers "Gray" by itself, and has such jobs refused before they come: pens draw what they draw.
    data.color_supported = PAPPL_COLOR_MODE_AUTO | PAPPL_COLOR_MODE_COLOR | PAPPL_COLOR_MODE_MONOCHROME;
    data.color_default = PAPPL_COLOR_MODE_AUTO;
    data.raster_types = PAPPL_PWG_RASTER_TYPE_SGRAY_8 | PAPPL_PWG_RASTER_TYPE_SRGB_8;
    data.num_resolution = 1;
    data.x_resolution[0] = data.y_resolution[0] = data.x_default = data.y_default = kDpi;
    data.identify_supported = data.identify_default = PAPPL_IDENTIFY_ACTIONS_DISPLAY;
    data.scaling_default = PAPPL_SCALING_AUTO;
    data.orient_default = IPP_ORIENT_PORTRAIT; // what it is otherwise, no client may ask for
    const Media &usual = queue.media.front();
    const bool lies = usual.width > usual.height;
    data.left_right = hundredths(lies ? queue.alongY : queue.alongX);
    data.bottom_top = hundredths(lies ? queue.alongX : queue.alongY);
    for (const Media &media : queue.media)
        data.media[data.num_media++] = media.name.c_str(); // lives as long as the queue
    data.num_source = data.num_type = 1;
    data.source[0] = "main";
    data.type[0] = "stationery";
    data.media_default = data.media_ready[0] = mediaColumn(usual, data);
}

/// Called for each queue that is made. A client of this computer might have one made for a device of its choosing, a file
/// for instance: no other than those of the profiles is.
bool describeDriver(pappl_system_t *, const char *, const char *uri, const char *, pappl_pr_driver_data_t *data, ipp_t **,
                    void *) {
    if (theService->isServing) return false;
    for (const auto &queue : theService->queues) {
        if (uri != deviceUriOf(*queue)) continue;
        describe(queue->config, *data);
        return true;
    }
    return false;
}

void settleQueue(pappl_printer_t *printer, void *) {
    papplPrinterSetMaxPreservedJobs(printer, 20); // documents to plot again
    if (!theService->options.isShared) papplPrinterSetDNSSDName(printer, nullptr);
}

const char *typeByContent(const unsigned char *head, size_t size, void *) {
    return typeOf({reinterpret_cast<const char *>(head), size});
}

ipp_attribute_t *attribute(pappl_job_t *job, const char *name) { return papplJobGetAttribute(job, name); }

const char *keyword(pappl_job_t *job, const char *name) {
    const char *value = ippGetString(attribute(job, name), 0, nullptr);
    return value ? value : "";
}

std::string mediaNameOf(pappl_job_t *job) {
    if (ipp_attribute_t *column = attribute(job, "media-col")) {
        ipp_t *collection = ippGetCollection(column, 0);
        if (const char *name = ippGetString(ippFindAttribute(collection, "media-size-name", IPP_TAG_ZERO), 0, nullptr))
            return name;
        ipp_t *size = ippGetCollection(ippFindAttribute(collection, "media-size", IPP_TAG_BEGIN_COLLECTION), 0);
        const int width = ippGetInteger(ippFindAttribute(size, "x-dimension", IPP_TAG_INTEGER), 0);
        const int length = ippGetInteger(ippFindAttribute(size, "y-dimension", IPP_TAG_INTEGER), 0);
        if (const pwg_media_t *found = pwgMediaForSize(width, length); found && width > 0 && length > 0) return found->pwg;
    }
    return keyword(job, "media");
}

} // namespace

std::string deviceUriOf(const Queue &queue) { return fmt::format("{}://{}", kScheme, queue.config.name); }

const char *typeOf(std::string_view head) {
    if (head.starts_with("%PDF")) return kPdf;
    try {
        const auto file = host::PlotFile::holding("document", head);
        const auto nature = host::natureOf(file, language::Language::Hpgl);
        switch (nature.kind) {
        case host::FileKind::Plot: return kHpgl;
        case host::FileKind::Dmpl: return kDmpl;
        case host::FileKind::Svg: return kSvg;
        case host::FileKind::Pdf: return kPdf;
        default: return nullptr;
        }
    } catch (const host::Failure &) {
        return nullptr;
    }
}

JobOptions optionsOf(pappl_job_t *job) {
    JobOptions options;
    if (ipp_attribute_t *copies = attribute(job, "copies")) options.copies = std::clamp(ippGetInteger(copies, 0), 1, 999);
    options.media = mediaNameOf(job);
    const std::string_view scaling = keyword(job, "print-scaling");
    options.scalingIsTyped = scaling == "fit" || scaling == "fill";
    options.scaling = options.scalingIsTyped ? Scaling::Fit : scaling == "none" ? Scaling::None : Scaling::Auto;
    if (ipp_attribute_t *orientation = attribute(job, "orientation-requested")) {
        switch (ippGetInteger(orientation, 0)) {
        case IPP_ORIENT_LANDSCAPE: options.turn = 90; break;
        case IPP_ORIENT_REVERSE_PORTRAIT: options.turn = 180; break;
        case IPP_ORIENT_REVERSE_LANDSCAPE: options.turn = 270; break;
        default: break;
        }
    }
    if (ipp_attribute_t *pages = attribute(job, "page-ranges"))
        options.firstPage = std::max(1, ippGetRange(pages, 0, &options.lastPage));
    return options;
}

void addDriver(Service &service) {
    static pappl_pr_driver_t drivers[] = {{kDriverName, "Vectorix pen plotter", nullptr, nullptr}};
    theService = &service;
    papplDeviceAddScheme(kScheme.data(), PAPPL_DEVTYPE_CUSTOM_LOCAL, nullptr, openNothing, closeNothing, readNothing,
                         writeNothing, noStatus, nullptr);
    papplSystemSetMIMECallback(service.system, typeByContent, nullptr);
    for (const char *type : {kPdf, kSvg, kDmpl})
        papplSystemAddMIMEFilter(service.system, type, kHpgl, printConverted, nullptr);
    for (const char *type : {"image/jpeg", "image/png"})
        papplSystemAddMIMEFilter(service.system, type, kHpgl, refuseImage, nullptr);
    papplSystemSetPrinterDrivers(service.system, 1, drivers, nullptr, settleQueue, describeDriver, nullptr);
}

} // namespace printer_app
