#!/usr/bin/env python3
"""Make census_problems.dat: households of the example census with problems of nearly all kinds.

Not in it are those that this dictionary and a small file cannot have: level-without-parent needs a
second level (tests/tst_DataChecker.cpp), too-long-line more than 1 MiB (tests/tst_CheckCommand.cpp),
file-changed a writer (there as well), damaged-record and partly-saved-case a CSPro DB
(tests/tst_DataDb.cpp).

The first households of census.dat are copied and spoilt, each line in one way. Two files come of
it, in the directory given as argument, or beside this script:

    census_problems.dat   the spoilt data
    census_problems.csv   what is wrong with them, as tessel check --problems writes it, by line
"""

import csv
import sys
from pathlib import Path

FOLDER = Path(__file__).resolve().parent
DATA = "census_problems.dat"

# First column, from 0, and width of what is spoilt.
COLUMNS = {
    "PROVINCE": (1, 2), "DISTRICT": (3, 3), "EA": (6, 4), "HOUSEHOLD_NUMBER": (10, 3),
    "PERSONS": (35, 2), "ROOMS": (45, 2), "WATER_SOURCE": (47, 2), "WATER_HOURS": (49, 4),
    "SEX": (46, 1), "AGE": (55, 2), "ANIMAL": (13, 1),
}
HOUSEHOLD_WIDTH = 155


class Problems:
    """The lines of the file, and what is expected of them."""

    def __init__(self):
        self.lines = []
        self.expected = []

    def add(self, line, kind=None, record="", variable="", value="", case=None, first=""):
        """A line, and what is wrong with it; "LINE" stands for the line itself."""
        self.lines.append(line)
        if kind:
            self.expect(len(self.lines), kind, record, variable, value,
                        line[1:13] if case is None else case, first)

    def expect(self, number, kind, record, variable, value, case, first=""):
        self.expected.append([number, case, record, variable, value, kind, first])


def put(line, variable, text):
    """The line with another text in the columns of the variable."""
    start, width = COLUMNS[variable]
    line = line.ljust(start + width)
    return line[:start] + text.rjust(width) + line[start + width:]


def cases(lines):
    """The lines of each household."""
    found = {}
    for line in lines:
        found.setdefault(line[1:13], []).append(line)
    return list(found.values())


def spoil_values(problems, households):
    """Values that are not what they should be, one to a household."""
    spoilt = [
        ("ROOMS", "x1", "not-a-number", "x1"),
        ("WATER_HOURS", "1.25", "unfit-number", "1.25"),
        ("PERSONS", "77", "out-of-range", "77"),
        ("WATER_SOURCE", "Q", "outside-value-set", " Q"),
    ]
    for (variable, text, kind, value), household in zip(spoilt, households):
        problems.add(put(household[0], variable, text), kind, "HOUSEHOLD", variable, value)
        for line in household[1:]:
            problems.add(line)


def spoil_lines(problems, household):
    """Lines that are no records, or odd ones."""
    house, persons = household[0], household[1:]
    problems.add(house.ljust(HOUSEHOLD_WIDTH) + "too much", "text-beyond-record", "HOUSEHOLD", "",
                 "too much")
    problems.add("9" + house[1:13] + " no such record", "unknown-record-type", "", "", "LINE")
    problems.add(house[:7], "ends-in-identification", "HOUSEHOLD", "", "LINE", "")
    problems.add("2" + "11OO1" + house[6:40], "id-not-a-number", "PERSON", "DISTRICT", "LINE", "")
    problems.add("~" + persons[0])
    problems.add("")
    control = persons[0][:20] + "\x01" + persons[0][21:]
    problems.add(control, "control-characters", "PERSON", "FULL_NAME", control[15:45].rstrip(" "))
    for name, kind in (("René", "other-encoding"), ("Ren\ufffdě", "not-utf-8")):
        problems.add(persons[0][:15] + name.ljust(15) + " " * 15 + persons[0][45:],
                     kind, "PERSON", "FULL_NAME", name)


def spoil_cases(problems, households):
    """Cases whose records, or whose identification, are not what they should be."""
    plain, poor, twice, nameless, blank = households
    for line in plain:
        problems.add(line)
    first = len(problems.lines) - len(plain) + 1
    problems.add(poor[0])
    problems.expect(len(problems.lines), "missing-record", "PERSON", "", "", poor[0][1:13])
    problems.add(twice[0])
    problems.add(twice[0], "too-many-records", "HOUSEHOLD")
    problems.add(twice[1])
    problems.add(put(nameless[0], "EA", ""), "blank-id-item", "HOUSEHOLD", "EA")
    problems.add(put(nameless[1], "EA", ""), "blank-id-item", "PERSON", "EA")
    for line in blank[:2]:
        record = "HOUSEHOLD" if line[:1] == "1" else "PERSON"
        problems.add(line[:1] + " " * 12 + line[13:], "blank-identification", record, case="")
    return first


def repeat_cases(problems, plain, first, other):
    """A whole case once more, and a person far from the rest of the household."""
    for number, line in enumerate(plain):
        problems.add(line)
        if number == 0:
            problems.expect(len(problems.lines), "duplicate-case", "", "", "", line[1:13], first)
    problems.add(other[1], "scattered-case", first=1)
    problems.expect(len(problems.lines), "missing-record", "HOUSEHOLD", "", "", other[1][1:13])


def encoded(line):
    """UTF-8, but for one line that is in another encoding, and one byte of another line."""
    if "René" in line:
        return line.encode("windows-1252")
    return line.encode("utf-8").replace("\ufffd".encode("utf-8"), b"\xe9")


def main():
    directory = Path(sys.argv[1]) if len(sys.argv) > 1 else FOLDER
    directory.mkdir(parents=True, exist_ok=True)
    data = (FOLDER / "census.dat").read_text(encoding="utf-8-sig").splitlines()
    households = cases(data[:400])
    problems = Problems()
    spoil_values(problems, households)
    spoil_lines(problems, households[4])
    first = spoil_cases(problems, households[5:10])
    repeat_cases(problems, households[5], first, households[0])
    (directory / DATA).write_bytes(
        b"".join(encoded(line) + b"\r\n" for line in problems.lines))
    with open(directory / "census_problems.csv", "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\r\n")
        writer.writerow(["file", "line", "case", "record", "variable", "value", "kind",
                         "first_file", "first_line"])
        for row in sorted(problems.expected, key=lambda row: (row[0], row[5], row[3])):
            line, case, record, variable, value, kind, first = row
            if value == "LINE":
                value = problems.lines[line - 1]
            writer.writerow([DATA, line, case, record, variable, value, kind,
                             DATA if first else "", first])


if __name__ == "__main__":
    main()
