#!/usr/bin/env python3
"""Runs the stage benchmark and prints how a check splits, as Markdown.

usage: stages.py STAGE_BENCH [OPTION OF GOOGLE BENCHMARK...]
"""

import json
import subprocess
import sys

sys.dont_write_bytecode = True
from processes import machine, pin_to_one_core, table  # noqa: E402

# The counters of SplitCheck, in milliseconds.
SPLIT = {"Read": "read the dump", "BuildModel": "build the model", "FindRoots": "find the roots",
         "Group": "group the switches", "CheckGroups": "check the groups",
         "Print": "print the report", "Free": "free the memory",
         "Sum": "these stages together", "Whole": "a check at once, with all else"}
OTHERS = {"CountLines": "read the file as a stream, count its lines",
          "ReadDocument": "read the same fabric as a document",
          "OneClassification": "one classification (part of finding roots)",
          "RanksFromRoots": "ranks from given roots (instead of finding them)",
          "FillHistogram<0>": "sets of up-links to the roots (part of grouping)",
          "MakeGroups<0>": "groups below the roots (part of grouping)",
          "FillHistogram<1>": "sets of up-links of the leaves (part of grouping)",
          "MakeGroups<1>": "groups of leaves (part of grouping)",
          "PrintJson": "the report as JSON"}


def medians(program, options):
    """What Google Benchmark tells of each benchmark and number of faults."""
    done = subprocess.run([program, "--benchmark_format=json", *options], check=True,
                          stdout=subprocess.PIPE)
    found = {}
    for entry in json.loads(done.stdout)["benchmarks"]:
        if entry["aggregate_name"] == "median":
            name, faults = entry["run_name"].split("/")[:2]
            found.setdefault(name, {})[int(faults.removeprefix("faults:"))] = entry
    # They ran in random order.
    return {name: dict(sorted(entries.items())) for name, entries in found.items()}


def heads(faults, *more):
    return [text for count in faults for text in (f"{count} faults" if count else "clean", *more)]


def print_split(checks):
    rows = []
    for stage, text in SPLIT.items():
        rows.append([text])
        for check in checks.values():
            rows[-1] += [f"{check[stage]:.1f} ms", f"{100 * check[stage] / check['Sum']:.0f} %"]
    print("### How a check splits\n")
    table(["stage", *heads(checks, "share")], rows)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    core = pin_to_one_core()
    print(f"{machine()}; core {core}.\n")
    found = medians(sys.argv[1], sys.argv[2:])
    if "SplitCheck" in found:
        print_split(found["SplitCheck"])
    others = {text: found[name] for name, text in OTHERS.items() if name in found}
    if others:
        print("### Parts of stages, and other ways\n")
        table(["what", *heads(next(iter(others.values())))],
              [[text, *(f"{entry['real_time']:.1f} ms" for entry in entries.values())]
               for text, entries in others.items()])


main()
