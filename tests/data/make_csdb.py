#!/usr/bin/env python3
"""Make the CSPro DB fixtures, in the directory given as argument, or beside this script:

    cases_schema2.csdb, cases_schema3.csdb     a survey of two records, in both forms
    levels_schema2.csdb, levels_schema3.csdb   three levels, repeats, subitems, and identification
                                               items that are blank or no numbers
    data_levels.dat                            the cases of the latter as text
    basic.csdb                                 the dictionary basic_bom_crlf.dcf alone

The cases are the same in each form, so that reading them has to give the same.
"""

import sqlite3
import sys
from pathlib import Path

SURVEY = """[Dictionary]
Version=CSPro 7.7
Label=Survey
Name=SURVEY_DICT
RecordTypeStart=1
RecordTypeLen=1
Positions=Relative

[Level]
Label=Questionnaire
Name=QUEST

[IdItems]

[Item]
Label=Place
Name=PLACE
Start=2
Len=2

[Item]
Label=Number
Name=NUMBER
Start=4
Len=2

[Record]
Label=House
Name=HOUSE
RecordTypeValue='1'

[Item]
Label=Rooms
Name=ROOMS
Start=6
Len=2

[ValueSet]
Label=Rooms
Name=ROOMS_VS1
Value=1:5;Rooms

[Item]
Label=Weight
Name=WEIGHT
Start=8
Len=5
Decimal=2

[Record]
Label=Person
Name=PERSON
RecordTypeValue='2'
Required=No
MaxRecords=3

[Item]
Label=Age
Name=AGE
Start=6
Len=3

[ValueSet]
Label=Age
Name=AGE_VS1
Value=0:120;Years
Value=999;None
Name=MISSING,Special
"""

LEVELS = """[Dictionary]
Version=CSPro 7.7
Label=Households, women and births
Name=LEVELS_DICT
RecordTypeStart=1
RecordTypeLen=1
Positions=Relative

[Level]
Name=HOUSEHOLD_LEVEL

[IdItems]

[Item]
Name=HOUSEHOLD
Start=2
Len=2

[Item]
Name=PART
Start=4
Len=1
DataType=Alpha

[Record]
Name=HOUSE
RecordTypeValue='1'

[Item]
Name=ROOF
Start=7
Len=2
Occurrences=2
Decimal=1

[ValueSet]
Name=ROOF_VS1
Value=0.5:3.0;Low
Value=9.9;Unknown
Name=MISSING,Special

[Item]
Name=TENTHS
Start=8
Len=1
ItemType=SubItem

[Item]
Name=WALL
Start=11
Len=3
DataType=Alpha

[Level]
Name=WOMAN_LEVEL

[IdItems]

[Item]
Name=WOMAN_NUMBER
Start=5
Len=1

[Record]
Name=WOMAN
RecordTypeValue='2'
MaxRecords=2

[Item]
Name=KIDS
Start=7
Len=2

[Level]
Name=BIRTH_LEVEL

[IdItems]

[Item]
Name=BIRTH_NUMBER
Start=6
Len=1

[Record]
Name=BIRTH
RecordTypeValue='3'

[Item]
Name=BORN
Start=7
Len=6
DataType=Alpha

[Item]
Name=BORN_YEAR
Start=7
Len=4
ItemType=SubItem

[Item]
Name=BORN_MONTH
Start=11
Len=2
ItemType=SubItem
"""


class Item:
    """Columns of a line; also those of a table, one for each occurrence."""

    def __init__(self, name, start, width, decimals=0, is_text=False, occurrences=1, step=0):
        self.name, self.start, self.width = name, start, width
        self.decimals, self.is_text = decimals, is_text
        self.occurrences, self.step = occurrences, step or width

    def columns(self):
        if self.occurrences == 1:
            return [self.name]
        return [f"{self.name}({i + 1})" for i in range(self.occurrences)]

    def values(self, value):
        return value if self.occurrences > 1 else [value]

    def field(self, value):
        if value is None:
            return " " * self.width
        if self.is_text:
            return value.ljust(self.width)
        if isinstance(value, str):  # no number
            return value.rjust(self.width)
        return str(round(value * 10**self.decimals)).rjust(self.width)

    def put(self, line, value):
        for i, one in enumerate(self.values(value)):
            start = self.start - 1 + i * self.step
            line[start:start + self.width] = self.field(one)


class Record:
    def __init__(self, name, code, level, items):
        self.name, self.code, self.level, self.items = name, code, level, items


class Row:
    """A questionnaire of a level: its identification, its records, and the rows below."""

    def __init__(self, ids, records, below=()):
        self.ids, self.records, self.below = ids, records, below


class Case:
    def __init__(self, uuid, row, deleted=0, partial=None):
        self.uuid, self.row, self.deleted, self.partial = uuid, row, deleted, partial


SURVEY_IDS = [[Item("place", 2, 2), Item("number", 4, 2)]]
SURVEY_RECORDS = [
    Record("house", "1", 1, [Item("rooms", 6, 2), Item("weight", 8, 5, decimals=2)]),
    Record("person", "2", 1, [Item("age", 6, 3)]),
]
SURVEY_CASES = [
    Case("u1", Row([1, 1], [("house", [3, 12.34]), ("person", [33]), ("person", [999])])),
    Case("u2", Row([1, 2], [("house", [6, None])]), partial="add"),
    Case("u3", Row([1, 3], [("house", [1, 1.0]), ("person", [130])])),
    Case("u4", Row([1, 4], []), deleted=1),
]

LEVELS_IDS = [
    [Item("household", 2, 2), Item("part", 4, 1, is_text=True)],
    [Item("woman_number", 5, 1)],
    [Item("birth_number", 6, 1)],
]
LEVELS_RECORDS = [
    Record("house", "1", 1, [
        Item("roof", 7, 2, decimals=1, occurrences=2),
        Item("tenths", 8, 1, occurrences=2, step=2),
        Item("wall", 11, 3, is_text=True)]),
    Record("woman", "2", 2, [Item("kids", 7, 2)]),
    Record("birth", "3", 3, [
        Item("born", 7, 6, is_text=True), Item("born_year", 7, 4), Item("born_month", 11, 2)]),
]


def birth(number, born):
    year, month = born[:4].strip(), born[4:].strip()
    return Row([number], [("birth", [born, int(year) if year else None,
                                     int(month) if month else None])])


def house(first, second, wall):
    def tenths(roof):
        return None if roof is None else round(roof * 10) % 10
    return ("house", [[first, second], [tenths(first), tenths(second)], wall])


LEVELS_CASES = [
    Case("v1", Row([1, "A"], [house(1.5, 9.9, "Zoë")], [
        Row([1], [("woman", [2])], [birth(1, "199912"), birth(2, "2001 7")]),
        Row([2], [("woman", [0]), ("woman", [None])]),
    ])),
    # No case: its number is a text, so that no record of it has a place.
    Case("v2", Row(["x1", "A"], [house(1.0, None, None)], [
        Row([1], [("woman", [3])], [birth(1, "2000 1")]),
    ])),
    # Blank identification items are kept.
    Case("v3", Row([None, "B"], [house(4.0, 0.5, "mud")], [
        Row([None], [("woman", [1])], [birth(None, "1980 7")]),
    ])),
    Case("v4", Row([4, None], [house(None, None, None)], [
        Row(["y"], [("woman", [1])], [birth(1, "1990 1")]),
        Row([2], [("woman", [1])], [birth("z", "1991 1"), birth(2, "1992 2")]),
    ]), partial="modify"),
    Case("v5", Row([5, "A"], [house(1.0, 1.0, "old")]), deleted=1),
]


def lines_of(row, ids, records, above=()):
    """A row as lines of text, its records first."""
    items = above + tuple(zip(ids[0], row.ids))
    for name, values in row.records:
        record = next(one for one in records if one.name == name)
        line = [" "] * 100
        line[0] = record.code
        for item, value in items + tuple(zip(record.items, values)):
            item.put(line, value)
        yield "".join(line).rstrip().ljust(max(i.start + i.width - 1 for i, _ in items))
    for below in row.below:
        yield from lines_of(below, ids[1:], records, items)


class Tables:
    """The tables of schema 3, which are filled case by case."""

    def __init__(self, database, ids, records):
        self.database, self.ids, self.records = database, ids, records
        for level, items in enumerate(ids, 1):
            above = "`case-id` TEXT UNIQUE" if level == 1 else f"`level-{level - 1}-id` INTEGER"
            occurrence = [] if level == 1 else ["occ INTEGER"]
            self.create(f"level-{level}", [above, *occurrence], items)
            if level > 1:
                self.index(f"level-{level}", level - 1)
        for record in records:
            self.create(record.name, [f"`level-{record.level}-id` INTEGER", "occ INTEGER"],
                        record.items)
            self.index(record.name, record.level)

    def create(self, name, links, items):
        columns = [f"`{column}` {'TEXT' if item.is_text else 'REAL' if item.decimals else 'INTEGER'}"
                   for item in items for column in item.columns()]
        self.database.execute(f"CREATE TABLE `{name}` (`{name}-id` INTEGER PRIMARY KEY, "
                              f"{', '.join(links + columns)})")

    def index(self, name, level):
        self.database.execute(
            f"CREATE INDEX `{name}-level-{level}-id` ON `{name}`(`level-{level}-id`)")

    def insert(self, name, values):
        marks = ", ".join("?" * (len(values) + 1))
        return self.database.execute(
            f"INSERT INTO `{name}` VALUES ({marks})", [None, *values]).lastrowid

    def add(self, row, link, level=1, occurrence=1):
        links = [link] if level == 1 else [link, occurrence]
        number = self.insert(f"level-{level}", links + row.ids)
        counts = {}
        for name, values in row.records:
            counts[name] = counts.get(name, 0) + 1
            record = next(one for one in self.records if one.name == name)
            cells = [one for item, value in zip(record.items, values) for one in item.values(value)]
            self.insert(name, [number, counts[name], *cells])
        for i, below in enumerate(row.below, 1):
            self.add(below, number, level + 1, i)


def connect(path):
    path.unlink(missing_ok=True)
    database = sqlite3.connect(path)
    database.execute("PRAGMA page_size = 512")  # small files are good seeds for a fuzzer
    return database


def make_basic(folder):
    path = folder / "basic.csdb"
    database = connect(path)
    database.execute("CREATE TABLE meta (schema_version INTEGER NOT NULL, cspro_version TEXT NOT NULL, "
                     "dictionary TEXT NOT NULL)")
    dictionary = (Path(__file__).resolve().parent / "basic_bom_crlf.dcf").read_bytes().decode()
    database.execute("INSERT INTO meta VALUES (3, '7.7.0', ?)", [dictionary])
    database.commit()
    database.close()


def make(path, schema, dictionary, ids, records, cases):
    database = connect(path)
    database.execute("CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary TEXT)")
    database.execute("INSERT INTO meta VALUES (?, ?, ?)", [
        schema, "7.7.0" if schema == 3 else "7.2.0",
        "\ufeff" + dictionary.replace("\n", "\r\n")])
    database.execute("CREATE TABLE cases (id TEXT UNIQUE, key TEXT, label TEXT, questionnaire TEXT, "
                     "deleted INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT)")
    tables = Tables(database, ids, records) if schema == 3 else None
    for order, case in enumerate(cases, 1):
        key = "".join("".join(item.field(value)) if item.is_text or not isinstance(value, int)
                      else str(value).zfill(item.width)
                      for item, value in zip(ids[0], case.row.ids))
        text = "".join(line + "\r\n" for line in lines_of(case.row, ids, records))
        database.execute("INSERT INTO cases VALUES (?, ?, '', ?, ?, ?, ?)", [
            case.uuid, key, "" if tables else text, case.deleted, float(order), case.partial])
        if tables:
            tables.add(case.row, case.uuid)
    database.commit()
    database.execute("VACUUM")
    database.close()


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent
    for schema in (2, 3):
        make(folder / f"cases_schema{schema}.csdb", schema, SURVEY, SURVEY_IDS, SURVEY_RECORDS,
             SURVEY_CASES)
        make(folder / f"levels_schema{schema}.csdb", schema, LEVELS, LEVELS_IDS, LEVELS_RECORDS,
             LEVELS_CASES)
    make_basic(folder)
    text = "".join(line + "\n" for case in LEVELS_CASES if not case.deleted
                   for line in lines_of(case.row, LEVELS_IDS, LEVELS_RECORDS))
    (folder / "data_levels.dat").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
