#!/usr/bin/env python3
"""Writes platform/text/TextTables.cpp: code pages and upper case as compact static tables.

The tables are part of the source, so that neither building nor running needs any converter of the
host.  Run this again only to change their form:

    tools/make_text_tables.py > platform/text/TextTables.cpp
"""

import unicodedata

UNASSIGNED = 0xFFFD
TRAILS = [t for t in range(0x40, 0xFD) if t != 0x7F]
USER_LEADS = range(0xF0, 0xFA)  # user-defined characters, computed in the code
LEADS = [l for l in [*range(0x81, 0xA0), *range(0xE0, 0xFD)] if l not in USER_LEADS]

HEADER = """\
// TextTables.cpp - code pages and upper case as data.  Written by tools/make_text_tables.py.
#include "platform/text/TextTables.h"

namespace kozor::text {

// clang-format off
"""
FOOTER = """\
// clang-format on

}  // namespace kozor::text
"""


def decode(code, page):
    try:
        text = code.decode(page)
    except UnicodeDecodeError:
        return UNASSIGNED
    return ord(text)


def literal(points):
    """A piece of a UTF-16 string literal; a blank is a hole.  What editors hide or change is in digits."""
    out = []
    for point in points:
        char = chr(point)
        plain = char.isprintable() and not char.isspace() and unicodedata.normalize("NFC", char) == char
        if point == UNASSIGNED:
            out.append(" ")
        else:
            out.append(char if plain and char not in '"\\?' else f"\\u{point:04X}")
    return "".join(out)


def string_lines(points, per_line):
    while points and points[-1] == UNASSIGNED:
        points = points[:-1]
    for start in range(0, len(points), per_line):
        yield f'    u"{literal(points[start:start + per_line])}"'


def code_page_932():
    rows, starts = [], {}
    for lead in LEADS:
        row = [decode(bytes([lead, trail]), "cp932") for trail in TRAILS]
        if any(point != UNASSIGNED for point in row):
            starts[lead] = row
    print("const Cp932Row kCp932Rows[] = {")
    for lead, row in starts.items():
        print(f"    {{0x{lead:02X},")
        print("\n".join(string_lines(row, 47)) + "},")
    print("};")
    print(f"const std::size_t kCp932RowCount = {len(starts)};")
    print()


def single_byte(name, page, holes_are_controls):
    points = []
    for byte in range(0x80, 0x100):
        point = decode(bytes([byte]), page)
        points.append(byte if point == UNASSIGNED and holes_are_controls else point)
    print(f"const char16_t {name}[129] =")
    print("\n".join(string_lines(points, 32)) + ";")
    print()


def simple_upper(point):
    char = chr(point)
    for mapped in (char.upper(), char.title()):
        if len(mapped) == 1:
            return ord(mapped)
    return point


def upper_case():
    """Runs of lower-case letters with one distance to their capitals, one or two apart."""
    # No other letter becomes an ASCII one (as dotless i would), which also makes comparing quick.
    pairs = [(p, simple_upper(p)) for p in range(0x80, 0x20000)]
    pairs = [(p, upper) for p, upper in pairs if upper != p and upper >= 0x80]
    runs = []
    for point, upper in pairs:
        distance = upper - point
        if runs:
            run = runs[-1]
            step = point - run["last"]
            if distance == run["distance"] and step <= 2 and run["step"] in (0, step):
                run["last"], run["step"] = point, step
                continue
        runs.append({"first": point, "last": point, "step": 0, "distance": distance})
    print("const UpperRun kUpperRuns[] = {")
    line = "   "
    for run in runs:
        item = f" {{0x{run['first']:X}, 0x{run['last']:X}, {max(run['step'], 1)}, {run['distance']}}},"
        if len(line) + len(item) > 98:
            print(line)
            line = "   "
        line += item
    print(line)
    print("};")
    print(f"const std::size_t kUpperRunCount = {len(runs)};")
    print()


def main():
    print(HEADER)
    code_page_932()
    single_byte("kCp1252High", "cp1252", True)
    single_byte("kCp437High", "cp437", False)
    upper_case()
    print(FOOTER, end="")


main()
