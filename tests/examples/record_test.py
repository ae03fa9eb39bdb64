"""Holds the tables of docs/record.md against the header, and examples/host.py against them.

record_test.py SOURCE_FOLDER CXX_COMPILER: prints what differs; exit code 1 when anything does.
"""
import ctypes
import importlib
import pathlib
import re
import subprocess
import sys

TYPES = {  # of the document: in the header, in Python
    "u8": ("uint8_t", ctypes.c_uint8), "u16": ("uint16_t", ctypes.c_uint16), "u32": ("uint32_t", ctypes.c_uint32),
    "u64": ("uint64_t", ctypes.c_uint64), "i16": ("int16_t", ctypes.c_int16), "i32": ("int32_t", ctypes.c_int32),
    "i64": ("int64_t", ctypes.c_int64), "f64": ("double", ctypes.c_double), "char": ("char", ctypes.c_char),
    "string": ("CFStringRef", ctypes.c_uint32), "file": ("ORB_FSRef", "FileRef"),
    "entry": ("ORB_USBplotterEntry", "UsbPlotterEntry")}
CLASSES = {"ORB_ServiceRecord": "ServiceRecord", "ORB_USBplotterEntry": "UsbPlotterEntry",
           "ORB_JobReport": "JobReport", "ORB_QueryReport": "QueryReport"}

root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
failures = []


def check(holds, text):
    if not holds:
        failures.append(text)


def read_structures(document):
    """Name: (stated size, rows of the tables below its heading as (offset, size, type, name))."""
    structures = {}
    for line in document.splitlines():
        if heading := re.match(r"##+ (?:`(\w+)`, (\d+) bytes)?", line):
            rows = []
            if heading[1]:
                structures[heading[1]] = (int(heading[2]), rows)
        elif row := re.match(r"\| (\d+) \| (\d+) \| (\w+)(?:\[\d+\])? \| `(\w+)` \|", line):
            rows.append((int(row[1]), int(row[2]), row[3], row[4]))
    return structures


def check_header(structures):
    """The compiler knows the header's layout: it is asked to agree with every row."""
    lines = ['#include <orb/vectorix.h>', '#include <type_traits>']
    for structure, (size, rows) in structures.items():
        lines.append(f'static_assert(sizeof({structure}) == {size}, "{structure}: its size");')
        for offset, bytes, kind, name in rows:
            field = f"{structure}::{name}"
            lines.append(f'static_assert(offsetof({structure}, {name}) == {offset} && sizeof({field}) == {bytes} && '
                         f'std::is_same_v<std::remove_all_extents_t<decltype({field})>, {TYPES[kind][0]}>, "{field}");')
    said = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", "-I", root / "include", "-x", "c++", "-"],
                          input="\n".join(lines), text=True, capture_output=True)
    check(said.returncode == 0, said.stderr)


def check_whole(structure, size, rows):
    """Every byte has a row; returns the rows of the fields without those that lie over others."""
    end, fields = 0, []
    for row in rows:
        if row[0] < end:
            continue
        check(row[0] == end, f"{structure}: no row for the bytes from {end} to {row[0]}")
        end = row[0] + row[1]
        fields.append(row)
    check(0 <= size - end < 4, f"{structure}: the rows end at {end}")
    return fields


def check_python(host, structure, size, fields):
    shape = getattr(host, CLASSES[structure])
    check(ctypes.sizeof(shape) == size, f"host.py: the size of {structure}")
    kinds = dict(shape._fields_)
    if list(kinds) != [field[3] for field in fields]:
        check(False, f"host.py: the names in {structure}")
        return
    for offset, bytes, kind, name in fields:
        place = getattr(shape, name)
        wanted = TYPES[kind][1]
        wanted = getattr(host, wanted) if isinstance(wanted, str) else wanted
        element = kinds[name]._type_ if issubclass(kinds[name], ctypes.Array) else kinds[name]
        check((place.offset, place.size) == (offset, bytes) and element is wanted, f"host.py: {structure}.{name}")


def check_lists(header, document):
    errors = re.findall(r'X\((\w+), \(?(-?\d+)\)?, (\w+), "([^"]*)"\)', header)
    wanted = [f"| {value} | `{name}` | {fault.lower()} | {text} |" for name, value, fault, text in errors]
    check(len(wanted) > 30, "the header's error identifiers are not found")
    check(wanted == re.findall(r"^\| -?\d+ \| `kORB_\w+` \| (?:none|host|system|plotter) \|.*$", document, re.M),
          "the error identifiers are not those of the header")
    statuses = re.findall(r"(kORB_(?:File|USB)\w+) = (-?[-+x0-9A-F ]+)", header)
    check(len(statuses) > 20, "the header's statuses are not found")
    check([(name, eval(number)) for name, number in statuses] ==
          [(name, int(number)) for number, name in re.findall(r"^\| (-\d+)[^|]* \| `(kORB_(?:File|USB)\w+)` \|", document, re.M)],
          "the statuses are not those of the header")
    services = re.findall(r"(kORB_Service\w+) = (\d+)", header)
    check(len(services) > 8, "the header's services are not found")
    check(services == [(name, number) for number, name in re.findall(r"^\| (\d+) \| `(kORB_Service\w+)`", document, re.M)],
          "the services are not those of the header")


document = (root / "docs/record.md").read_text()
header = (root / "include/orb/vectorix.h").read_text()
sys.dont_write_bytecode = True
sys.path.insert(0, str(root / "examples"))
host = importlib.import_module("host")

structures = read_structures(document)
check(structures.keys() == CLASSES.keys(), f"tables of {', '.join(structures)}, but not of {', '.join(CLASSES)}")
check_header(structures)
for structure, (size, rows) in structures.items():
    check_python(host, structure, size, check_whole(structure, size, rows))
check_lists(header, document)
print("\n".join(failures) or f"{sum(len(rows) for _, rows in structures.values())} rows agree")
sys.exit(1 if failures else 0)
