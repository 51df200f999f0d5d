"""Runs whole processes for the measurements, and tells what they took."""

import os
import statistics
import time
from dataclasses import dataclass


@dataclass
class Run:
    seconds: float  # from before the process starts until it has ended
    cpu: float      # of the processor: its own and the system's for it
    status: int


def run(command, environment=None):
    """One run, without a shell between. What it says is dropped, its status tells of failures."""
    nowhere = [(os.POSIX_SPAWN_OPEN, number, os.devnull, os.O_RDWR, 0) for number in range(3)]
    start = time.perf_counter()
    process = os.posix_spawnp(command[0], command, os.environ | (environment or {}),
                              file_actions=nowhere)
    _, status, usage = os.wait4(process, 0)
    seconds = time.perf_counter() - start
    return Run(seconds, usage.ru_utime + usage.ru_stime, os.waitstatus_to_exitcode(status))


def peak_memory(command, folder):
    """In bytes. By GNU time, since the system counts for a process also what its parent occupied
    when it started it, and Python is larger than many a check."""
    note = os.path.join(folder, "peak")
    run(["time", "-f", "%M", "-o", note, *command])
    with open(note, encoding="ascii") as lines:
        return int(lines.read().split()[-1]) * 1024


LONG = 10  # seconds; nothing around a run that takes longer is worth running it again


def interleaved(commands, rounds):
    """The medians of every command's runs, by the names in `commands`. Each round runs all of them,
    so that what else the machine does falls on all alike; a first round warms the page cache."""
    first = {name: run(command) for name, command in commands.items()}
    runs = {name: [done] if done.seconds > LONG else [] for name, done in first.items()}
    for _ in range(rounds):
        for name, command in commands.items():
            if first[name].seconds <= LONG:
                runs[name].append(run(command))
    return {name: median(those) for name, those in runs.items()}


def median(runs):
    statuses = {done.status for done in runs}
    if len(statuses) != 1:
        raise SystemExit(f"the same command ended with different statuses: {statuses}")
    return Run(statistics.median(done.seconds for done in runs),
               statistics.median(done.cpu for done in runs), statuses.pop())


def pin_to_one_core():
    """This process and all that it starts; answers the core."""
    core = min(os.sched_getaffinity(0))
    os.sched_setaffinity(0, {core})
    return core


def machine():
    with open("/proc/cpuinfo", encoding="ascii") as info:
        models = [line.split(":", 1)[1].strip() for line in info if line.startswith("model name")]
    name = models[0] if models else os.uname().machine
    load = os.getloadavg()[0]
    return f"{name}, {os.cpu_count()} cores, load at the start {load:.1f}"


def table(heads, rows):
    print(f"| {' | '.join(heads)} |")
    print("|---" * len(heads) + "|")
    for row in rows:
        print(f"| {' | '.join(row)} |")
    print()


def at_most(value, goal, unit=""):
    return f"{goal:g}{unit}: {'met' if value <= goal else 'not met'}"


def at_least(value, goal, unit=""):
    return f"{goal:g}{unit}: {'met' if value >= goal else 'not met'}"


def milliseconds(seconds):
    return f"{seconds * 1000:,.1f} ms" if seconds < 0.1 else f"{seconds * 1000:,.0f} ms"


def megabytes(count):
    return f"{count / 1e6:,.1f} MB"
