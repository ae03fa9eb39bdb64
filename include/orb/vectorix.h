/* ORB Vectorix Foundation: what a host program sees. C11 and C++20.
 *
 * One call, one service: fill an ORB_ServiceRecord, pass it by value to ORB_getVectorixCS2, use the record that comes back.
 * A field that a later service needs (lists, choices, ORB_portFD, ORB_interfaceOpen, pipes) is sent back as it was returned.
 *
 * Threads    The entry runs on the calling thread and blocks until the service is done. One call at a time; it is not
 *            re-entrant, and functions given to ORB_hostSetConsole and ORB_hostSetProgress must not call it. Only
 *            ORB_hostStop may be called from a signal handler or from another thread.
 * Strings    A CFStringRef is a 4-byte handle, 0 for none. The host makes its own with ORB_hostCreateString and releases
 *            them. A string found in a returned record stays valid until the host releases it, except those of the three
 *            serial port lists, which the next scan releases. A handle that is stale or made up counts as 0.
 * Encodings  Handles are made from and read as UTF-8. Text that goes to a plotter is ASCII.
 * Numbers    Native byte order. Fields lie exactly at the offsets checked below: no field is aligned to more than 4 bytes,
 *            so do not take the address of a double or of a 64-bit field.
 */
#ifndef ORB_VECTORIX_H
#define ORB_VECTORIX_H

#include <stddef.h>
#include <stdint.h>
#ifdef __cplusplus
#include <type_traits>
#else
#include <assert.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t CFStringRef;  /* handle of a string, 0 = none */
typedef uint32_t CFBooleanRef; /* handle of a truth value */

/* Reference of a file, made by ORB_hostMakeFileRef; opaque. */
typedef struct ORB_FSRef {
    uint8_t hidden[80];
} ORB_FSRef;

#pragma pack(push, 4)

/* One USB plotter. An entry whose idVendor is 0 is empty. */
typedef struct ORB_USBplotterEntry {
    uint16_t idVendor;
    uint16_t idProduct;
    uint8_t reserved1[8];
    uint32_t locationID;
    uint8_t reserved2[9];
    uint8_t numConfigurations;
    uint8_t reserved3[2110];
} ORB_USBplotterEntry;

/* The service record. Reserved bytes travel back as the host sent them. */
typedef struct ORB_ServiceRecord {
    int32_t ORB_lastService;    /* out: the service step last carried out */
    uint32_t ORB_serviceNumber; /* in: kORB_Service… */
    int32_t ORB_EmulationID;    /* in: emulation for link and hard-clip services, 17001 .. 17037 */
    uint8_t reserved1[8];
    uint32_t ORB_emulationVariant; /* in: variant within an emulation */
    int32_t ORB_errorID;           /* in, out: kORB_…, 22007 = no error */
    int32_t ORB_deviceCount;       /* out: ports or plotters found by the last scan */
    int32_t ORB_USBplotterIndex;   /* in, out: chosen entry 1 .. 6 of the plotter table */
    uint32_t ORB_OutputMethode;    /* in: kORB_OSX_METHOD_USB or kORB_OSX_METHOD_SERIAL */
    int32_t ORB_baudRate;          /* in: bit/s, 0 .. 38400 of the sixteen classic rates, any other gives 9600 */
    int32_t ORB_dataBits;          /* in: kORB_DataBits… */
    int32_t ORB_stopBits;          /* in: kORB_StopBits2, any other = one */
    int32_t ORB_parity;            /* in: kORB_ParityEven, kORB_ParityOdd, any other = none */
    int32_t ORB_flowControl;       /* in: kORB_FlowHardware, any other = XON/XOFF */
    int16_t ORB_portFD;            /* in, out: descriptor of the open serial port; -1 or 0 = none */
    uint8_t reserved2[6];
    char ORB_writeBuffer[256]; /* in, out: NUL-terminated ASCII text for the plotter */
    double ORB_HARDC_1;        /* out: hard-clip limits in plotter units, in the order of the plotter's reply */
    double ORB_HARDC_2;
    double ORB_HARDC_3;
    double ORB_HARDC_4;
    uint8_t reserved3[20];
    uint32_t ORB_USBdeviceOpen; /* out: 1 while the USB device is held open during its preparation */
    uint32_t ORB_interfaceOpen; /* in, out: 1 while the plotter's USB interface is open */
    uint8_t reserved4[12];
    CFStringRef ORB_CFSTR_TTYDevice[6]; /* out: names of serial ports 1 .. 6 */
    uint8_t reserved5[4];
    CFStringRef ORB_CFSTR_CalloutDevice[6];     /* out: their callout paths */
    CFStringRef ORB_CFSTR_bsdIn_VectorixDevice; /* in: path of the serial port to open, ASCII, 255 bytes at most */
    CFStringRef ORB_CFSTR_DialinDevice[6];      /* out: their dial-in paths */
    CFStringRef ORB_CFSTR_message;              /* out: last status text */
    uint8_t reserved6[8];

    uint16_t ORB_USBidVendor;  /* the chosen plotter, laid out as an ORB_USBplotterEntry; in: vendor looked for */
    uint16_t ORB_USBidProduct; /* in: product looked for */
    uint8_t reserved7[8];
    uint32_t ORB_USBlocationID;
    uint8_t reserved8[9];
    uint8_t ORB_USBnumConfigurations;
    uint8_t reserved9[2110];

    __extension__ union {
        ORB_USBplotterEntry ORB_USBplotterTable[6]; /* out: USB plotters found; [0] is entry 1 */
        __extension__ struct {
            uint8_t reserved10[12808];
            int32_t ORB_queryEmulationID; /* in: emulation for service 11, in the reserved tail of entry 6 */
            int32_t ORB_queryPlotterID;   /* in: plotter identifier for service 11 */
        };
    };
    uint8_t reserved11[6620];

    ORB_FSRef ORB_JobFileRef; /* in: the job file */
    uint8_t reserved12[1424];
    ORB_FSRef ORB_PlotFileInRef; /* in: the plot file */
    uint8_t reserved13[84];
    ORB_FSRef ORB_PlotFileRef;         /* out: copy of ORB_PlotFileInRef */
    CFStringRef ORB_CFSTR_ProjectName; /* out, from here on: what the job file says */
    CFStringRef ORB_CFSTR_PlotterName;
    CFStringRef ORB_CFSTR_PlotfileTerminator; /* in, out: the plot language's command terminator */
    int32_t ORB_UseTools;                     /* in, out: 1 = send the tool strings */
    CFStringRef ORB_CFSTR_Tool1;              /* in, out: tool strings */
    CFStringRef ORB_CFSTR_Tool2;
    CFStringRef ORB_CFSTR_Tool3;
    CFStringRef ORB_CFSTR_Tool4;
    CFStringRef ORB_CFSTR_Tool5;
    CFStringRef ORB_CFSTR_Tool6;
    CFStringRef ORB_CFSTR_Tool7;
    CFStringRef ORB_CFSTR_Tool8;
    uint8_t reserved14[8];
    int32_t ORB_PlotterGroupID;
    int32_t ORB_PlotterSubgroupID;
    int32_t ORB_PlotterID;
    int32_t ORB_PlotterEmulationID; /* emulation of the job: selects start-up texts, chunk size and cut marks */
    uint8_t reservedZeroed[4];      /* set to 0 by the job reader */
    double ORB_TileCopies;
    double ORB_TileAxis;
    double ORB_XTile;
    double ORB_YTile;
    double ORB_FromTile;
    double ORB_ToTile;
    int64_t ORB_PlotChunkSize; /* out: bytes of the plot file per step */
    uint8_t ORB_USB_PIPEOUT;   /* in, out: pipe reference for writing */
    uint8_t ORB_USB_PIPEIN;    /* in, out: pipe reference for reading */
    uint8_t reserved15[22];
} ORB_ServiceRecord;

#pragma pack(pop)

enum {
    kORB_OSX_METHOD_USB = 1,
    kORB_OSX_METHOD_SERIAL = 2,

    kORB_DataBits5 = 0,
    kORB_DataBits6 = 256,
    kORB_DataBits7 = 512,
    kORB_DataBits8 = 768,
    kORB_StopBits1 = 0,
    kORB_StopBits2 = 1024,
    kORB_ParityNone = 0,
    kORB_ParityEven = 4096,
    kORB_ParityOdd = 8192,
    kORB_FlowXonXoff = 0,
    kORB_FlowHardware = 1
};

/* Values of ORB_serviceNumber. 4, 6, 12 and 18 touch no plotter (4, 6 and 18 print a line, 6 presets ORB_errorID to 22007);
 * a number not named here sets ORB_lastService and ORB_errorID to 0. */
enum {
    kORB_ServiceNothing = 1,        /* presets ORB_errorID to 22007 */
    kORB_ServiceListPlotters = 2,   /* USB plotters of ORB_USBidVendor and ORB_USBidProduct */
    kORB_ServiceListPorts = 3,      /* serial ports */
    kORB_ServiceOpenAndWrite = 5,   /* opens the serial port, writes ORB_writeBuffer, leaves the port open */
    kORB_ServiceSerialHardClip = 7, /* asks for the hard-clip limits over the serial line */
    kORB_ServicePreparePlotter = 8, /* lists the USB plotters, opens, configures and closes the chosen one */
    kORB_ServiceWriteUSB = 9,       /* writes ORB_writeBuffer on USB, then closes the interface */
    kORB_ServiceCloseUSB = 10,
    kORB_ServiceUSBHardClip = 11, /* asks for the hard-clip limits over USB */
    kORB_ServiceIdentify = 14,    /* sets ORB_lastService to 14 and ORB_errorID to 0 */
    kORB_ServicePrint = 17        /* prints a job */
};

/* Every value of ORB_errorID: X(name, value, fault, text). Fault: NONE, HOST (its request or its files), SYSTEM, PLOTTER. */
#define ORB_ERROR_IDENTIFIERS(X)                                                                                            \
    X(kORB_ErrorNone0, 0, NONE, "answer to service 14 and to an unknown service number")                                    \
    X(kORB_ErrorService1, 21003, NONE, "answer of ORB_VectorixService1")                                                    \
    X(kORB_ErrorMasterPort, 22002, SYSTEM, "the system's device registry cannot be reached")                                \
    X(kORB_ErrorMatching, 22003, SYSTEM, "the device registry gave no matching dictionary")                                 \
    X(kORB_ErrorTableEmpty, 22005, HOST, "the USB plotter table is empty")                                                  \
    X(kORB_NoError, 22007, NONE, "no error")                                                                                \
    X(kORB_ErrorNoPort, 23005, SYSTEM, "no serial port found")                                                              \
    X(kORB_ErrorPathNameTooLong, 23009, HOST, "a text is not ASCII or too long for its buffer")                             \
    X(kORB_ErrorOpeningPort, 24001, SYSTEM, "the serial port could not be opened")                                          \
    X(kORB_ErrorSetExclusive, 24003, SYSTEM, "exclusive use of the serial port could not be set")                           \
    X(kORB_ErrorGetAttributes, 24005, SYSTEM, "the line settings could not be read; is this a serial port?")                \
    X(kORB_ErrorSetAttributes, 24006, SYSTEM, "the line settings were refused by the serial port")                          \
    X(kORB_ErrorClearExclusive, 24012, SYSTEM, "exclusive use of the serial port could not be ended")                       \
    X(kORB_ErrorUnvalidPort, 25002, SYSTEM, "writing to the serial port failed, or no port is open")                        \
    X(kORB_ErrorReadingReply, 27004, PLOTTER, "reading the hard-clip reply failed or gave nothing")                         \
    X(kORB_ErrorNoReply, 27005, PLOTTER, "no complete hard-clip reply arrived")                                             \
    X(kORB_SerialTools_errorNoBSDIn, 27010, HOST, "no serial port path given")                                              \
    X(kORB_ErrorInterfaceNotFound, 28002, SYSTEM, "the plotter's USB interface was not found")                              \
    X(kORB_ErrorDeviceNotOpened, 28004, SYSTEM, "the plotter's USB device was found but could not be opened")               \
    X(kORB_ErrorPlugIn, 28015, SYSTEM, "a USB device could not be examined")                                                \
    X(kORB_ErrorGetServices, 28017, SYSTEM, "the devices could not be enumerated")                                          \
    X(kORB_ErrorNoPlotter, 28022, PLOTTER, "no USB plotter of this vendor and product found")                               \
    X(kORB_ErrorInterfaceNotOpened, 29002, SYSTEM, "the plotter's USB interface could not be opened")                       \
    X(kORB_ErrorIgnoredByClose, 29005, NONE, "accepted by service 10 as no error")                                          \
    X(kORB_ErrorPlotterGone, 29006, PLOTTER, "the USB plotter is gone")                                                     \
    X(kORB_ErrorPipe, 29008, PLOTTER, "a USB pipe could not be cleared or written, or the plotter did not answer")          \
    X(kORB_ErrorJobFile, 37001, HOST, "the job file is unfit, or the plot file's size could not be read")                   \
    X(kORB_ErrorForkName, 38000, SYSTEM, "the plot file's data fork has no name")                                           \
    X(kORB_ErrorOpeningPlotFile, 38001, HOST, "the plot file could not be opened")                                          \
    X(kORB_ErrorReadingChunk, 38003, SYSTEM, "one read of the plot file failed")                                            \
    X(kORB_ErrorChunkUnreadable, 38004, SYSTEM, "every attempt to read a chunk of the plot file failed")                    \
    X(kORB_ErrorChunkObject, 38005, SYSTEM, "no memory for a chunk of the plot file")                                       \
    X(kORB_ErrorReadingTail, 38006, SYSTEM, "one read of the plot file's end failed")                                       \
    X(kORB_ErrorTailUnreadable, 38007, SYSTEM, "every attempt to read the plot file's end failed")                          \
    X(kORB_ErrorTailObject, 38008, SYSTEM, "no memory for the plot file's end")                                             \
    X(kORB_ErrorTailTooLong, 38009, SYSTEM, "the plot file's end is longer than one chunk")                                 \
    X(kORB_ErrorNoTerminator, 38010, HOST, "the job names no plot-file terminator, and its emulation needs one")            \
    X(kORB_ErrorStopped, 38011, HOST, "the host stopped the job")                                                           \
    X(kORB_ErrorUSBNotOpen, (-536870195), PLOTTER, "a USB hard-clip read failed")

#define ORB_ERROR_ENUMERATOR(name, value, fault, text) name = value,
enum { ORB_ERROR_IDENTIFIERS(ORB_ERROR_ENUMERATOR) kORB_ErrorIdentifiersEnd_ };
#undef ORB_ERROR_ENUMERATOR

/* The entry. Never fails as a call: outcomes are in the returned record, ORB_errorID first. */
ORB_ServiceRecord ORB_getVectorixCS2(ORB_ServiceRecord record);

/* Diagnostic switches, set at every call; nothing consults them. */
extern CFBooleanRef gORB_verboseBasicMode;
extern CFBooleanRef gORB_verboseListMode;
extern CFBooleanRef gORB_verbosePlotMode;
extern CFBooleanRef gORB_verboseReadMode;

/* ---- Calls for hosts ---- */

/* A string of the given UTF-8 text with a count of 1; 0 when utf8 is NULL or not UTF-8, or there is no memory. */
CFStringRef ORB_hostCreateString(const char *utf8);

/* Copies the text of s into utf8, at most size bytes, NUL included, never splitting a character. Returns the bytes that the
 * whole text needs, NUL not counted; -1 when s is no string. size 0 (utf8 may be NULL) only asks for the length. */
int32_t ORB_hostGetString(CFStringRef s, char *utf8, uint32_t size);

/* Gives a string back. A handle that is no string is ignored. */
void ORB_hostReleaseString(CFStringRef s);

/* Fills ref for the file at path (a relative path is taken from the working directory of now). Returns 0 or a File Manager
 * code: -43 no such file, -54 no permission, -50 bad argument, -36 other input/output error, -108 no memory. */
int32_t ORB_hostMakeFileRef(const char *path, ORB_FSRef *ref);

/* Takes the plug-in's console lines. isError is 1 for lines meant for standard error. NULL: standard output and error. */
typedef void (*ORB_ConsoleFunction)(const char *text, uint32_t length, int32_t isError, void *context);
void ORB_hostSetConsole(ORB_ConsoleFunction function, void *context);

enum {
    kORB_StopFinished = 0,
    kORB_StopByHost = 1,
    kORB_StopNotASCII = 2,     /* a chunk holds bytes of 0x80 and above */
    kORB_StopNoMarkInTail = 3, /* nothing of the last chunk was sent */
    kORB_StopNoLink = 4,       /* the port or the plotter could not be opened */
    kORB_StopPlotFile = 5,     /* the plot file could not be opened or read */
    kORB_StopJobFile = 6,      /* the job file is unfit */
    kORB_StopUnconvertible = 7 /* a text is not ASCII or too long */
};

/* What the system said of a failure, where a report has a status: File Manager codes of files, IOKit codes of USB plotters
 * (their published numbers; IOKit's begin at 0xE0000000), errno of serial lines. Others of each kind may come. */
enum {
    kORB_FileIOError = -36,        /* an input or output error that has no code of its own */
    kORB_FileEndOfFile = -39,      /* the file ended sooner than it was long */
    kORB_FileTooManyOpen = -42,    /* too many files are open */
    kORB_FileNotFound = -43,       /* no such file */
    kORB_FileBadArgument = -50,    /* an argument that cannot be */
    kORB_FileNoPermission = -54,   /* no permission */
    kORB_FileNoMemory = -108,      /* no memory */
    kORB_FileNotAFile = -1302,     /* a folder, a pipe or a device */
    kORB_FileBadReference = -1401, /* a reference that was never made */

    kORB_USBError = -0x20000000 + 0x2BC,           /* a failure that has no code of its own */
    kORB_USBNoDevice = -0x20000000 + 0x2C0,        /* the plotter is gone */
    kORB_USBExclusiveAccess = -0x20000000 + 0x2C5, /* another program has claimed it */
    kORB_USBIOError = -0x20000000 + 0x2CA,         /* a transfer failed */
    kORB_USBNotOpen = -0x20000000 + 0x2CD,         /* its interface is not open */
    kORB_USBNotWritable = -0x20000000 + 0x2CF,     /* the pipe is no out pipe */
    kORB_USBNotAttached = -0x20000000 + 0x2D9,     /* the plotter is not connected */
    kORB_USBNotPermitted = -0x20000000 + 0x2E2,    /* no permission */
    kORB_USBAborted = -0x20000000 + 0x2EB,         /* broken off, by a stop too */
    kORB_USBNotResponding = -0x20000000 + 0x2ED,   /* the plotter did not answer in time */
    kORB_USBPipeStalled = -0x20000000 + 0x404F,    /* the plotter has halted the pipe */
    kORB_USBUnknownPipe = -0x20000000 + 0x4061     /* no such pipe */
};

/* What the last print did, counted in bytes of the plot file; start-up texts and tool strings do not count. */
typedef struct ORB_JobReport {
    uint32_t structSize;      /* in: sizeof(ORB_JobReport); at most that much is written */
    uint32_t stopReason;      /* kORB_Stop… */
    int32_t firstErrorID;     /* first failure of the job; 22007 when nothing failed */
    int32_t firstStatus;      /* its kORB_File…, kORB_USB… or errno code */
    int64_t fileBytes;        /* = sentBytes + failedBytes + withheldBytes; 0 when the plot file was not opened */
    int64_t sentBytes;        /* taken by the link, and not lost in it as far as this computer can tell */
    int64_t failedBytes;      /* offered to the link and not taken; also a serial piece that did not drain, the last one of
                               * a port that is gone, and what a stop threw out of the port's queue */
    int64_t withheldBytes;    /* never offered: behind the last mark, behind a NUL, or behind a stop */
    int64_t firstErrorOffset; /* where in the plot file the first failure lies; -1 for none, or when not in it */
    uint64_t piecesSent;      /* wholly sent */
    uint64_t piecesFailed;    /* however often a piece was tried, it counts once */
    uint64_t uncutChunks;     /* chunks without a cut, which were sent whole */
    int32_t lastStatus;       /* of the last piece: 0 when it was sent, else as firstStatus */
    uint32_t reserved;
} ORB_JobReport;

void ORB_hostGetJobReport(ORB_JobReport *report);

/* What the last hard-clip query (service 7 or 11) said and heard. After service 7 it alone shows a failure: the record's
 * identifier is the close's then. */
typedef struct ORB_QueryReport {
    uint32_t structSize;   /* in: sizeof(ORB_QueryReport); at most that much is written */
    int32_t errorID;       /* kORB_…, before the closing step */
    int32_t status;        /* result of the query: 0, kORB_USB…, or that of the open; of a USB request that was never
                            * taken and not answered, that write's */
    uint32_t reads;        /* how often a reply was looked for */
    uint32_t requestBytes; /* of request */
    uint32_t replyBytes;   /* of reply */
    char request[256];     /* the last request, NUL-terminated; may hold control characters */
    char reply[257];       /* the last reply that was not empty, NUL-terminated; any bytes */
} ORB_QueryReport;

void ORB_hostGetQueryReport(ORB_QueryReport *report);

/* Called on the calling thread after each piece of a print; non-zero stops the job. soFar is valid during the call. */
typedef int32_t (*ORB_ProgressFunction)(const ORB_JobReport *soFar, void *context);
void ORB_hostSetProgress(ORB_ProgressFunction function, void *context);

/* Ends the call in progress soon: whatever blocks returns, and whatever retries gives up. Without a call in progress it does
 * nothing. Safe in a signal handler and from any thread; once is enough.
 *
 * A call that waits for a device borrows SIGURG (SIGWINCH when the host handles SIGURG), which after a stop interrupts the
 * calling thread every 50 ms, whatever that thread blocks. What others send with it goes to the host's handler, and when the
 * call returns, handler and mask are what they were. A handler that the host gives it during the call stays the host's: a
 * stop ends pauses and waits for USB then, within 0.2 s, but no wait for a serial line. */
void ORB_hostStop(void);

/* ---- The layout ---- */

#ifdef __cplusplus
#define ORB_CHECK(condition, text) static_assert(condition, text)
#else
#define ORB_CHECK(condition, text) _Static_assert(condition, text)
#endif
#define ORB_AT(field, offset) ORB_CHECK(offsetof(ORB_ServiceRecord, field) == (offset), #field)

ORB_CHECK(sizeof(ORB_FSRef) == 80, "ORB_FSRef");
ORB_CHECK(sizeof(ORB_ServiceRecord) == 23964, "ORB_ServiceRecord");
ORB_CHECK(sizeof(ORB_USBplotterEntry) == 2136, "ORB_USBplotterEntry");
ORB_CHECK(offsetof(ORB_USBplotterEntry, idProduct) == 2, "idProduct");
ORB_CHECK(offsetof(ORB_USBplotterEntry, locationID) == 12, "locationID");
ORB_CHECK(offsetof(ORB_USBplotterEntry, numConfigurations) == 25, "numConfigurations");
ORB_AT(ORB_lastService, 0);
ORB_AT(ORB_serviceNumber, 4);
ORB_AT(ORB_EmulationID, 8);
ORB_AT(ORB_emulationVariant, 20);
ORB_AT(ORB_errorID, 24);
ORB_AT(ORB_deviceCount, 28);
ORB_AT(ORB_USBplotterIndex, 32);
ORB_AT(ORB_OutputMethode, 36);
ORB_AT(ORB_baudRate, 40);
ORB_AT(ORB_dataBits, 44);
ORB_AT(ORB_stopBits, 48);
ORB_AT(ORB_parity, 52);
ORB_AT(ORB_flowControl, 56);
ORB_AT(ORB_portFD, 60);
ORB_AT(ORB_writeBuffer, 68);
ORB_AT(ORB_HARDC_1, 324);
ORB_AT(ORB_HARDC_2, 332);
ORB_AT(ORB_HARDC_3, 340);
ORB_AT(ORB_HARDC_4, 348);
ORB_AT(ORB_USBdeviceOpen, 376);
ORB_AT(ORB_interfaceOpen, 380);
ORB_AT(ORB_CFSTR_TTYDevice, 396);
ORB_AT(ORB_CFSTR_CalloutDevice, 424);
ORB_AT(ORB_CFSTR_bsdIn_VectorixDevice, 448);
ORB_AT(ORB_CFSTR_DialinDevice, 452);
ORB_AT(ORB_CFSTR_message, 476);
ORB_AT(ORB_USBidVendor, 488);
ORB_AT(ORB_USBidProduct, 490);
ORB_AT(ORB_USBlocationID, 500);
ORB_AT(ORB_USBnumConfigurations, 513);
ORB_AT(ORB_USBplotterTable, 2624);
ORB_AT(ORB_queryEmulationID, 15432);
ORB_AT(ORB_queryPlotterID, 15436);
ORB_AT(ORB_JobFileRef, 22060);
ORB_AT(ORB_PlotFileInRef, 23564);
ORB_AT(ORB_PlotFileRef, 23728);
ORB_AT(ORB_CFSTR_ProjectName, 23808);
ORB_AT(ORB_CFSTR_PlotterName, 23812);
ORB_AT(ORB_CFSTR_PlotfileTerminator, 23816);
ORB_AT(ORB_UseTools, 23820);
ORB_AT(ORB_CFSTR_Tool1, 23824);
ORB_AT(ORB_CFSTR_Tool2, 23828);
ORB_AT(ORB_CFSTR_Tool3, 23832);
ORB_AT(ORB_CFSTR_Tool4, 23836);
ORB_AT(ORB_CFSTR_Tool5, 23840);
ORB_AT(ORB_CFSTR_Tool6, 23844);
ORB_AT(ORB_CFSTR_Tool7, 23848);
ORB_AT(ORB_CFSTR_Tool8, 23852);
ORB_AT(ORB_PlotterGroupID, 23864);
ORB_AT(ORB_PlotterSubgroupID, 23868);
ORB_AT(ORB_PlotterID, 23872);
ORB_AT(ORB_PlotterEmulationID, 23876);
ORB_AT(reservedZeroed, 23880);
ORB_AT(ORB_TileCopies, 23884);
ORB_AT(ORB_TileAxis, 23892);
ORB_AT(ORB_XTile, 23900);
ORB_AT(ORB_YTile, 23908);
ORB_AT(ORB_FromTile, 23916);
ORB_AT(ORB_ToTile, 23924);
ORB_AT(ORB_PlotChunkSize, 23932);
ORB_AT(ORB_USB_PIPEOUT, 23940);
ORB_AT(ORB_USB_PIPEIN, 23941);
#undef ORB_AT
#undef ORB_CHECK

#ifdef __cplusplus
}
static_assert(std::is_trivially_copyable_v<ORB_ServiceRecord>, "the record is passed by value between languages");
#endif

#endif
