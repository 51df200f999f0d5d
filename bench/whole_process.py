#!/usr/bin/env python3
"""Measures whole runs of fabscope from start to end and prints Markdown tables.

usage: whole_process.py [--small] FABSCOPE [PART...]

  file      a check of a dump of 65,536 hosts against counting the dump's lines: time and memory;
            and other files, and instructions
  archive   checks of many dumps in one run
  growth    time per cable from 1,024 to 65,536 hosts
  scripts   against Python scripts that only rank the switches
  manager   against the subnet manager OpenSM
  repairs   of 200 faults, from 8,192 to 65,536 hosts, against a check: time and memory
  worst     fabrics that are made to be slow

All on one core, with the files in the page cache, medians of runs that take turns. What is compared
is compared within one run; a goal that is missed is called so. --small takes small fabrics, which
shows only that all of this still runs.
"""

import gzip
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.append(str(Path(__file__).resolve().parent.parent / "tests" / "performance"))
import counting  # noqa: E402
import subnet_manager  # noqa: E402
from processes import (at_least, at_most, interleaved, machine, median,  # noqa: E402
                       megabytes, milliseconds, peak_memory, pin_to_one_core, run, table)

HERE = Path(__file__).resolve().parent
PYTHON = "/usr/bin/python3"  # the one that Debian's libraries belong to
# 200 faults with which the roots are still found by themselves. stage_bench makes the same.
MIXED_FAULTS = ["missing-link=90", "missing-host=50", "slow-link=40", "swapped-cables=10",
                "moved-cable=4", "dead-switch=2", "same-rank-link=1", "root-link=1", "stray-host=2"]
# 200 that are all about cables between switches, too many for that.
CABLE_FAULTS = ["missing-link=60", "swapped-cables=60", "moved-cable=60", "same-rank-link=10",
                "root-link=10"]
BY_NAME = ["--root-regex", "^spine"]
PATIENCE = 60  # seconds, with fabrics that are made to be slow
OUT_OF_PATIENCE = 124  # the status that `timeout` ends with


def shuffle_records(text):
    head, *records = text.rstrip("\n").split("\n\nvendid=")
    random.Random(1).shuffle(records)
    return "\n\nvendid=".join([head, *records]) + "\n"


def end_lines_in_crlf(text):
    return text.replace("\n", "\r\n")


def add_tails(text):
    return text.replace(" 4xHDR\n", " 4xHDR s=1 w=1 v=1\n")


class Bench:
    def __init__(self, fabscope, small, folder):
        self.fabscope = str(Path(fabscope).resolve())
        self.small = small
        self.folder = Path(folder)

    def pick(self, full, small):
        return small if self.small else full

    def make(self, name, radix, faults=()):
        """The file of a tree of three levels."""
        path = self.folder / name
        wanted = [option for fault in faults for option in ("--fault", fault)]
        subprocess.run([self.fabscope, "generate", "--levels", "3", "--radix", str(radix), *wanted,
                        "--format", "ibnetdiscover", "-o", path], check=True)
        return str(path)

    def check(self, path, *options):
        return [self.fabscope, "check", *options, str(path)]

    def levels(self, path):
        """How many switches each rank has, from the roots down, as the report says."""
        report = subprocess.run(self.check(path), stdout=subprocess.PIPE).stdout.decode()
        return [int(count) for count in re.findall(r"^\t rank: .*#switches: (\d+)$", report, re.M)]

    def records(self, path, options):
        """How many records the report ends with, by its own words and by its lines; -1 when it
        does not end so. The report may be larger than memory."""
        lines = 0
        tail = b""
        every = ["--max-records", str(10**9)]
        with subprocess.Popen(self.check(path, *options, *every), stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as process:
            while piece := process.stdout.read(1 << 16):
                lines += (tail[-4:] + piece).count(b"\n-E- ") if tail else piece.count(b"\n-E- ")
                tail = (tail + piece)[-200:]
        said = re.search(rb"-I- Fat-tree check: (\d+) error records", tail)
        if said and int(said[1]) != lines:
            raise SystemExit(f"{path}: {lines} records, but the report says {int(said[1])}")
        return int(said[1]) if said else -1

    def peak(self, command):
        return peak_memory(command, self.folder)

    def file(self):
        radix = self.pick(64, 8)
        # By name: faults, options, and at most how many times as long as `wc -l`.
        cases = {"clean": ([], [], 9), "200 faults": (MIXED_FAULTS, [], 9),
                 "200 faults of cables, roots by name": (CABLE_FAULTS, BY_NAME, 9)}
        paths, commands, goals = {}, {}, {}
        for name, (faults, options, goal) in cases.items():
            if self.small:
                faults = [re.sub("=.*", "=1", fault) for fault in faults]
            paths[name] = self.make(f"{len(paths)}.topo", radix, faults)
            commands["check", name] = self.check(paths[name], *options)
            goals[name] = goal
        for name, goal, change in (("clean, records shuffled", 13, shuffle_records),
                                   ("clean, lines end in CRLF", 10, end_lines_in_crlf),
                                   ("clean, more behind the speeds", 10, add_tails)):
            paths[name] = self.changed(paths["clean"], f"{len(paths)}.topo", change)
            commands["check", name] = self.check(paths[name])
            goals[name] = goal
        for name, path in paths.items():
            commands["wc", name] = ["wc", "-l", path]
        done = interleaved(commands, self.pick(21, 1))
        times, memory = [], []
        for name, path in paths.items():
            floor, check = done["wc", name], done["check", name]
            size = os.path.getsize(path)
            ratio = check.cpu / floor.cpu
            times.append([name, megabytes(size), str(check.status), milliseconds(floor.cpu),
                          milliseconds(check.cpu), f"{ratio:.1f}", at_most(ratio, goals[name]),
                          f"{check.seconds / floor.seconds:.1f}"])
            peak = self.peak(commands["check", name])
            memory.append([name, megabytes(size), megabytes(peak), f"{peak / size:.2f}",
                           at_most(peak / size, 0.95)])
        print("### The full-size dump: a check against `wc -l`, processor time\n")
        table(["dump", "size", "exit status", "`wc -l`", "check", "ratio", "goal",
               "ratio by the clock"], times)
        print("### Peak memory of these checks\n")
        table(["dump", "size", "peak", "peak to size", "goal"], memory)
        self.document(paths["clean"])
        self.instructions(paths["clean"])

    def changed(self, path, name, change):
        with open(path, encoding="ascii", newline="") as dump:
            text = change(dump.read())
        made = self.folder / name
        with open(made, "w", encoding="ascii", newline="") as dump:
            dump.write(text)
        return str(made)

    def document(self, dump):
        document = str(self.folder / "document.json")
        subprocess.run([self.fabscope, "convert", dump, "-o", document], check=True)
        small = HERE.parent / "tests" / "data" / "tree-32h.topo"
        done = interleaved({"dump": self.check(dump), "document": self.check(document),
                            "small": self.check(small), "wc": ["wc", "-l", str(small)]},
                           self.pick(21, 1))
        rows = []
        for what, base, name, goal in (
                ("document", "dump", "a document of the clean tree, to its dump", 1.5),
                ("small", "wc", "a dump of 32 hosts, start to end, to `wc -l`", 1.5)):
            ratio = done[what].cpu / done[base].cpu
            rows.append([name, milliseconds(done[base].cpu), milliseconds(done[what].cpu),
                         f"{ratio:.2f}", at_most(ratio, goal)])
        print("### Other files, processor time\n")
        table(["file", "time of the other", "check", "ratio", "goal"], rows)

    def instructions(self, full):
        rows = []
        for name, path, goal in (("65,536 hosts, clean", full, 370),
                                 ("3,456 hosts, clean", self.make("3456.topo", 24), 26)):
            counted, _ = counting.instructions(self.check(path), self.folder / "profile")
            rows.append([name, f"{counted / 1e6:,.0f} million",
                         at_most(counted / 1e6, goal, " million")])
        print("### Instructions of a check, under valgrind\n")
        table(["dump", "instructions", "goal"], rows)

    def archive(self):
        radixes = self.pick([20, 24, 28, 32, 36], [4, 8])
        dumps = []
        for radix in radixes:
            for seed in range(1, self.pick(5, 2)):
                name = f"archive-{radix}-{seed}.topo"
                dumps.append(self.make(name, radix, ("missing-link=2", "swapped-cables=1")))
        size = sum(map(os.path.getsize, dumps))
        packed = []
        for dump in dumps:
            with open(dump, "rb") as plain, gzip.open(dump + ".gz", "wb", 6) as file:
                shutil.copyfileobj(plain, file)
            packed.append(dump + ".gz")
        done = interleaved({"plain": [self.fabscope, "check", *dumps],
                            "gz": [self.fabscope, "check", *packed]}, self.pick(7, 1))
        rows = []
        for kind, goal in (("plain", 450), ("gz", 230)):
            speed = size / 1e6 / done[kind].cpu
            rows.append([kind, str(len(dumps)), megabytes(size), milliseconds(done[kind].cpu),
                         f"{speed:.0f} MB/s", at_least(speed, goal, " MB/s")])
        print("### An archive of dumps with faults, 2,000 to 11,664 hosts, processor time\n")
        table(["files", "how many", "size unpacked", "check", "of unpacked text", "goal"], rows)

    def growth(self):
        radixes = self.pick([16, 20, 24, 32, 40, 48, 64], [4, 8])
        paths = {radix: self.make(f"radix-{radix}.topo", radix) for radix in radixes}
        commands = {radix: self.check(path) for radix, path in paths.items()}
        commands["start"] = [self.fabscope, "--version"]
        done = interleaved(commands, self.pick(21, 1))
        start = done["start"].seconds
        rows = []
        withs, withouts = [], []
        for radix in radixes:
            with open(paths[radix], encoding="ascii") as dump:
                cables = sum(line.startswith("[") for line in dump) // 2
            seconds = done[radix].seconds
            withs.append(seconds / cables)
            withouts.append((seconds - start) / cables)
            rows.append([f"{radix ** 3 // 4:,}", f"{cables:,}", milliseconds(seconds),
                         f"{withs[-1] * 1e9:,.0f} ns", f"{withouts[-1] * 1e9:,.0f} ns"])
        ratios = [max(those) / min(those) for those in (withs, withouts)]
        rows.append(["largest to smallest", "", "", *(f"{ratio:.2f}" for ratio in ratios)])
        rows.append(["goal", "", "", *(at_most(ratio, 1.5) for ratio in ratios)])
        print("### Growth: time per cable\n")
        table(["hosts", "cables", "`fabscope check`", "per cable",
               f"without the start ({milliseconds(start)})"], rows)

    def scripts(self):
        path = self.make("scripts.topo", self.pick(64, 8))
        levels = self.levels(path)
        goals = {"plain_ranks.py": ("plain Python script", 10),
                 "networkx_ranks.py": ("Python script with networkx", 20)}
        commands = {"check": self.check(path)}
        rows = []
        for script in goals:
            command = [PYTHON, str(HERE / "peers" / script), path]
            tried = subprocess.run(command, capture_output=True)
            if tried.returncode != 0:
                reason = tried.stderr.decode(errors="replace").strip().split("\n")[-1]
                rows.append([goals[script][0], f"not run: {reason}", "", "", ""])
                continue
            ranks = [int(count) for count in re.findall(r"^rank \d+: (\d+) switches$",
                                                        tried.stdout.decode(), re.M)]
            if ranks != levels:
                raise SystemExit(f"{script} ranks the switches {ranks}, fabscope {levels}")
            commands[script] = command
        done = interleaved(commands, self.pick(7, 1))
        for script, (text, goal) in goals.items():
            if script in done:
                ratio = done[script].seconds / done["check"].seconds
                rows.append([text, milliseconds(done[script].seconds),
                             megabytes(self.peak(commands[script])), f"{ratio:.1f}",
                             at_least(ratio, goal)])
        own = ["`fabscope check`", milliseconds(done["check"].seconds),
               megabytes(self.peak(commands["check"])), "1.0", ""]
        print(f"### Scripts that rank the switches of the same dump (all find {levels})\n")
        table(["program", "time", "peak memory", "times as long", "goal"], [own, *rows])

    def manager(self):
        dump = HERE.parent / "tests" / "data" / self.pick("tree-2000h.topo", "tree-32h.topo")
        net_file = self.folder / "fabric.net"
        subprocess.run([self.fabscope, "convert", dump, "-o", net_file], check=True)
        check = self.check(dump)
        levels = self.levels(dump)  # warms the page cache, too
        managers, checks, reason = [], [], ""
        for number in range(self.pick(3, 1)):
            checks += [run(check) for _ in range(self.pick(5, 1))]
            try:
                done, ranks = subnet_manager.run_once(net_file, self.folder / f"manager-{number}")
            except subnet_manager.NotRun as problem:
                managers, reason = [], str(problem)
                break
            if ranks != levels:
                raise SystemExit(f"opensm ranks the switches {ranks}, fabscope {levels}")
            managers.append(done)

        def row(name, runs):
            if not runs:
                return [name, f"not run: {reason}", ""]
            done = median(runs)
            return [name, milliseconds(done.seconds), milliseconds(done.cpu)]

        print(f"### The subnet manager OpenSM on `{dump.name}`\n")
        table(["program", "time", "of it processor"],
              [row("`fabscope check`", checks), row("`opensm -R ftree -o`", managers)])

    def repairs(self):
        rows = []
        for radix in self.pick([32, 40, 48, 64], [8]):
            faults = [re.sub("=.*", "=1", fault) for fault in CABLE_FAULTS] if self.small \
                else CABLE_FAULTS
            path = self.make(f"repairs-{radix}.topo", radix, faults)
            commands = {"search": self.check(path, "--roots", "search"), "auto": self.check(path),
                        "repair": [self.fabscope, "repair", path]}
            done = interleaved(commands, self.pick(7, 1))
            peaks = {name: self.peak(command) for name, command in commands.items()}
            ratio = done["repair"].seconds / done["search"].seconds
            larger = peaks["repair"] / peaks["search"]
            rows.append([f"{radix ** 3 // 4:,}",
                         *(milliseconds(done[name].seconds) for name in commands),
                         f"{ratio:.2f}", at_most(ratio, 3), megabytes(peaks["search"]),
                         megabytes(peaks["repair"]), f"{larger:.2f}", at_most(larger, 2)])
        print("### Repairs of 200 faults of cables, with their proof\n")
        table(["hosts", "`check --roots search`", "`check`", "`repair`", "ratio to the first",
               "goal", "peak of a check", "of repairs", "ratio", "goal"], rows)

    def worst_repairs(self):
        sizes = {"ring": 70, "path": 70, "strays": 100, "random": 100, "complete": 128}
        cases = {}
        for name, size in sizes.items():
            made = self.folder / f"repair-{name}.json"
            with open(made, "wb") as file:
                subprocess.run([PYTHON, HERE / "worst_cases.py", name,
                                *([str(size)] if self.small else [])], stdout=file, check=True)
            cases[name] = ["timeout", str(PATIENCE), self.fabscope, "repair", str(made)]
        texts = {"ring": "a ring of 5,000 switches", "path": "a row of 5,000 switches",
                 "strays": "10,000 leaves, each with a cable in another pod",
                 "random": "20,000 switches cabled at random",
                 "complete": "6,400 switches in sets of which each is cabled to each"}
        rows = []
        for name, took in interleaved(cases, self.pick(3, 1)).items():
            rows.append([texts[name], milliseconds(took.seconds), megabytes(self.peak(cases[name])),
                         str(took.status), at_most(took.seconds, 10, " s")])
        print("### Repairs of fabrics that are made to be slow\n")
        table(["fabric", "`fabscope repair`", "peak memory", "exit status", "goal"], rows)

    def worst_fabrics(self):
        """The files of worst_cases.py by name, and the number of missing links in the chain."""
        sizes = {"unlike": 256, "inside": 128, "popular": 256, "chain": 64, "groups": 64,
                 "one-level": 20, "star": 5, "guids": 5, "ring": 70, "long-ring": 90}
        made = {}
        for name, size in sizes.items():
            made[name] = self.folder / f"{name}.json"
            sized = [str(size)] if self.small else ["50000"] if name == "long-ring" else []
            with open(made[name], "wb") as file:
                subprocess.run([PYTHON, HERE / "worst_cases.py", name.removeprefix("long-"),
                                *sized], stdout=file, check=True)
        size = self.pick(2048, sizes["chain"])
        missing = size * (size - 4)
        for name, options, expected in (("chain", BY_NAME, missing), ("groups", BY_NAME, 0),
                                        ("star", [], 0)):
            if (found := self.records(made[name], options)) != expected:
                raise SystemExit(f"{name}: {found} records, expected {expected}")
        return made, missing

    def worst(self):
        made, missing = self.worst_fabrics()
        chain, groups = (self.check(made[name], *BY_NAME) for name in ("chain", "groups"))
        cases = {
            "8,192 lower switches whose up-links to 2,048 upper ones all differ":
                self.check(made["unlike"], *BY_NAME),
            "the same with 245,760 cables between lower switches":
                self.check(made["inside"], *BY_NAME),
            "the same, with cross links instead": self.check(made["popular"], *BY_NAME),
            f"2,048 spines and 2,048 lines in one group, {missing:,} cables missing": chain,
            "the same with `--csv -`": [*chain, "--csv", "-"],
            "the same with `--json -`": [*chain, "--json", "-"],
            "the same with `--json -` and `--max-records 5000000`":
                [*chain, "--json", "-", "--max-records", "5000000"],
            "the same switches and cables in groups that lack none": groups,
            "the same with `--json -`, none missing": [*groups, "--json", "-"],
            "48,000 hosts at 200 leaves that are cabled to each other only":
                self.check(made["one-level"]),
            "the same, all leaves named as roots":
                self.check(made["one-level"], "--root-regex", "^leaf"),
            "a star: 255 leaves with 64,770 hosts around one switch": self.check(made["star"]),
            "the same with GUIDs that meet in a hash table": self.check(made["guids"]),
            "a ring of 5,000 switches": self.check(made["ring"]),
            "the same, one switch named as root":
                self.check(made["ring"], "--root-regex", "^leaf0*1$"),
            "the same with 50,000 switches":
                self.check(made["long-ring"], "--root-regex", "^leaf0*1$"),
        }
        cases = {name: ["timeout", str(PATIENCE), *command] for name, command in cases.items()}
        done = interleaved(cases, self.pick(3, 1))
        rows = []
        for name, took in done.items():
            gave_up = took.status == OUT_OF_PATIENCE
            rows.append([name, f"over {PATIENCE} s" if gave_up else milliseconds(took.seconds),
                         "" if gave_up else megabytes(self.peak(cases[name])),
                         "" if gave_up else str(took.status), at_most(took.seconds, 2, " s")])
        print("### Fabrics that are made to be slow\n")
        table(["fabric", "`fabscope check`", "peak memory", "exit status", "goal"], rows)

        self.worst_repairs()

        print(f"### Memory per record and time, of {missing:,} records\n")
        rows = []
        outputs = {"text": ([], 1.5), "CSV": (["--csv", "-"], 2), "JSON": (["--json", "-"], 2.5)}
        listed = ["--max-records", str(missing)]
        done = interleaved({output: [*chain, *options, *listed]
                            for output, (options, _) in outputs.items()}, self.pick(3, 1))
        for output, (options, goal) in outputs.items():
            peaks = [self.peak([*command, *options, *listed]) for command in (chain, groups)]
            each = (peaks[0] - peaks[1]) / missing
            rows.append([output, *map(megabytes, peaks), f"{each:.0f} bytes", at_most(each, 150),
                         milliseconds(done[output].seconds),
                         at_most(done[output].seconds, goal, " s")])
        table(["output", "peak", "peak without records", "each record", "goal", "time", "goal"],
              rows)


PARTS = ["file", "archive", "growth", "scripts", "manager", "repairs", "worst"]


def main():
    arguments = sys.argv[1:]
    small = "--small" in arguments
    if small:
        arguments.remove("--small")
    parts = arguments[1:] or PARTS
    if not arguments or not set(parts) <= set(PARTS):
        sys.exit(__doc__)
    os.environ["LC_ALL"] = "C"
    core = pin_to_one_core()
    print(f"{machine()}; core {core}.\n")
    with tempfile.TemporaryDirectory(prefix="fabscope-") as folder:
        bench = Bench(arguments[0], small, folder)
        for part in parts:
            getattr(bench, part)()
            sys.stdout.flush()


main()
