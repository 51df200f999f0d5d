"""What is known of the fuzzers: what each does, and how it is run."""

import subprocess
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
ARTIFACTS = Path("build/fuzz")  # from ROOT: corpora, logs, and inputs that are findings


@dataclass(frozen=True)
class Fuzzer:
    name: str
    does: str  # as the page of reliability tells it
    seeds: tuple = ()  # folders besides fuzz/corpus/NAME
    dictionaries: tuple = ()
    options: tuple = ()


FUZZERS = {fuzzer.name: fuzzer for fuzzer in [
    Fuzzer("line_readers", "random bytes as single lines, words and characters",
           dictionaries=("topology_dump", "side_files"),
           # Of so little code more is learned from more executions than from how often loops go.
           options=("-max_len=96", "-use_counters=0", "-reduce_inputs=0")),
    Fuzzer("topology_dump", "random bytes as topology dumps", seeds=("tests/data/lines",),
           dictionaries=("topology_dump",)),
    Fuzzer("fabric_document", "random bytes as fabric documents",
           dictionaries=("fabric_document",)),
    Fuzzer("side_files", "random bytes as ranks, FLID and name files",
           dictionaries=("side_files",)),
    Fuzzer("input", "one text from memory, files and pipes, packed or not",
           seeds=("tests/data/lines",)),
    Fuzzer("stage", "random fabrics of any cabling through the stage"),
    Fuzzer("check", "damaged trees through whole checks, in different forms that must give the same "
           "reports"),
    Fuzzer("repair", "repairs of damaged trees, judged by independent code"),
    Fuzzer("commands", "damaged files of all kinds through check, repair and diff with every "
           "output, each read back by independent code", options=("-max_len=16384",)),
    Fuzzer("difference", "differences between two fabrics, their reports compared with each other"),
    Fuzzer("writers", "random fabrics written in every format and read back"),
]}


def seeds_of(name):
    return [f"fuzz/corpus/{name}", *FUZZERS[name].seeds]


def corpus_of(name):
    """Where a fuzzer keeps what it has found worth keeping. It is there from now on."""
    corpus = ARTIFACTS / "corpus" / name
    (ROOT / corpus).mkdir(parents=True, exist_ok=True)
    return str(corpus)


def command_of(name, build="fuzz"):
    """The program and the options that every run of it has."""
    fuzzer = FUZZERS[name]
    # What hangs is a finding. A busy machine may take seconds for what needs milliseconds.
    # The entropic choice of inputs takes several times as long as whole checks do.
    command = [f"build/{build}/fuzz/{name}_fuzzer", "-timeout=100", "-entropic=0",
               "-print_final_stats=1", "-verbosity=0", f"-artifact_prefix={ARTIFACTS}/{name}-", *fuzzer.options]
    if fuzzer.dictionaries:
        # There can be one dictionary only.
        words = "".join((ROOT / "fuzz" / f"{each}.dict").read_text()
                        for each in fuzzer.dictionaries)
        (ROOT / ARTIFACTS / f"{name}.dict").write_text(words)
        command.append(f"-dict={ARTIFACTS}/{name}.dict")
    return command


# So much freed memory is kept from being used again; more finds no more here, but takes time.
ENVIRONMENT = {"ASAN_OPTIONS": "quarantine_size_mb=16"}


def merge(name, command):
    """Leaves of a fuzzer's corpus, with its seeds, the smallest inputs that reach as much."""
    corpus = ROOT / corpus_of(name)
    merged = corpus.with_name(f"{name}.merged")
    subprocess.run(["rm", "-rf", merged], check=True)
    merged.mkdir()
    answer = subprocess.run([*command, "-merge=1", str(merged), str(corpus), *seeds_of(name)],
                            cwd=ROOT, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            text=True, check=False)
    if answer.returncode != 0:
        raise RuntimeError(f"the corpus of {name} cannot be merged:\n{answer.stderr}")
    subprocess.run(["rm", "-rf", corpus], check=True)
    merged.rename(corpus)
