#!/usr/bin/env python3
"""Measures what the hardening flags cost: hardening.py HARDENED PLAIN, two builds of fabscope.

Both check the same dumps, in turns, on one core.
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
from processes import interleaved, machine, milliseconds, pin_to_one_core, table  # noqa: E402

TREES = {"3,456 hosts, 200 hosts missing": ["--radix", "24", "--fault", "missing-host=200"],
         "65,536 hosts": ["--radix", "64"]}
ROUNDS = 31


def main():
    hardened, plain = (str(Path(path).resolve()) for path in sys.argv[1:])
    head = machine()
    print(f"{head}; core {pin_to_one_core()}.\n")
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        for name, options in TREES.items():
            dump = os.path.join(folder, "fabric.topo")
            subprocess.run([hardened, "generate", "--levels", "3", *options,
                            "--format", "ibnetdiscover", "-o", dump], check=True)
            done = interleaved({program: [program, "check", dump]
                                for program in (hardened, plain)}, ROUNDS)
            rows.append([name, milliseconds(done[plain].cpu), milliseconds(done[hardened].cpu),
                         f"{done[hardened].cpu / done[plain].cpu:.3f}"])
    table(["dump", "plain", "hardened", "ratio"], rows)


main()
