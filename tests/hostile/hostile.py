"""What the cases of hostile input share: one run of the command, and all that must hold of any run."""

import csv
import io
import json
import os
import re
import resource
import shutil
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree
from collections import namedtuple
from html.parser import HTMLParser
from pathlib import Path

Result = namedtuple("Result", "status out err")

CONTROL = re.compile(rb"[\x00-\x08\x0b-\x1f\x7f]")  # but for tabs and line ends
SECONDS = 30
MEGABYTES = 400


class Fabscope:
    """Runs the command in a folder of its own, which is gone at the end."""

    def __init__(self, binary):
        self.binary = str(Path(binary).resolve())
        # The sanitizer takes several times the memory, and address space without end.
        self.is_sanitized = b"__asan_init" in Path(binary).read_bytes()
        self.folder = Path(tempfile.mkdtemp())
        self.inputs = 0
        self.stack = None  # bytes; none: as large as that of this process

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def some(self, items):
        """All of them; with the sanitizer, which takes its time to start, some."""
        return items[::13] if self.is_sanitized else items

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return name

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return sorted(os.listdir(self.folder))

    def run(self, *words, stdin=b"", environment=None):
        """One run, which ends by itself, soon, within bounds of memory, and says nothing that a
        terminal would obey."""
        self.inputs += 1
        command = [self.binary, *words]
        with subprocess.Popen(command, cwd=self.folder, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment,
                              preexec_fn=self.limit) as process:
            try:
                out, err = process.communicate(stdin, timeout=SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                raise AssertionError(f"{shown(words)}: not done after {SECONDS} s") from None
        assert process.returncode in (0, 1, 2), \
            f"{shown(words)}: ended with {process.returncode}\n{err[-2000:].decode(errors='replace')}"
        for text in (out, err):
            found = CONTROL.search(text)
            assert not found, f"{shown(words)}: a control character at {found.start()}: " \
                f"{text[max(0, found.start() - 50):found.start() + 50]}"
        for line in err.splitlines():
            assert line.startswith(b"fabscope: "), f"{shown(words)}: {line}"
        return Result(process.returncode, out, err.decode(errors="replace"))

    def limit(self):
        if not self.is_sanitized:
            resource.setrlimit(resource.RLIMIT_AS, (MEGABYTES << 20, MEGABYTES << 20))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if self.stack is not None:
            resource.setrlimit(resource.RLIMIT_STACK, (self.stack, self.stack))

    def refuses(self, *words, message, stdin=b""):
        """Status 2, this one line ("..." stands for any text), nothing on standard output, no file."""
        before = self.names()
        result = self.run(*words, stdin=stdin)
        told = f"{shown(words)}:\n{result.err[:2000]}"
        assert result.status == 2, f"status {result.status}: {told}"
        assert result.out == b"", told
        start, *end = f"fabscope: {message}\n".split("...")
        is_expected = result.err.startswith(start) and result.err.endswith(end[-1]) if end else \
            result.err == start
        assert is_expected and result.err.count("\n") == 1, f"{told}expected: {message}"
        assert self.names() == before, self.names()

    def reads(self, *words, stdin=b""):
        """The work is done, with or without findings."""
        result = self.run(*words, stdin=stdin)
        assert result.status in (0, 1), f"{shown(words)}: {result.err[:2000]}"
        return result


def shown(words):
    text = " ".join(words)
    return text if len(text) < 300 else text[:300] + " ..."


# --- Fabrics.

SWITCHES = ["root", "leaf-1", "leaf-2"]


def dump(names=None, lines=()):
    """A root over two leaves that are cabled to each other, a host on each. Names are bytes."""
    given = list(names or [])
    names = given + [name.encode() for name in [*SWITCHES, "host-1", "host-2"][len(given):]]
    cables = {0: [(1, 1, 1), (2, 2, 1)], 1: [(1, 0, 1), (2, 2, 2), (3, 3, 1)],
              2: [(1, 0, 2), (2, 1, 2), (3, 4, 1)], 3: [(1, 1, 3)], 4: [(1, 2, 3)]}
    text = b"vendid=0x0\n"
    for node, ports in cables.items():
        kind, letter = ("Switch", "S") if node < 3 else ("Ca", "H")
        text += b'%s\t4 "%s-%016x"\t\t# "%s"%s\n' % (
            kind.encode(), letter.encode(), node + 1, names[node],
            b" base port 0 lid 1 lmc 0" if node < 3 else b"")
        for port, peer, peer_port in ports:
            peer_letter = b"S" if peer < 3 else b"H"
            text += b'[%d]\t"%s-%016x"[%d]\t\t# "%s" lid 1 4xHDR\n' % (
                port, peer_letter, peer + 1, peer_port, names[peer])
    return text + b"".join(lines)


def document(**changes):
    """The same as a document; changes are of its members."""
    whole = {"format": "fabscope-fabric", "version": 1}
    whole["nodes"] = [{"guid": f"0x{i + 1}", "type": "switch", "name": name, "numPorts": 4,
                       "smdbRank": min(i, 1)} for i, name in enumerate(SWITCHES)]
    whole["links"] = [{"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1},
                      {"a": "0x1", "aPort": 2, "b": "0x3", "bPort": 1},
                      {"a": "0x2", "aPort": 2, "b": "0x3", "bPort": 2}]
    return json.dumps(whole | changes)


# --- Readers of what is written, which fail where it is not well formed.


def json_of(text):
    return json.loads(text.decode("utf-8", errors="strict"))


def csv_of(text):
    """The records; each is a line of six fields."""
    lines = text.decode("utf-8", errors="surrogateescape").split("\n")
    assert lines[0] == "Scope,NodeId,PortId,PortNumber,Event,Description" and lines[-1] == "", lines
    records = [row for line in lines[1:-1] for row in csv.reader(io.StringIO(line), strict=True)]
    assert len(records) == len(lines) - 2 and all(len(row) == 6 for row in records), lines
    return records


class Page(HTMLParser):
    """Reads a page as browsers do: its elements with their attributes, and its data."""

    def __init__(self, text):
        super().__init__()
        self.elements = []
        self.data = b""
        self.feed(text.decode())
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, attrs))

    def handle_data(self, data):
        if self.elements and ("id", "data") in self.elements[-1][1] and not self.data:
            self.data = data.encode()


def graphml_names(text):
    root = ElementTree.fromstring(text)
    space = "{http://graphml.graphdrawing.org/xmlns}"
    return [node.find(f"{space}data[@key='name']").text or ""
            for node in root.iter(f"{space}node")]


DOT_TOKEN = re.compile(r'\s*(?:"((?:[^"\\]|\\.)*)"|([A-Za-z_]\w*)|(-?[\d.]+)|(--|[{}\[\];=,]))', re.S)


def dot_labels(text):
    """The labels, from statements of the forms: id [key=value, ...]; and id -- id [...];"""
    text = text.decode("utf-8", errors="strict")
    tokens, at = [], 0
    while text[at:].strip():
        match = DOT_TOKEN.match(text, at)
        assert match, text[at:at + 100]
        tokens.append((match.lastindex, match[match.lastindex]))
        at = match.end()
    assert tokens[:3] == [(2, "graph"), (2, "fabric"), (4, "{")] and tokens[-1] == (4, "}"), tokens[:3]
    labels = []
    for i, token in enumerate(tokens):
        if token == (2, "label") and tokens[i - 2][0] == 1:
            assert tokens[i + 1] == (4, "=") and tokens[i + 2][0] == 1, tokens[i:i + 3]
            labels.append(tokens[i + 2][1])
    return labels
