#!/usr/bin/env python3
"""Runs the stage benchmark and prints how a check splits, as Markdown.

usage: stages.py STAGE_BENCH [OPTION OF GOOGLE BENCHMARK...]
"""

import json
import subprocess
import sys

sys.dont_write_bytecode = True
from processes import machine, pin_to_one_core, table  # noqa: E402

PRINT, FREE, WHOLE = "PrintText", "FreeResult", "WholeCheck"
SPLIT = {"ReadDump": "read the dump", "BuildModel": "build the model",
         "FindRoots": "find the roots", "Group": "group the switches",
         "CheckGroups": "check the groups", PRINT: "print the report", FREE: "free the memory"}
DETAILS = {"CountLines": "floor: read the file, count its lines",
           "ReadDocument": "read the same fabric as a document",
           "OneClassification": "one classification (part of finding roots)",
           "RanksFromRoots": "ranks from given roots (instead of finding them)",
           "FillHistogram<0>": "sets of up-links to the roots (part of grouping)",
           "MakeGroups<0>": "groups below the roots (part of grouping)",
           "FillHistogram<1>": "sets of up-links of the leaves (part of grouping)",
           "MakeGroups<1>": "groups of leaves (part of grouping)",
           "PrintJson": "the report as JSON"}


def medians(program, options):
    """In milliseconds, by stage and number of faults."""
    done = subprocess.run([program, "--benchmark_format=json", *options], check=True,
                          stdout=subprocess.PIPE)
    found = {}
    for entry in json.loads(done.stdout)["benchmarks"]:
        if entry["aggregate_name"] == "median":
            stage, faults = entry["run_name"].split("/")[:2]
            found[stage, int(faults.removeprefix("faults:"))] = entry["real_time"]
    return found


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    core = pin_to_one_core()
    print(f"{machine()}; core {core}.\n")
    times = medians(sys.argv[1], sys.argv[2:])
    faults = sorted({count for _, count in times})

    def cells(stage, wholes=None):
        for count in faults:
            value = times.get((stage, count))
            yield "-" if value is None else f"{value:.1f} ms"
            if wholes is not None:
                yield "-" if value is None else f"{100 * value / wholes[count]:.0f} %"

    heads = [f"{count} faults" if count else "clean" for count in faults]
    parts = [*SPLIT, WHOLE]
    if all((stage, count) in times for stage in parts for count in faults):
        # The whole neither prints nor frees.
        wholes = {count: sum(times[stage, count] for stage in (WHOLE, PRINT, FREE))
                  for count in faults}
        rows = [[text, *cells(stage, wholes)] for stage, text in SPLIT.items()]
        rest = ["all else"]
        for count in faults:
            left = wholes[count] - sum(times[stage, count] for stage in SPLIT)
            rest += [f"{left:.1f} ms", f"{100 * left / wholes[count]:.0f} %"]
        total = ["all of it"]
        for count in faults:
            total += [f"{wholes[count]:.1f} ms", "100 %"]
        print("### How a check splits\n")
        table(["stage", *(text for head in heads for text in (head, "share"))],
              [*rows, rest, total])
    print("### Parts of stages, and other ways\n")
    table(["what", *heads], [[text, *cells(stage)] for stage, text in DETAILS.items()])


main()
