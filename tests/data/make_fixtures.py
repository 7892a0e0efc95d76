#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Writes the workbooks of this folder and what they hold, NAME.expected: run it in place after a change.
# Expectations are stated by hand here, never taken from a reader. One fact a line, cells and the like
# belong to the sheet above them:
#
#   date1904 | sheet KIND STATE NAME | protected | unordered (rows) | bounds A1:B2 | filled none
#   merge A1:B2 | name NAME A1:B2 | name NAME none
#   A1 number 1.5 | A1 date 45000 | A1 strictdate 45000 | A1 bool true | A1 text WORDS | A1 error #N/A | A1 blank
#
# Text is written with \\n, \\r, \\t, \\\\ and \\uXXXX. A cell that is not listed does not exist.
import os
import sys

import fixtures_cells
import fixtures_packages
import fixtures_bad


def write(folder, name, data, facts):
    with open(os.path.join(folder, name), "wb") as file:
        file.write(data)
    with open(os.path.join(folder, os.path.splitext(name)[0] + ".expected"), "w",
              encoding="utf-8", newline="\n") as file:
        file.write("\n".join(line.strip() for line in facts.strip().splitlines()) + "\n")


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    for module in (fixtures_cells, fixtures_packages):
        for name, data, facts in module.fixtures():
            write(here, name, data, facts)
    for name, data, message in fixtures_bad.fixtures():
        write(os.path.join(here, "bad"), name, data, message)
    return 0


if __name__ == "__main__":
    sys.exit(main())
