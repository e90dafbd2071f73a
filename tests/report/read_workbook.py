#!/usr/bin/python3
# Reads a workbook back with openpyxl and prints it as JSON: each sheet in the workbook's order,
# its cells as texts by row (None for a blank), the font sizes and the value types met.
import json
import sys

import openpyxl

book = openpyxl.load_workbook(sys.argv[1])
out = []
for ws in book.worksheets:
    rows, sizes, types = [], set(), set()
    for row in ws.iter_rows():
        rows.append([c.value for c in row])
        for c in row:
            if c.value is not None:
                sizes.add(c.font.sz)
                types.add(type(c.value).__name__)
    out.append({"name": ws.title, "rows": rows, "sizes": sorted(sizes), "types": sorted(types)})
json.dump(out, sys.stdout)
