/* A host program in C that knows the installed header and library only. Its argument names a file that exists. */
#include <orb/vectorix.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static void check(int holds, const char *what, int line) {
    if (holds) return;
    fprintf(stderr, "line %d: not so: %s\n", line, what);
    ++failures;
}

/* A record in which every byte has a value of its own, so that a byte that moved or was cleared is seen. */
static ORB_ServiceRecord patterned(uint32_t service) {
    ORB_ServiceRecord record;
    unsigned char *bytes = (unsigned char *)&record;
    for (size_t i = 0; i < sizeof record; ++i)
        bytes[i] = (unsigned char)(1 + (i * 37 + i / 251) % 255);
    record.ORB_serviceNumber = service;
    return record;
}

static char console[4096];

static void keepConsole(const char *text, uint32_t length, int32_t isError, void *context) {
    const size_t used = strlen(console);
    (void)isError;
    CHECK(context == &failures);
    if (used + length < sizeof console) memcpy(console + used, text, length);
}

/* Services that touch no more than ORB_lastService and ORB_errorID: what each leaves in them, and its console line. */
static void answersItself(void) {
    enum { SAME = -1 };
    static const struct {
        uint32_t service;
        int32_t lastService, errorID;
        const char *line;
    } cases[] = {
        {1, SAME, 22007, ""},
        {4, SAME, SAME, "[S4] called by ORB Vectorix.  this is a ghost : it does nothing\n"},
        {6, SAME, 22007, "[S6] called by ORB Vectorix, but this service is a ghost : it does nothing\n"},
        {12, SAME, SAME, ""},
        {14, 14, 0, "[S14] called by ORB Vectorix\n"},
        {18, SAME, SAME, "[S18] called by ORB Vectorix\n"},
        {0, 0, 0, ""},
        {15, 0, 0, ""},
        {16, 0, 0, ""},
        {99, 0, 0, ""},
        {0x80000001U, 0, 0, ""},
    };
    for (size_t i = 0; i < sizeof cases / sizeof *cases; ++i) {
        const ORB_ServiceRecord sent = patterned(cases[i].service);
        ORB_ServiceRecord expected = sent, answer;
        if (cases[i].lastService != SAME) expected.ORB_lastService = cases[i].lastService;
        if (cases[i].errorID != SAME) expected.ORB_errorID = cases[i].errorID;
        memset(console, 0, sizeof console);
        answer = ORB_getVectorixCS2(sent);
        if (memcmp(&answer, &expected, sizeof answer) != 0 || strstr(console, cases[i].line) == NULL ||
            (cases[i].line[0] == '\0') != (console[0] == '\0')) {
            fprintf(stderr, "service %u: last service %d, error %d, console: %s\n", (unsigned)cases[i].service,
                    (int)answer.ORB_lastService, (int)answer.ORB_errorID, console);
            ++failures;
        }
    }
}

static void strings(void) {
    const char *const text = "Plotter f\xc3\xbcr A1";
    const CFStringRef string = ORB_hostCreateString(text);
    char copy[32] = "untouched";
    CHECK(string != 0);
    CHECK(ORB_hostGetString(string, NULL, 0) == (int32_t)strlen(text));
    CHECK(ORB_hostGetString(string, copy, sizeof copy) == (int32_t)strlen(text) && strcmp(copy, text) == 0);
    CHECK(ORB_hostGetString(string, copy, 11) == (int32_t)strlen(text) && strcmp(copy, "Plotter f") == 0);
    ORB_hostReleaseString(string);
    CHECK(ORB_hostGetString(string, copy, sizeof copy) == -1);
    CHECK(ORB_hostCreateString(NULL) == 0);
    CHECK(ORB_hostCreateString("\xff") == 0);
}

static void fileReferences(const char *path) {
    ORB_FSRef reference;
    CHECK(ORB_hostMakeFileRef(path, &reference) == 0);
    CHECK(ORB_hostMakeFileRef("no/such/file", &reference) == -43);
    CHECK(ORB_hostMakeFileRef(NULL, &reference) == -50);
}

/* Every handle of the record made up: none may be followed, and each counts as no string. */
static void madeUpHandles(void) {
    ORB_ServiceRecord record = patterned(kORB_ServiceOpenAndWrite);
    CHECK(ORB_hostGetString(0xdeadbeefU, NULL, 0) == -1);
    ORB_hostReleaseString(0xdeadbeefU);
    ORB_hostReleaseString(0);

    record = ORB_getVectorixCS2(record);
    CHECK(record.ORB_errorID == kORB_SerialTools_errorNoBSDIn);
    CHECK(record.ORB_portFD == -1);

    /* Scanning the ports releases the strings of the lists that it fills anew. */
    record = ORB_getVectorixCS2(patterned(kORB_ServiceListPorts));
    CHECK(record.ORB_lastService == kORB_ServiceListPorts);
}

/* A print with nowhere to print to; and a caller that was compiled with a shorter report. */
static void jobReport(void) {
    ORB_ServiceRecord record;
    ORB_JobReport report;
    memset(&record, 0, sizeof record);
    record.ORB_serviceNumber = kORB_ServicePrint;
    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record = ORB_getVectorixCS2(record);
    CHECK(record.ORB_errorID == kORB_SerialTools_errorNoBSDIn);

    memset(&report, 0x5a, sizeof report);
    report.structSize = offsetof(ORB_JobReport, firstErrorID);
    ORB_hostGetJobReport(&report);
    CHECK(report.stopReason == kORB_StopNoLink);
    CHECK(report.firstErrorID == 0x5a5a5a5a);

    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    CHECK(report.firstErrorID == kORB_SerialTools_errorNoBSDIn);
    CHECK(report.fileBytes == 0 && report.sentBytes == 0);
}

int main(int count, char **arguments) {
    CHECK(count == 2);
    CHECK(sizeof(ORB_ServiceRecord) == 23964);
    ORB_hostSetConsole(keepConsole, &failures);
    answersItself();
    strings();
    if (count == 2) fileReferences(arguments[1]);
    madeUpHandles();
    jobReport();
    ORB_hostSetConsole(NULL, NULL);
    return failures != 0;
}
