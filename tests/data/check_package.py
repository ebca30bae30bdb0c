"""Reads the CSV files of a folder with Python's csv as their datapackage.json says and checks the two
against each other: check_package.py FOLDER [LABELS]. Writes the rows like dump_records.R; what is wrong
goes to standard error, with status 1."""

import csv
import json
import math
import os
import re
import sys

folder = sys.argv[1]
problems = []


def fail(text):
    problems.append(text)


def escape(text):
    return text.replace("\\", "\\\\").replace("\n", "\\n")


def line(*fields):
    sys.stdout.buffer.write(("\x1f".join(escape(f) for f in fields) + "\n").encode())


def is_type(cell, kind):
    if kind == "integer":
        return re.fullmatch(r"-?[0-9]+", cell) is not None
    if kind == "number":
        if cell in ("INF", "-INF"):
            return True
        try:
            return math.isfinite(float(cell)) and cell.strip() == cell
        except ValueError:
            return False
    return kind == "string"


def missing_of(field, schema):
    values = field.get("missingValues", schema["missingValues"])
    return {v if isinstance(v, str) else v["value"] for v in values}


def check_field(field, cells, schema, where):
    missing = missing_of(field, schema)
    if "" not in missing:
        fail(f"{where}: an empty cell is no missing value")
    categories = {str(c["value"]) for c in field.get("categories", [])}
    if "categories" in field and field["type"] not in ("string", "integer"):
        fail(f"{where}: categories of a {field['type']}")
    limits = field.get("constraints", {})
    for cell in cells:
        if cell in missing:
            if limits.get("required"):
                fail(f"{where}: a cell is missing")
            continue
        if not is_type(cell, field["type"]):
            fail(f"{where}: {cell!r} is no {field['type']}")
        if categories and cell not in categories:
            fail(f"{where}: {cell!r} is no category")
        if len(cell) > limits.get("maxLength", len(cell)):
            fail(f"{where}: {cell!r} is too long")


def check_names(items, pattern, where):
    names = [item["name"] for item in items]
    if len({name.lower() for name in names}) != len(names) and pattern:
        fail(f"{where}: names are not unique")
    for name in names:
        if pattern and not re.fullmatch(pattern, name):
            fail(f"{where}: name {name!r}")


def read(resource):
    path = os.path.join(folder, resource["path"])
    if os.path.getsize(path) != resource["bytes"]:
        fail(f"{path}: bytes")
    raw = open(path, "rb").read()
    encoding = "utf-8-sig" if raw.startswith(b"\xef\xbb\xbf") else resource["encoding"]
    csv.field_size_limit(10**9)
    with open(path, newline="", encoding=encoding) as file:
        dialect = resource["dialect"]
        rows = list(csv.reader(file, delimiter=dialect["delimiter"], quotechar=dialect["quoteChar"],
                               doublequote=dialect["doubleQuote"], strict=True))
    if not raw.endswith(dialect["lineTerminator"].encode()) or b"\n" in re.sub(
            rb'"(?:[^"]|"")*"', b"", raw).replace(b"\r\n", b""):
        fail(f"{path}: line ends")
    return rows


package = json.load(open(os.path.join(folder, "datapackage.json"), encoding="utf-8"))
sets = {s["name"]: s for s in package.get("tessel:valueSets", [])}
check_names([package], r"[a-z0-9._-]+", "package")
check_names(package["resources"], r"[a-z0-9._-]+", "resources")
for resource in package["resources"]:
    schema = resource["schema"]
    rows = read(resource)
    header = rows.pop(0)
    if header != [field["name"] for field in schema["fields"]]:
        fail(f"{resource['path']}: header")
    if len(rows) != resource["tessel:rows"]:
        fail(f"{resource['path']}: rows")
    for row in rows:
        if len(row) != len(header):
            fail(f"{resource['path']}: a row of {len(row)} cells")
    if not set(schema.get("primaryKey", [])) <= set(header):
        fail(f"{resource['path']}: primary key")
    for place, field in enumerate(schema["fields"]):
        if field["name"] in schema.get("primaryKey", []) and any(
                row[place] in missing_of(field, schema) for row in rows):
            fail(f"{resource['path']}: a part of the primary key is missing")
    line("record", resource["tessel:record"], str(len(rows)))
    for place, field in enumerate(schema["fields"]):
        check_field(field, [row[place] for row in rows], schema, resource["path"] + " " + field["name"])
        line("column", field["name"], field.get("title", ""))
        for name in field.get("tessel:valueSets", [])[:1]:
            for value in sets[name]["values"]:
                if "to" not in value:
                    line("label", value["value"], value.get("label", ""))
        for value in missing_of(field, schema) - {""}:
            line("missing", value)
        for span in field.get("tessel:missingRanges", []):
            line("range", span["from"], span["to"])
    for row in rows:
        line("row", *row)
for problem in problems:
    print(problem, file=sys.stderr)
sys.exit(1 if problems else 0)
