#!/usr/bin/env python3
"""A host program in Python, with nothing but its standard library: what host.c does, in the same words.

    host.py [-v] ports | plotters VENDOR PRODUCT | limits PORT [EMULATION] | print PORT JOB PLOT [EMULATION]

The library is the one that ORB_VECTORIX_LIBRARY names, or else the one that the system finds.
Exit codes: 0 done, 1 failed, 2 usage, 3 no such device or file, 130 stopped with Ctrl-C.
"""
import ctypes
import ctypes.util
import os
import signal
import sys
import threading
from ctypes import c_char, c_double, c_int16, c_int32, c_int64, c_uint8, c_uint16, c_uint32, c_uint64

DONE, FAILED, USAGE, MISSING, STOPPED = 0, 1, 2, 3, 130
LIST_PLOTTERS, LIST_PORTS, SERIAL_HARD_CLIP, PRINT = 2, 3, 7, 17
SERIAL, DATA_BITS_8 = 2, 768
NO_ERROR, NO_PORT, NO_PLOTTER = 22007, 23005, 28022
STOP_FINISHED, NO_SUCH_FILE, USUAL_EMULATION = 0, -43, 17002
String = c_uint32  # a handle, 0 for none


class FileRef(ctypes.Structure):
    _fields_ = [("hidden", c_uint8 * 80)]


class UsbPlotterEntry(ctypes.Structure):
    _pack_ = 4
    _fields_ = [("idVendor", c_uint16), ("idProduct", c_uint16), ("reserved1", c_uint8 * 8), ("locationID", c_uint32),
                ("reserved2", c_uint8 * 9), ("numConfigurations", c_uint8), ("reserved3", c_uint8 * 2110)]


class ServiceRecord(ctypes.Structure):
    """Goes to the entry by value and comes back by value. ctypes passes no union so: the inputs of service 11, which lie
    in the reserved tail of the table's last entry, are written with ctypes.c_int32.from_buffer(record, 15432)."""
    _pack_ = 4
    _fields_ = [
        ("ORB_lastService", c_int32), ("ORB_serviceNumber", c_uint32), ("ORB_EmulationID", c_int32),
        ("reserved1", c_uint8 * 8), ("ORB_emulationVariant", c_uint32), ("ORB_errorID", c_int32),
        ("ORB_deviceCount", c_int32), ("ORB_USBplotterIndex", c_int32), ("ORB_OutputMethode", c_uint32),
        ("ORB_baudRate", c_int32), ("ORB_dataBits", c_int32), ("ORB_stopBits", c_int32), ("ORB_parity", c_int32),
        ("ORB_flowControl", c_int32), ("ORB_portFD", c_int16), ("reserved2", c_uint8 * 6),
        ("ORB_writeBuffer", c_char * 256), ("ORB_HARDC_1", c_double), ("ORB_HARDC_2", c_double),
        ("ORB_HARDC_3", c_double), ("ORB_HARDC_4", c_double), ("reserved3", c_uint8 * 20),
        ("ORB_USBdeviceOpen", c_uint32), ("ORB_interfaceOpen", c_uint32), ("reserved4", c_uint8 * 12),
        ("ORB_CFSTR_TTYDevice", String * 6), ("reserved5", c_uint8 * 4), ("ORB_CFSTR_CalloutDevice", String * 6),
        ("ORB_CFSTR_bsdIn_VectorixDevice", String), ("ORB_CFSTR_DialinDevice", String * 6),
        ("ORB_CFSTR_message", String), ("reserved6", c_uint8 * 8),
        ("ORB_USBidVendor", c_uint16), ("ORB_USBidProduct", c_uint16), ("reserved7", c_uint8 * 8),
        ("ORB_USBlocationID", c_uint32), ("reserved8", c_uint8 * 9), ("ORB_USBnumConfigurations", c_uint8),
        ("reserved9", c_uint8 * 2110), ("ORB_USBplotterTable", UsbPlotterEntry * 6), ("reserved11", c_uint8 * 6620),
        ("ORB_JobFileRef", FileRef), ("reserved12", c_uint8 * 1424), ("ORB_PlotFileInRef", FileRef),
        ("reserved13", c_uint8 * 84), ("ORB_PlotFileRef", FileRef), ("ORB_CFSTR_ProjectName", String),
        ("ORB_CFSTR_PlotterName", String), ("ORB_CFSTR_PlotfileTerminator", String), ("ORB_UseTools", c_int32),
        ("ORB_CFSTR_Tool1", String), ("ORB_CFSTR_Tool2", String), ("ORB_CFSTR_Tool3", String),
        ("ORB_CFSTR_Tool4", String), ("ORB_CFSTR_Tool5", String), ("ORB_CFSTR_Tool6", String),
        ("ORB_CFSTR_Tool7", String), ("ORB_CFSTR_Tool8", String), ("reserved14", c_uint8 * 8),
        ("ORB_PlotterGroupID", c_int32), ("ORB_PlotterSubgroupID", c_int32), ("ORB_PlotterID", c_int32),
        ("ORB_PlotterEmulationID", c_int32), ("reservedZeroed", c_uint8 * 4), ("ORB_TileCopies", c_double),
        ("ORB_TileAxis", c_double), ("ORB_XTile", c_double), ("ORB_YTile", c_double), ("ORB_FromTile", c_double),
        ("ORB_ToTile", c_double), ("ORB_PlotChunkSize", c_int64), ("ORB_USB_PIPEOUT", c_uint8),
        ("ORB_USB_PIPEIN", c_uint8), ("reserved15", c_uint8 * 22)]


# A field forgotten or of a wrong size would shift all behind it: so the size, and a field of each region.
for shape, size in (ctypes.sizeof(ServiceRecord), 23964), (ServiceRecord.ORB_writeBuffer.offset, 68), \
        (ServiceRecord.ORB_USBplotterTable.offset, 2624), (ServiceRecord.ORB_JobFileRef.offset, 22060), \
        (ServiceRecord.ORB_TileCopies.offset, 23884), (ServiceRecord.ORB_USB_PIPEIN.offset, 23941):
    assert shape == size, f"the record is laid out wrongly: {shape} for {size}"


class JobReport(ctypes.Structure):
    _fields_ = [("structSize", c_uint32), ("stopReason", c_uint32), ("firstErrorID", c_int32), ("firstStatus", c_int32),
                ("fileBytes", c_int64), ("sentBytes", c_int64), ("failedBytes", c_int64), ("withheldBytes", c_int64),
                ("firstErrorOffset", c_int64), ("piecesSent", c_uint64), ("piecesFailed", c_uint64),
                ("uncutChunks", c_uint64), ("lastStatus", c_int32), ("reserved", c_uint32)]


class QueryReport(ctypes.Structure):
    _fields_ = [("structSize", c_uint32), ("errorID", c_int32), ("status", c_int32), ("reads", c_uint32),
                ("requestBytes", c_uint32), ("replyBytes", c_uint32), ("request", c_char * 256), ("reply", c_char * 257)]


ConsoleFunction = ctypes.CFUNCTYPE(None, ctypes.POINTER(c_char), c_uint32, c_int32, ctypes.c_void_p)
ProgressFunction = ctypes.CFUNCTYPE(c_int32, ctypes.POINTER(JobReport), ctypes.c_void_p)


class Failure(Exception):
    def __init__(self, code, thing, text):
        super().__init__(f"{thing}: {text}")
        self.code = code


def load():
    """The library with the shapes of its calls; those of the entry are what makes ctypes pass the record by value."""
    name = os.environ.get("ORB_VECTORIX_LIBRARY") or ctypes.util.find_library("ORBVectorixFoundation")
    try:
        library = ctypes.CDLL(name or "libORBVectorixFoundation.so.1")
    except OSError as error:
        raise Failure(MISSING, error, "install the library, or name it in ORB_VECTORIX_LIBRARY") from None
    for call, result, arguments in (
            ("getVectorixCS2", ServiceRecord, [ServiceRecord]), ("hostStop", None, []),
            ("hostCreateString", String, [ctypes.c_char_p]), ("hostReleaseString", None, [String]),
            ("hostGetString", c_int32, [String, ctypes.c_char_p, c_uint32]),
            ("hostMakeFileRef", c_int32, [ctypes.c_char_p, ctypes.POINTER(FileRef)]),
            ("hostSetConsole", None, [ConsoleFunction, ctypes.c_void_p]),
            ("hostSetProgress", None, [ProgressFunction, ctypes.c_void_p]),
            ("hostGetJobReport", None, [ctypes.POINTER(JobReport)]),
            ("hostGetQueryReport", None, [ctypes.POINTER(QueryReport)])):
        function = getattr(library, "ORB_" + call)
        function.restype, function.argtypes = result, arguments
    return library


class Host:
    def __init__(self, verbose):
        self.plugin = load()
        self.verbose = verbose
        self.stopped = False
        # Functions given to the library must outlive their use: ctypes frees those that nobody holds.
        self.console = ConsoleFunction(self.show_console)
        self.progress = ProgressFunction(self.show_progress)
        self.shown = -1
        self.plugin.ORB_hostSetConsole(self.console, None)

    def call(self, record):
        """Python sees Ctrl-C only between its own steps, and the entry is one long step. So the entry gets a thread, and
        this one waits for Ctrl-C, and stops the call."""
        answers = []
        thread = threading.Thread(target=lambda: answers.append(self.plugin.ORB_getVectorixCS2(record)))
        before = signal.signal(signal.SIGINT, lambda *_: setattr(self, "stopped", True))
        thread.start()
        while thread.is_alive():
            if self.stopped:
                self.plugin.ORB_hostStop()
            thread.join(0.05)
        signal.signal(signal.SIGINT, before)
        return answers[0]

    def serial_record(self, service, port, emulation):
        return ServiceRecord(
            ORB_serviceNumber=service, ORB_portFD=-1, ORB_OutputMethode=SERIAL, ORB_EmulationID=emulation,
            ORB_baudRate=9600, ORB_dataBits=DATA_BITS_8,
            ORB_CFSTR_bsdIn_VectorixDevice=self.plugin.ORB_hostCreateString(os.fsencode(port)))

    def text_of(self, string):
        room = max(0, self.plugin.ORB_hostGetString(string, None, 0)) + 1
        text = ctypes.create_string_buffer(room)
        self.plugin.ORB_hostGetString(string, text, room)
        return text.value.decode()

    def release_strings(self, record):
        """Gives back every string of a record that goes to no further call. A handle that is none is ignored."""
        for name, kind in ServiceRecord._fields_:
            if name.startswith("ORB_CFSTR_"):
                for string in [getattr(record, name)] if kind is String else getattr(record, name):
                    self.plugin.ORB_hostReleaseString(string)

    def show_console(self, text, length, _is_error, _context):
        if self.verbose:
            os.write(sys.stderr.fileno(), text[:length])

    def show_progress(self, so_far, _context):
        """Ends the job at its first failure: a plotter that lost a piece draws rubbish from there on."""
        report = so_far.contents
        percent = 100 * report.sentBytes // report.fileBytes if report.fileBytes else 100
        if percent != self.shown:
            print(f"\r{percent:3} % sent", end="", file=sys.stderr, flush=True)
        self.shown = percent
        return report.firstErrorID != NO_ERROR

    def list(self, record, nothing, lines):
        record = self.call(record)
        # A seventh port is counted, but there are six slots.
        for line in lines(record)[:min(record.ORB_deviceCount, 6)]:
            print(line)
        self.release_strings(record)
        if record.ORB_errorID != NO_ERROR:
            missing = record.ORB_errorID == nothing
            raise Failure(MISSING if missing else FAILED, "list", "nothing found" if missing else error(record.ORB_errorID))

    def ports(self):
        self.list(ServiceRecord(ORB_serviceNumber=LIST_PORTS, ORB_portFD=-1), NO_PORT,
                  lambda record: [self.text_of(path) for path in record.ORB_CFSTR_CalloutDevice])

    def plotters(self, vendor, product):
        wanted = ServiceRecord(ORB_serviceNumber=LIST_PLOTTERS, ORB_portFD=-1, ORB_USBidVendor=int(vendor, 16),
                               ORB_USBidProduct=int(product, 16))
        self.list(wanted, NO_PLOTTER, lambda record: [
            f"{plotter.idVendor:04x}:{plotter.idProduct:04x} at {plotter.locationID:08x}"
            for plotter in record.ORB_USBplotterTable])

    def limits(self, port, emulation=USUAL_EMULATION):
        require_port(port)
        record = self.call(self.serial_record(SERIAL_HARD_CLIP, port, int(emulation)))
        report = QueryReport(structSize=ctypes.sizeof(QueryReport))
        self.plugin.ORB_hostGetQueryReport(report)
        self.release_strings(record)
        if self.stopped:
            raise Failure(STOPPED, port, "stopped")
        # The record's identifier tells how the close went; the query's own is in the report.
        if report.errorID != NO_ERROR:
            raise Failure(FAILED, port, error(report.errorID))
        if report.replyBytes == 0:
            raise Failure(FAILED, port, "the line hung up")
        print(*(f"{value:g}" for value in (record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3,
                                           record.ORB_HARDC_4)))

    def file_reference(self, path):
        reference = FileRef()
        code = self.plugin.ORB_hostMakeFileRef(os.fsencode(path), reference)
        if code:
            missing = code == NO_SUCH_FILE
            raise Failure(MISSING if missing else FAILED, path, "no such file" if missing else f"file code {code}")
        return reference

    def print(self, port, job, plot, emulation=USUAL_EMULATION):
        require_port(port)
        job_file, plot_file = self.file_reference(job), self.file_reference(plot)
        record = self.serial_record(PRINT, port, int(emulation))
        record.ORB_JobFileRef, record.ORB_PlotFileInRef = job_file, plot_file
        self.plugin.ORB_hostSetProgress(self.progress, None)
        record = self.call(record)
        report = JobReport(structSize=ctypes.sizeof(JobReport))
        self.plugin.ORB_hostGetJobReport(report)
        self.release_strings(record)
        if self.shown >= 0:
            print(file=sys.stderr)
        print(f"sent {report.sentBytes} of {report.fileBytes} bytes")
        if self.stopped:
            raise Failure(STOPPED, plot, "stopped")
        if report.firstErrorID != NO_ERROR:
            raise Failure(FAILED, plot, error(report.firstErrorID))
        if report.stopReason != STOP_FINISHED:
            raise Failure(FAILED, plot, "nothing at its end is a whole command")
        if report.withheldBytes:
            print("host: note: what is behind the last command was not sent", file=sys.stderr)


def error(identifier):
    return f"error {identifier}; docs/record.md says what it means"


def require_port(port):
    """The plug-in tries a port for eleven seconds before it gives up: see first whether there is a point in it."""
    if not os.access(port, os.R_OK | os.W_OK):
        exists = os.path.exists(port)
        raise Failure(FAILED if exists else MISSING, port, "permission denied" if exists else "no such device")


def main(words):
    verbose = words[:1] == ["-v"]
    command, *arguments = words[verbose:] or [""]
    if len(arguments) not in {"ports": [0], "plotters": [2], "limits": [1, 2], "print": [3, 4]}.get(command, []):
        print(__doc__.splitlines()[2].replace("host.py", "usage: host.py").strip(), file=sys.stderr)
        return USAGE
    try:
        getattr(Host(verbose), command)(*arguments)
    except Failure as failure:
        print(f"host: {failure}", file=sys.stderr)
        return failure.code
    except ValueError as failure:  # a number that was typed
        print(f"host: {failure}", file=sys.stderr)
        return USAGE
    return DONE


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
