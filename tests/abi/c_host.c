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

/* The record crosses by value in both directions: nothing may change in it but what these services answer. */
static void crossesWhole(void) {
    static const uint32_t services[] = {14, 15, 16, 0x80000001U};
    for (size_t i = 0; i < sizeof services / sizeof *services; ++i) {
        const ORB_ServiceRecord sent = patterned(services[i]);
        ORB_ServiceRecord expected = sent, answer;
        expected.ORB_lastService = services[i] == 14 ? 14 : 0;
        expected.ORB_errorID = 0;
        answer = ORB_getVectorixCS2(sent);
        CHECK(memcmp(&answer, &expected, sizeof answer) == 0);
    }
    CHECK(strcmp(console, " [S14] called by ORB Vectorix\n") == 0);
}

static void strings(void) {
    const char *const text = "Plotter f\xc3\xbcr A1";
    const CFStringRef string = ORB_hostCreateString(text);
    char copy[32] = "untouched";
    CHECK(ORB_hostGetString(string, copy, sizeof copy) == (int32_t)strlen(text) && strcmp(copy, text) == 0);
    ORB_hostReleaseString(string);
    CHECK(ORB_hostGetString(string, copy, sizeof copy) == -1);
}

static void fileReferences(const char *path) {
    ORB_FSRef reference;
    CHECK(ORB_hostMakeFileRef(path, &reference) == 0);
    CHECK(ORB_hostMakeFileRef("no/such/file", &reference) == -43);
    CHECK(ORB_hostMakeFileRef(NULL, &reference) == -50);
}

/* Every handle of the record made up: none may be followed, and each counts as no string. */
static void madeUpHandles(void) {
    ORB_JobReport report;
    CHECK(ORB_getVectorixCS2(patterned(kORB_ServiceOpenAndWrite)).ORB_errorID == kORB_SerialTools_errorNoBSDIn);
    ORB_getVectorixCS2(patterned(kORB_ServicePrint));
    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    CHECK(report.stopReason != kORB_StopFinished && report.sentBytes == 0);
}

int main(int count, char **arguments) {
    CHECK(count == 2);
    CHECK(sizeof(ORB_ServiceRecord) == 23964);
    ORB_hostSetConsole(keepConsole, &failures);
    crossesWhole();
    strings();
    if (count == 2) fileReferences(arguments[1]);
    madeUpHandles();
    ORB_hostSetConsole(NULL, NULL);
    return failures != 0;
}
