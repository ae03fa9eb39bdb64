"""Holds the tables of docs/record.md against the header, and examples/host.py against them.

record_test.py SOURCE_FOLDER CXX_COMPILER: fails with what differs.
"""
import ctypes
import importlib
import pathlib
import re
import subprocess
import sys

TYPES = {  # of the document: in the header
    "u8": "uint8_t", "u16": "uint16_t", "u32": "uint32_t", "u64": "uint64_t", "i16": "int16_t", "i32": "int32_t",
    "i64": "int64_t", "f64": "double", "char": "char", "string": "CFStringRef", "file": "ORB_FSRef",
    "entry": "ORB_USBplotterEntry"}
CLASSES = {"ORB_ServiceRecord": "ServiceRecord", "ORB_USBplotterEntry": "UsbPlotterEntry",
           "ORB_JobReport": "JobReport", "ORB_QueryReport": "QueryReport"}

root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]


def check(holds, text):
    assert holds, text


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
                         f'std::is_same_v<std::remove_all_extents_t<decltype({field})>, {TYPES[kind]}>, "{field}");')
    said = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", "-I", root / "include", "-x", "c++", "-"],
                          input="\n".join(lines), text=True, capture_output=True)
    check(said.returncode == 0, said.stderr)


def check_lists(header, document):
    errors = re.findall(r'X\((\w+), \(?(-?\d+)\)?, (\w+), "([^"]*)"\)', header)
    statuses = re.findall(r"(kORB_(?:File|USB)\w+) = (-?[-+x0-9A-F ]+)", header)
    services = re.findall(r"(kORB_Service\w+) = (\d+)", header)
    check(len(errors) > 30 and len(statuses) > 20 and len(services) > 8, "the header's lists are not found")
    check([f"| {value} | `{name}` | {fault.lower()} | {text} |" for name, value, fault, text in errors] ==
          re.findall(r"^\| -?\d+ \| `kORB_\w+` \| (?:none|host|system|plotter) \|.*$", document, re.M),
          "the error identifiers are not those of the header")
    check([(str(eval(number)), name) for name, number in statuses] ==
          re.findall(r"^\| (-\d+)[^|]* \| `(kORB_(?:File|USB)\w+)` \|", document, re.M),
          "the statuses are not those of the header")
    check([(number, name) for name, number in services] ==
          re.findall(r"^\| (\d+) \| `(kORB_Service\w+)`", document, re.M), "the services are not those of the header")


document = (root / "docs/record.md").read_text()
header = (root / "include/orb/vectorix.h").read_text()
sys.dont_write_bytecode = True
sys.path.insert(0, str(root / "examples"))
host = importlib.import_module("host")

structures = read_structures(document)
check(structures.keys() == CLASSES.keys(), f"tables of {', '.join(structures)}, but not of {', '.join(CLASSES)}")
check_header(structures)
for structure, (size, rows) in structures.items():
    shape = getattr(host, CLASSES[structure])
    places = {(getattr(shape, name).offset, getattr(shape, name).size, name) for name, _ in shape._fields_}
    check(ctypes.sizeof(shape) == size, f"host.py: the size of {structure}")
    check(places <= {(offset, bytes, name) for offset, bytes, _, name in rows}, f"host.py: the fields of {structure}")
check_lists(header, document)
print(f"{sum(len(rows) for _, rows in structures.values())} rows agree")
