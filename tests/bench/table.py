#!/usr/bin/env python3
"""Rows of a measurement, "what | value | limit", as a table with the ratio of value to limit, or as JSON.

A limit that begins with "at least" is to be reached, any other is not to be passed; without one the row tells something that
is good to know. Usage: table.py [--json] <ROWS; the exit code is that of the reading alone, since speed is no test.
"""

import datetime
import json
import os
import platform
import re
import sys

WIDTHS = (60, 30, 16, 6)


def number_in(text):
    found = re.search(r"-?\d+(\.\d+)?", text)
    return float(found.group()) if found else None


def row_of(line):
    what, value, limit = (part.strip() for part in line.split("|"))
    measured, bound = number_in(value), number_in(limit)
    row = {"what": what, "value": value, "limit": limit, "ratio": None, "kept": None}
    if measured is None or bound is None:
        return row
    if bound:
        row["ratio"] = round(measured / bound, 3)
    row["kept"] = measured >= bound if limit.startswith("at least") else measured <= bound
    return row


def processor():
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as lines:
            return next(line.split(":")[1].strip() for line in lines if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def machine():
    return {
        "date": datetime.date.today().isoformat(),
        "system": f"{platform.system()} {platform.release()}",
        "processor": f"{os.cpu_count()} x {processor()}",
    }


def show(rows):
    def line(*cells):
        print("  ".join(f"{cell:<{width}}" for cell, width in zip(cells, WIDTHS)).rstrip())

    line("What", "Measured", "Limit", "Ratio", "")
    for row in rows:
        ratio = "" if row["ratio"] is None else f"{row['ratio']:.2f}"
        line(row["what"], row["value"], row["limit"], ratio + ("" if row["kept"] in (True, None) else " over"))


def main():
    rows = [row_of(line) for line in sys.stdin if line.count("|") == 2]
    if "--json" in sys.argv[1:]:
        print(json.dumps({**machine(), "rows": rows}, ensure_ascii=False, indent=1))
    else:
        show(rows)
        told = machine()
        print(f"\n{told['date']}, {told['processor']}, {told['system']}")


main()
