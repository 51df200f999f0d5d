"""Measures the subnet manager OpenSM with its fat-tree engine, on a fabric that ibsim simulates."""

import contextlib
import glob
import os
import re
import shutil
import socket
import subprocess
import time
from pathlib import Path

from processes import run

SECONDS = 120  # that the simulator may take to start


class NotRun(Exception):
    """Why there is nothing to tell."""


def preload_library():
    found = glob.glob("/usr/lib/*/umad2sim/libumad2sim.so")
    if not found or not shutil.which("ibsim"):
        raise NotRun("ibsim-utils is not installed")
    return found[0]


def program():
    # Debian keeps it where only root's search path leads.
    found = shutil.which("opensm", path=f"{os.environ['PATH']}:/usr/sbin:/sbin")
    if not found:
        raise NotRun("opensm is not installed")
    return found


def is_bound(socket_name):
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as probe:
        try:
            probe.connect(f"\0{socket_name}:ctl\0")
        except ConnectionRefusedError:
            return False
        return True


@contextlib.contextmanager
def simulator(net_file, socket_name):
    """ibsim, started as the head of the net file says, once tools can reach it: by a socket of that
    name, never by the network."""
    with open(net_file, encoding="utf-8", errors="replace") as lines:
        head = re.match(r"# start it with: (ibsim .*) FILE\n", lines.readline())
    command = ["setpriv", "--pdeathsig", "KILL", *head[1].split(), "-n", str(net_file)]
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, cwd=net_file.parent,
                               env=os.environ | {"IBSIM_SOCKNAME": socket_name})
    try:
        deadline = time.monotonic() + SECONDS
        while not is_bound(socket_name):
            if process.poll() is not None or time.monotonic() > deadline:
                raise NotRun("ibsim does not start here")
            time.sleep(0.01)
        yield
    finally:
        process.kill()
        process.wait()


def run_once(net_file, folder):
    """One run on a fabric that no subnet manager has seen: what it took, and the switches by rank
    that it found."""
    library = preload_library()
    manager = program()
    folder = Path(folder)
    folder.mkdir()
    socket_name = f"fabscope-bench-{os.getpid()}"
    environment = {"IBSIM_SOCKNAME": socket_name, "LD_PRELOAD": library,
                   "OSM_TMP_DIR": str(folder), "OSM_CACHE_DIR": str(folder)}
    log = folder / "log"
    # Without -V, which writes gigabytes.
    command = ["timeout", "300", manager, "-R", "ftree", "-o", "-F", "/dev/null", "-f", str(log)]
    with simulator(Path(net_file), socket_name):
        done = run(command, environment=environment)
    text = log.read_text(errors="replace") if log.exists() else ""
    if done.status != 0 or "ftree tables configured on all switches" not in text:
        raise NotRun(f"opensm did not come through (status {done.status})")
    counts = {int(rank): int(count)
              for count, rank in re.findall(r"Fabric has (\d+) switches at rank (\d+)", text)}
    return done, [counts[rank] for rank in sorted(counts)]
