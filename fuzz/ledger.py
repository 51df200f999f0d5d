#!/usr/bin/env python3
"""How much was fuzzed: the sums of fuzz/ledger.csv, fuzzer by fuzzer, as a table.

usage: ledger.py            prints the table
       ledger.py --check    exit status 1 unless docs/reliability.md shows the same
       ledger.py --accept   writes the table into docs/reliability.md

The ledger has a row for each day, fuzzer and build, with the sanitizers or without them.
"""

import csv
import difflib
import sys
from collections import defaultdict
from pathlib import Path

sys.dont_write_bytecode = True
from fuzzers import FUZZERS, ROOT  # noqa: E402

LEDGER = ROOT / "fuzz" / "ledger.csv"
PAGE = ROOT / "docs" / "reliability.md"
COLUMNS = ["date", "fuzzer", "build", "executions", "processor_seconds", "findings"]
HEADER = ["fuzzer", "what it does", "executions with the sanitizers", "without them",
          "processor hours", "findings"]


def read(path=LEDGER):
    """The rows as {(date, fuzzer, build): [executions, processor seconds, findings]}."""
    rows = defaultdict(lambda: [0, 0, 0])
    with open(path, newline="") as file:
        for row in csv.DictReader(file):
            if row["fuzzer"] not in FUZZERS:
                raise ValueError(f"{path}: no fuzzer is called {row['fuzzer']}")
            sums = rows[row["date"], row["fuzzer"], row["build"]]
            for at, column in enumerate(COLUMNS[3:]):
                sums[at] += int(row[column])
    return rows


def add(date, fuzzer, build, counts, path=LEDGER):
    """Adds to the row of that day, or begins it. Nothing is lost if this is broken off."""
    rows = read(path)
    row = rows[date, fuzzer, build]
    for at, count in enumerate(counts):
        row[at] += count
    new = path.with_suffix(".new")
    with open(new, "w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(COLUMNS)
        writer.writerows([*key, *sums] for key, sums in sorted(rows.items()))
    new.rename(path)


def line(cells):
    return "| " + " | ".join(cells) + " |\n"


def table(rows):
    sums = {name: {"fuzz": 0, "fuzz-fast": 0, "seconds": 0, "findings": 0} for name in FUZZERS}
    for (_, fuzzer, build), (executions, seconds, findings) in rows.items():
        sums[fuzzer][build] += executions
        sums[fuzzer]["seconds"] += seconds
        sums[fuzzer]["findings"] += findings
    text = line(HEADER) + line(["---"] * 2 + ["--:"] * 4).replace(" ", "")
    for name, of in sums.items():
        text += line([f"`{name}`", FUZZERS[name].does, f"{of['fuzz']:,}", f"{of['fuzz-fast']:,}",
                      f"{of['seconds'] / 3600:.2f}", str(of["findings"] or "none")])
    return text


def shown_in(page):
    """Where the table stands in a page."""
    start = page.index(line(HEADER))
    end = page.find("\n\n", start)
    return start, len(page) if end < 0 else end + 1


def accept(ledger=LEDGER, page=PAGE):
    text = page.read_text()
    start, end = shown_in(text)
    page.write_text(text[:start] + table(read(ledger)) + text[end:])


def check(ledger=LEDGER, page=PAGE):
    """What differs, as a diff; empty when nothing does."""
    text = page.read_text()
    start, end = shown_in(text)
    return "".join(difflib.unified_diff(text[start:end].splitlines(True),
                                        table(read(ledger)).splitlines(True),
                                        page.name, ledger.name))


def main(arguments):
    if arguments == ["--accept"]:
        accept()
    elif arguments == ["--check"]:
        difference = check()
        print(difference, end="")
        return 1 if difference else 0
    elif not arguments:
        print(table(read()), end="")
    else:
        print(__doc__, file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
