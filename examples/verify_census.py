#!/usr/bin/env python3
"""Check that census.dcf, census.dat and places.csv agree.

Reads the dictionary by itself, shares no code with make_census.py, and looks at every
value of every line. Takes the directory as argument, by default the one of this script.
Prints counts; the exit code is 1 if anything does not fit.
"""

import re
import sys
from collections import Counter
from decimal import Decimal
from pathlib import Path

BYTE_ORDER_MARK = b"\xef\xbb\xbf"
NUMBER = re.compile(r" *-?\d+")
POINT_NUMBER = re.compile(r" *-?\d+\.(\d+)")
problems = []


def problem(text):
    problems.append(text)


# --- Dictionary --------------------------------------------------------------

def read_lines(path):
    """Lines of a file that must have a byte order mark and CRLF throughout."""
    content = path.read_bytes()
    if not content.startswith(BYTE_ORDER_MARK):
        problem(f"{path.name}: no byte order mark")
    text = content.decode("utf-8-sig")
    lines = text.split("\r\n")
    if lines.pop() != "" or "\n" in text.replace("\r\n", ""):
        problem(f"{path.name}: a line does not end in CRLF")
    return lines


def read_sections(lines):
    """List of (section, [(key, value), ...])."""
    sections = []
    for line in lines:
        if line.startswith("["):
            sections.append((line.strip("[]"), []))
        elif line:
            key, _, value = line.partition("=")
            sections[-1][1].append((key, value))
    return sections


def read_dictionary(path):
    """The header, the id items and the records; id items are a record without type."""
    header, records = {}, []
    for name, pairs in read_sections(read_lines(path)):
        keys = dict(pairs)
        if name == "Dictionary":
            header = keys
        elif name == "IdItems":
            records.append({"Name": "(ids)", "items": []})
        elif name == "Record":
            records.append({**keys, "items": []})
        elif name == "Item":
            records[-1]["items"].append(make_item(keys, records[-1]["items"]))
        elif name == "ValueSet":
            records[-1]["items"][-1]["sets"].append(make_value_set(pairs))
    share_linked_values(records)
    return header, records[0], records[1:]


def make_item(keys, earlier):
    is_subitem = keys.get("ItemType") == "SubItem"
    parents = [item for item in earlier if not item["parent"]]
    return {
        "name": keys["Name"], "start": int(keys["Start"]) - 1, "len": int(keys["Len"]),
        "occurrences": int(keys.get("Occurrences", 1)), "alpha": keys["DataType"] == "Alpha",
        "decimals": int(keys.get("Decimal", 0)), "point": keys.get("DecimalChar") == "Yes",
        "zero_fill": keys.get("ZeroFill") == "Yes",
        "parent": parents[-1] if is_subitem else None, "sets": []}


def make_value_set(pairs):
    """Codes and specials; a Name behind a Value marks that value."""
    value_set = {"name": dict(pairs[:2])["Name"], "link": "", "values": [], "specials": []}
    for key, value in pairs:
        if key == "Link":
            value_set["link"] = value
        elif key == "Value":
            value_set["values"].append(make_codes(value.split(";")[0]))
        elif key == "Name" and value.endswith(",Special"):
            value_set["specials"].append(value.split(",")[0])
    return value_set


def make_codes(text):
    """List of (lowest, highest) numbers, or of one text."""
    if text.startswith("'"):
        return [text[1:-1].rstrip(" ")]
    ranges = (code.partition(":") for code in text.split(" "))
    return [(Decimal(low), Decimal(high or low)) for low, _, high in ranges]


def share_linked_values(records):
    sources = {}
    for record in records:
        for item in record["items"]:
            for value_set in item["sets"]:
                if value_set["link"]:
                    source = sources.setdefault(value_set["link"], value_set)
                    value_set["values"] = source["values"]


def check_layout(ids, records):
    """Items lie side by side, subitems inside their parents, RecordLen is the end."""
    end = check_items(ids, 1)
    for record in records:
        if check_items(record, end) != int(record["RecordLen"]):
            problem(f"{record['Name']}: RecordLen is wrong")


def check_items(record, column):
    for item in record["items"]:
        parent = item["parent"]
        if parent:
            inside = (parent["start"] <= item["start"] and
                      item["start"] + item["len"] <= parent["start"] + parent["len"])
            if not inside:
                problem(f"{item['name']}: not inside {parent['name']}")
            continue
        if item["start"] != column:
            problem(f"{item['name']}: starts at {item['start'] + 1}, not {column + 1}")
        column = item["start"] + item["len"] * item["occurrences"]
    return column


# --- Values ------------------------------------------------------------------

def fields(item, line):
    """The text of each occurrence; a subitem repeats with its parent."""
    repeats = item["parent"] or item
    for i in range(repeats["occurrences"]):
        start = item["start"] + i * repeats["len"]
        yield line[start:start + item["len"]].ljust(item["len"])


def read_number(item, text):
    """The number in a field, None if the text is none of this item."""
    if item["point"]:
        match = POINT_NUMBER.fullmatch(text)
        return Decimal(text.strip()) if match and len(match[1]) == item["decimals"] else None
    if not NUMBER.fullmatch(text) or item["zero_fill"] and " " in text:
        return None
    return Decimal(text.strip()).scaleb(-item["decimals"])


def fits(value, value_set):
    for code in (code for codes in value_set["values"] for code in codes):
        if code == value if isinstance(code, str) else \
                not isinstance(value, str) and code[0] <= value <= code[1]:
            return True
    return False


def check_field(item, text, where):
    if not text.strip(" "):
        return
    if item["alpha"]:
        value = text.rstrip(" ")
        if value.startswith(" "):
            problem(f"{where}: {item['name']} is not left-justified: {text!r}")
    else:
        value = read_number(item, text)
        if value is None:
            problem(f"{where}: {item['name']} is not a number: {text!r}")
            return
    for value_set in item["sets"]:
        if not fits(value, value_set):
            problem(f"{where}: {item['name']} = {text!r} is not in {value_set['name']}")


# --- Data --------------------------------------------------------------------

def check_line(line, ids, record, where):
    if line != line.rstrip(" ") or len(line) > int(record["RecordLen"]):
        problem(f"{where}: trailing blanks, or longer than the record")
    for item in ids["items"] + record["items"]:
        for text in fields(item, line):
            check_field(item, text, where)


def item_text(record, name, line):
    item = next(item for item in record["items"] if item["name"] == name)
    return next(fields(item, line))


def check_case(lines, by_type, id_end):
    """Number of records of each type, the order of persons, and the area code."""
    case_id = lines[0][1:id_end]
    counts = Counter(line[0] for line in lines)
    for record_type, record in by_type.items():
        lowest = 0 if record.get("Required") == "No" else 1
        if not lowest <= counts[record_type] <= int(record.get("MaxRecords", 1)):
            problem(f"case {case_id}: {counts[record_type]} records of {record['Name']}")
    if "".join(line[0] for line in lines) != "".join(sorted(line[0] for line in lines)):
        problem(f"case {case_id}: records out of order")
    household = lines[0]
    persons = [line for line in lines if line[0] == "2"]
    if int(item_text(by_type["1"], "PERSONS", household)) != len(persons):
        problem(f"case {case_id}: the number of persons is wrong")
    numbers = [int(item_text(by_type["2"], "LINE_NUMBER", line)) for line in persons]
    if numbers != list(range(1, len(persons) + 1)):
        problem(f"case {case_id}: line numbers {numbers}")
    area = item_text(by_type["1"], "AREA_CODE", household)
    if not case_id.startswith(area):
        problem(f"case {case_id}: area code {area} differs from the ids")
    return area


def check_data(path, ids, records):
    """Returns the lines per record type, the number of cases, and the area codes."""
    by_type = {record["RecordTypeValue"].strip("'"): record for record in records}
    last = ids["items"][-1]
    id_end = last["start"] + last["len"]
    counts, cases, order = Counter(), {}, []
    for number, line in enumerate(read_lines(path), 1):
        where = f"{path.name}:{number}"
        record = by_type.get(line[:1])
        if not record or not line[1:id_end].isdigit() or len(line) < id_end:
            problem(f"{where}: unknown record type or incomplete ids")
            continue
        counts[record["Name"]] += 1
        case_id = line[1:id_end]
        if not order or order[-1] != case_id:
            order.append(case_id)
        cases.setdefault(case_id, []).append(line)
        check_line(line, ids, record, where)
    if order != sorted(cases):
        problem(f"{path.name}: cases out of order or in pieces")
    areas = {check_case(lines, by_type, id_end) for lines in cases.values()}
    return counts, len(cases), areas


def check_places(path, areas):
    content = path.read_bytes()
    if content.startswith(BYTE_ORDER_MARK) or b"\r" in content or content[-1:] != b"\n":
        problem(f"{path.name}: must be without byte order mark and end its lines in LF")
    pairs = [line.partition(",")[::2] for line in content.decode("utf-8").splitlines()]
    keys = [key for key, _ in pairs]
    if keys != sorted(set(keys)):
        problem(f"{path.name}: not sorted, or a code occurs twice")
    for key, name in pairs:
        if not re.fullmatch(r"\d{9}", key) or not name.strip():
            problem(f"{path.name}: {key},{name}")
    for area in sorted(areas - set(keys)):
        problem(f"{path.name}: no name for {area}")
    return len(keys)


def expanded(items):
    """Number of fields once items and subitems are repeated."""
    return sum((item["parent"] or item)["occurrences"] for item in items)


def main():
    directory = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent
    header, ids, records = read_dictionary(directory / "census.dcf")
    if (header["RecordTypeStart"], header["RecordTypeLen"]) != ("1", "1"):
        problem("census.dcf: the record type is not the first column")
    check_layout(ids, records)
    counts, cases, areas = check_data(directory / "census.dat", ids, records)
    places = check_places(directory / "places.csv", areas)

    items = [item for record in [ids] + records for item in record["items"]]
    sets = [value_set for item in items for value_set in item["sets"]]
    subitems = sum(1 for item in items if item["parent"])
    print(f"records      {len(records)}")
    print(f"items        {len(items)}, of them {len(ids['items'])} ids and {subitems} subitems")
    print(f"fields       {expanded(items)} with all occurrences")
    print(f"value sets   {len(sets)}")
    print(f"households   {cases}")
    for record in records:
        print(f"lines        {counts[record['Name']]:5} {record['Name']}")
    print(f"areas        {len(areas)} in the data, {places} in places.csv")
    for text in problems[:20]:
        print(text, file=sys.stderr)
    print(f"{len(problems)} problems" if problems else "everything fits")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
