/* A host program in C: lists serial ports and USB plotters, asks a plotter for its limits, prints a plot file.
 *
 *     cc -std=c11 host.c -o host $(pkg-config --cflags --libs orb-vectorix)
 *     ./host ports
 *     ./host plotters 0b75 0402
 *     ./host limits /dev/ttyUSB0
 *     ./host -v print /dev/ttyUSB0 job.plist drawing.plt
 *
 * Exit codes: 0 done, 1 failed, 2 usage, 3 no such device or file, 130 stopped with Ctrl-C. A program to start from: it sets
 * every line to 9600 bit/s, and keeps no other program from the port. docs/hosts.md says what is behind each step. */
#define _XOPEN_SOURCE 700

#include <orb/vectorix.h>

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { DONE = 0, FAILED = 1, USAGE = 2, MISSING = 3, STOPPED = 130 };
enum { SLOTS = 6, USUAL_EMULATION = 17002 };

/* ---- Calling the plug-in ---- */

static volatile sig_atomic_t stopped;

static void onSignal(int number) {
    (void)number;
    stopped = 1;
    ORB_hostStop();
}

/* Ctrl-C ends the call, not the program; between calls it is what it was. */
static ORB_ServiceRecord call(ORB_ServiceRecord record) {
    const struct sigaction stop = {.sa_handler = onSignal};
    struct sigaction before;
    sigaction(SIGINT, &stop, &before);
    record = ORB_getVectorixCS2(record);
    sigaction(SIGINT, &before, NULL);
    return record;
}

static ORB_ServiceRecord emptyRecord(uint32_t service) {
    ORB_ServiceRecord record;
    memset(&record, 0, sizeof record);
    record.ORB_serviceNumber = service;
    record.ORB_portFD = -1;
    return record;
}

static ORB_ServiceRecord serialRecord(uint32_t service, const char *port, int32_t emulation) {
    ORB_ServiceRecord record = emptyRecord(service);
    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record.ORB_EmulationID = emulation;
    record.ORB_baudRate = 9600;
    record.ORB_dataBits = kORB_DataBits8;
    record.ORB_stopBits = kORB_StopBits1;
    record.ORB_parity = kORB_ParityNone;
    record.ORB_flowControl = kORB_FlowXonXoff;
    record.ORB_CFSTR_bsdIn_VectorixDevice = ORB_hostCreateString(port);
    return record;
}

/* Gives back what the host made and what the plug-in left in a record that goes to no further call. */
static void releaseStrings(const ORB_ServiceRecord *record) {
    const CFStringRef strings[] = {record->ORB_CFSTR_bsdIn_VectorixDevice,
                                   record->ORB_CFSTR_message,
                                   record->ORB_CFSTR_ProjectName,
                                   record->ORB_CFSTR_PlotterName,
                                   record->ORB_CFSTR_PlotfileTerminator,
                                   record->ORB_CFSTR_Tool1,
                                   record->ORB_CFSTR_Tool2,
                                   record->ORB_CFSTR_Tool3,
                                   record->ORB_CFSTR_Tool4,
                                   record->ORB_CFSTR_Tool5,
                                   record->ORB_CFSTR_Tool6,
                                   record->ORB_CFSTR_Tool7,
                                   record->ORB_CFSTR_Tool8};
    for (size_t i = 0; i < sizeof strings / sizeof *strings; ++i)
        ORB_hostReleaseString(strings[i]);
    for (size_t i = 0; i < SLOTS; ++i) {
        ORB_hostReleaseString(record->ORB_CFSTR_TTYDevice[i]);
        ORB_hostReleaseString(record->ORB_CFSTR_CalloutDevice[i]);
        ORB_hostReleaseString(record->ORB_CFSTR_DialinDevice[i]);
    }
}

/* ---- What people are told ---- */

static const char *errorText(int32_t errorID) {
#define ROW(name, value, fault, text) {value, text},
    static const struct {
        int32_t errorID;
        const char *text;
    } rows[] = {ORB_ERROR_IDENTIFIERS(ROW)};
#undef ROW
    for (size_t i = 0; i < sizeof rows / sizeof *rows; ++i) {
        if (rows[i].errorID == errorID) return rows[i].text;
    }
    return "an error of no known kind";
}

static int fail(int code, const char *thing, const char *text) {
    fprintf(stderr, "host: %s: %s\n", thing, text);
    return code;
}

static void showConsole(const char *text, uint32_t length, int32_t isError, void *context) {
    (void)isError;
    if (*(const int *)context) fwrite(text, 1, length, stderr);
}

/* Called after each piece. A plotter that lost one draws rubbish from there on, so the first failure ends the job. */
static int32_t showProgress(const ORB_JobReport *soFar, void *context) {
    int64_t *shown = context;
    const int64_t percent = soFar->fileBytes > 0 ? 100 * soFar->sentBytes / soFar->fileBytes : 100;
    if (percent != *shown) fprintf(stderr, "\r%3d %% sent", (int)percent);
    *shown = percent;
    return soFar->firstErrorID != kORB_NoError;
}

/* ---- The commands ---- */

static int listPorts(void) {
    ORB_ServiceRecord record = call(emptyRecord(kORB_ServiceListPorts));
    /* A seventh port is counted, but there are six slots. */
    for (int32_t i = 0; i < record.ORB_deviceCount && i < SLOTS; ++i) {
        char path[64];
        if (ORB_hostGetString(record.ORB_CFSTR_CalloutDevice[i], path, sizeof path) >= 0) puts(path);
    }
    releaseStrings(&record);
    if (record.ORB_errorID == kORB_NoError) return DONE;
    return fail(record.ORB_errorID == kORB_ErrorNoPort ? MISSING : FAILED, "ports", errorText(record.ORB_errorID));
}

static int listPlotters(const char *vendor, const char *product) {
    ORB_ServiceRecord record = emptyRecord(kORB_ServiceListPlotters);
    record.ORB_USBidVendor = (uint16_t)strtoul(vendor, NULL, 16);
    record.ORB_USBidProduct = (uint16_t)strtoul(product, NULL, 16);
    record = call(record);
    for (int32_t i = 0; i < record.ORB_deviceCount && i < SLOTS; ++i) {
        const ORB_USBplotterEntry *plotter = &record.ORB_USBplotterTable[i];
        printf("%04x:%04x at %08lx\n", plotter->idVendor, plotter->idProduct, (unsigned long)plotter->locationID);
    }
    releaseStrings(&record);
    if (record.ORB_errorID == kORB_NoError) return DONE;
    return fail(record.ORB_errorID == kORB_ErrorNoPlotter ? MISSING : FAILED, "plotters", errorText(record.ORB_errorID));
}

/* The plug-in tries a port for eleven seconds before it gives up: see first whether there is a point in it. */
static int requirePort(const char *port) {
    if (access(port, R_OK | W_OK) == 0) return DONE;
    return fail(errno == ENOENT ? MISSING : FAILED, port, strerror(errno));
}

static int askLimits(const char *port, int32_t emulation) {
    ORB_QueryReport report = {.structSize = sizeof report};
    const int code = requirePort(port);
    if (code != DONE) return code;
    ORB_ServiceRecord record = call(serialRecord(kORB_ServiceSerialHardClip, port, emulation));
    ORB_hostGetQueryReport(&report);
    releaseStrings(&record);
    if (stopped) return fail(STOPPED, port, "stopped");
    /* The record's identifier tells how the close went; the query's own is in the report. */
    if (report.errorID != kORB_NoError) return fail(FAILED, port, errorText(report.errorID));
    if (report.replyBytes == 0) return fail(FAILED, port, "the line hung up");
    printf("%g %g %g %g\n", record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3, record.ORB_HARDC_4);
    return DONE;
}

static int nameFile(const char *path, ORB_FSRef *reference) {
    const int32_t code = ORB_hostMakeFileRef(path, reference);
    if (code == 0) return DONE;
    if (code == kORB_FileNotFound) return fail(MISSING, path, "no such file");
    return fail(FAILED, path, "cannot be used");
}

static int printPlot(const char *port, const char *job, const char *plot, int32_t emulation) {
    ORB_JobReport report = {.structSize = sizeof report};
    ORB_FSRef jobFile, plotFile;
    int64_t shown = -1;
    int code = requirePort(port);
    if (code == DONE) code = nameFile(job, &jobFile);
    if (code == DONE) code = nameFile(plot, &plotFile);
    if (code != DONE) return code;

    ORB_ServiceRecord record = serialRecord(kORB_ServicePrint, port, emulation);
    record.ORB_JobFileRef = jobFile;
    record.ORB_PlotFileInRef = plotFile;
    ORB_hostSetProgress(showProgress, &shown);
    record = call(record);
    ORB_hostSetProgress(NULL, NULL); /* shown goes out of scope */
    ORB_hostGetJobReport(&report);
    releaseStrings(&record);

    if (shown >= 0) fputc('\n', stderr);
    printf("sent %lld of %lld bytes\n", (long long)report.sentBytes, (long long)report.fileBytes);
    if (stopped) return fail(STOPPED, plot, "stopped");
    if (report.firstErrorID != kORB_NoError) return fail(FAILED, plot, errorText(report.firstErrorID));
    if (report.stopReason != kORB_StopFinished) return fail(FAILED, plot, "nothing at its end is a whole command");
    if (report.withheldBytes > 0) fprintf(stderr, "host: note: what is behind the last command was not sent\n");
    return DONE;
}

static int32_t emulationOf(const char *word) { return word ? (int32_t)strtol(word, NULL, 10) : USUAL_EMULATION; }

int main(int count, char **words) {
    int verbose = count > 1 && strcmp(words[1], "-v") == 0;
    words += verbose;
    count -= verbose;
    ORB_hostSetConsole(showConsole, &verbose);

    /* words ends with a NULL, which stands for an emulation that was not typed. */
    const char *command = count > 1 ? words[1] : "";
    if (strcmp(command, "ports") == 0 && count == 2) return listPorts();
    if (strcmp(command, "plotters") == 0 && count == 4) return listPlotters(words[2], words[3]);
    if (strcmp(command, "limits") == 0 && (count == 3 || count == 4)) return askLimits(words[2], emulationOf(words[3]));
    if (strcmp(command, "print") == 0 && (count == 5 || count == 6)) {
        return printPlot(words[2], words[3], words[4], emulationOf(words[5]));
    }
    fprintf(stderr, "usage: host [-v] ports | plotters VENDOR PRODUCT | limits PORT [EMULATION] |\n"
                    "                 print PORT JOB PLOT [EMULATION]\n");
    return USAGE;
}
