"""Counts the instructions of a run of the command.

What a processor can do must not decide about the count. So valgrind counts, which has one idea of
every processor, and the C library is told to leave alone those routines that newer ones have.
"""

import os
import re
import shutil
import subprocess
import sys

NO_NEWER_ROUTINES = ",".join(f"-{feature}" for feature in (
    "AVX2", "AVX_Fast_Unaligned_Load", "BMI1", "BMI2", "ERMS", "FSRM", "LZCNT", "MOVBE", "POPCNT",
    "SSE4_1", "SSE4_2", "SSSE3", "RTM", "XSAVEC", "Prefer_No_VZEROUPPER"))


def instructions(command, profile):
    """Of the whole process, and the process; the profile tells callgrind_annotate where they are
    spent."""
    if not shutil.which("valgrind"):
        sys.exit("counting instructions needs the package valgrind: ./dev deps test")
    # Nothing but these: what else is in the environment would be counted as well.
    environment = {"PATH": os.environ["PATH"], "LC_ALL": "C",
                   "GLIBC_TUNABLES": f"glibc.cpu.hwcaps={NO_NEWER_ROUTINES}"}
    done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}",
                           *command], env=environment, capture_output=True)
    totals = re.search(r"^totals: (\d+)$", profile.read_text(errors="replace"), re.M)
    return int(totals[1]), done
