"""A real Slurm on the loopback interface, with a configuration that is thrown away.

Needs the Debian packages slurmctld, slurmd and slurm-client. Nothing of the machine's own Slurm or
munge is used: no key, no configuration, no port that is known.
"""

import getpass
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 60  # that anything may take
SKIPPED = 77

# What the daemon says of a first start, of parts that no test needs, and of a busy machine.
USUAL_ERRORS = ("NOTE: Trying backup", "Could not open", "mpi/pmix", "MPI: Cannot create context",
                "job_container", "cgroup", "high latency")


def skip_without(*programs):
    missing = [program for program in programs if shutil.which(program, path=SEARCHED) is None]
    if missing:
        print(f"skipped: {', '.join(missing)} not installed")
        sys.exit(SKIPPED)


SEARCHED = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"


def stop_on_signals():
    """Signals end the script by an exception, so that all it has started is stopped."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit("stopped by a signal"))


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Cluster:
    """A slurmctld of its own. `lines` of its configuration tell its nodes."""

    def __init__(self, lines, topology=None):
        self.lines = lines
        self.topology = topology
        self.port = free_port()
        self.running = []

    def __enter__(self):
        self.scratch = tempfile.TemporaryDirectory(prefix="fabscope-slurm-")
        self.folder = Path(self.scratch.name)
        (self.folder / "state").mkdir()
        settings = {
            "ClusterName": "fabscope", "SlurmctldHost": "localhost(127.0.0.1)",
            "SlurmctldPort": self.port, "SlurmUser": getpass.getuser(),
            "SlurmdUser": getpass.getuser(), "CommunicationParameters": "NoCtldInAddrAny",
            "AuthType": "auth/none", "CredType": "cred/none", "MailProg": "/bin/true",
            "StateSaveLocation": self.folder / "state", "SlurmdSpoolDir": self.folder / "spool",
            "SlurmctldPidFile": self.folder / "slurmctld.pid",
            "SlurmdPidFile": self.folder / "slurmd.pid", "SlurmctldTimeout": 10,
            "ProctrackType": "proctrack/pgid", "TaskPlugin": "task/none",
            "SelectType": "select/cons_tres", "SelectTypeParameters": "CR_Core",
            "ReturnToService": 2,
            "TopologyPlugin": "topology/tree" if self.topology else "topology/none"}
        lines = [f"{key}={value}" for key, value in settings.items()] + self.lines
        (self.folder / "slurm.conf").write_text("\n".join(lines) + "\n")
        if self.topology:
            (self.folder / "topology.conf").write_bytes(self.topology)
        self.environment = {**os.environ, "PATH": SEARCHED, "LC_ALL": "C",
                            "SLURM_CONF": str(self.folder / "slurm.conf")}
        try:
            self.start("slurmctld", "-D", "-c")
            self.wait_for("slurmctld", lambda: "UP" in self.try_run("scontrol", "ping").stdout)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if len(self.running) > 1:
            self.try_run("scancel", "--full", f"--user={getpass.getuser()}")
        for process in reversed(self.running):
            process.terminate()
        for process in self.running:
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.scratch.cleanup()

    def start(self, program, *arguments):
        """A daemon, which dies with this script even when the script is killed."""
        log = self.folder / f"{program}.log"
        self.running.append(subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", program, *arguments, "-L", log],
            env=self.environment, cwd=self.folder, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))

    def run_jobs(self, node):
        """Starts the compute node of that name, which is this machine."""
        self.start("slurmd", "-D")
        self.wait_for(node, lambda: "idle" in self.try_run("sinfo", "-hN", "-o", "%T").stdout)

    def wait_for(self, what, is_there):
        """As long as all that was started is running."""
        end = time.monotonic() + SECONDS
        while not is_there():
            logs = "".join(path.read_text() for path in sorted(self.folder.glob("*.log")))
            for process in self.running:
                if process.poll() is not None:
                    raise RuntimeError(f"{process.args[3]} has ended:\n{logs}")
            if time.monotonic() > end:
                raise RuntimeError(f"no {what} in {SECONDS} s:\n{logs}")
            time.sleep(0.05)

    def try_run(self, *command):
        return subprocess.run(command, env=self.environment, cwd=self.folder, timeout=SECONDS,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)

    def run(self, *command):
        run = self.try_run(*command)
        if run.returncode != 0:
            raise RuntimeError(f"{command} failed:\n{run.stdout}{run.stderr}")
        return run.stdout

    def complaints(self):
        """What slurmctld does not like about what it was given."""
        log = (self.folder / "slurmctld.log").read_text().lower()
        return [line for line in log.splitlines() if ("error" in line or "warning" in line)
                and not any(usual.lower() in line for usual in USUAL_ERRORS)]
