"""Names of nodes, which any host may set."""

import re
import xml.etree.ElementTree as ElementTree

from hostile import Page, csv_of, document, dot_labels, dump, graphml_names, json_of

SVG_TITLE = "{http://www.w3.org/2000/svg}title"

ESCAPES = [b"\x1b[2J", b"\x1b]0;title\x07", b"\x1b[31mred\x1b[0m", b"a\rb", b"a\x00b", b"\x08\x08",
           b"\x7f", b"\x0b\x0c", b"\x1bPq\x1b\\", b"\x0e\x0f", bytes(range(1, 10)),
           bytes(range(11, 32))]
MARKUP = [b"<script>alert(1)</script>", b"]]>", b"<!--", b"&amp;", b"&#x1b;", b"<?xml?>", b"%00",
          b"{{7*7}}", b"${HOME}", b"$(reboot)", b"`reboot`", b"'; reboot; '", b"a|b", b"../../etc"]
QUOTES = [b'"', b'""', b'a"b', b'\\"', b"\\", b"\\\\", b"\\N", b"'", b'"];', b'"},{"a":"', b"a,b",
          b'" lid 5 4xSDR', b'# "x"', b"[1]", b"-- b"]
UNICODE = [b"\xc2\x80", b"\xc2\x9b31m", b"\xe2\x81\xa6a\xe2\x81\xa9", b"\xe2\x80\xa8", b"\xe2\x80\xa9", b"\xc2\x85", b"\xe2\x80\xae", b"\xef\xbb\xbf",
           b"\xef\xbf\xbe", b"\xef\xbf\xbf", b"\xf0\x9f\x90\xa7", b"\xf4\x8f\xbf\xbf", b"e\xcc\x81"]
# Lone continuation, no continuation, overlong forms, surrogates, beyond the last code point.
NO_UTF8 = [b"\x80", b"\x9b31m", b"\xff", b"\xfe\xff", b"\xc3", b"\xe2\x80", b"\xf0\x9f\x90", b"\xc0\x80",
           b"\xc1\xbf", b"\xe0\x80\x80", b"\xe0\x9f\xbf", b"\xf0\x80\x80\x80", b"\xed\xa0\x80",
           b"\xed\xbf\xbf", b"\xed\xa0\xbd\xed\xb0\xa7", b"\xf4\x90\x80\x80", b"\xf8\x88\x80\x80\x80",
           b"\xc0\xaf", b"\xc0\xa2"]
FORMULAS = [b"=1+1", b"=cmd|' /C calc'!A0", b"+1", b"-1", b"@SUM(A1)", b"\t=1", b"%0A=1"]
BLANKS = [b"", b" ", b"  a  ", b"\t", b"a\tb"]
ALL = ESCAPES + MARKUP + QUOTES + UNICODE + NO_UTF8 + FORMULAS + BLANKS


def is_control(c):
    return c < "\x20" or "\x7f" <= c <= "\x9f" or "\udc80" <= c <= "\udc9f"


def is_bidirectional(c):
    return "\u202a" <= c <= "\u202e" or "\u2066" <= c <= "\u2069"


def clean(name):
    """As a name is kept."""
    text = name.decode("utf-8", errors="surrogateescape")
    text = "".join("?" if is_control(c) else c for c in text)
    return text.encode("utf-8", errors="surrogateescape")


def seen(name):
    """As people see a name that is kept."""
    text = clean(name).decode("utf-8", errors="surrogateescape")
    text = "".join("?" if is_bidirectional(c) else c for c in text)
    return text.encode("utf-8", errors="surrogateescape")


def as_text(name):
    """As JSON tells a name: each byte of no valid sequence is U+FFFD."""
    text = clean(name).decode("utf-8", errors="surrogateescape")
    return "".join("\ufffd" if "\udc80" <= c <= "\udcff" else c for c in text)


def seen_text(name):
    """As the page and the graphs show it."""
    return as_text(seen(name))


def of_leaves(name):
    """Both ends of the wrong cable have the name, with a digit behind it."""
    return [b"root", name + b"1", name + b"2"]


def every_name_is_reported_without_its_control_characters(fab):
    fab.file("old", "")
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        result = fab.run("check", "--root-regex", "^root$", "--dump", "-", "--csv", "out.csv",
                         "--log", "out.log", "net.topo")
        assert result.status == 1, (name, result.err)
        shown = [seen(name) + digit for digit in (b"1", b"2")]
        if b"/" not in name:  # what stands behind it may be of the chassis
            assert b"\t" + shown[0] in result.out, (name, result.out)
            assert b"(%s port: 2) and (%s port: 2)" % tuple(shown) in result.out, (name, result.out)
        assert clean(fab.read("out.log").replace(b"\n", b"")) == fab.read("out.log").replace(b"\n", b"")


def every_name_leaves_csv_well_formed(fab):
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        text = fab.reads("check", "--root-regex", "^root$", "--csv", "-", "net.topo").out
        records = csv_of(text)
        assert len(records) == 1, (name, text)
        description = records[0][5].encode("utf-8", errors="surrogateescape")
        assert b"/" in name or clean(name) in description, (name, text)
        # A spreadsheet would run it.
        assert not any(field.startswith(("=", "+", "-", "@", "\t", "\r")) for field in records[0])


def every_name_leaves_json_well_formed(fab):
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        result = json_of(fab.reads("check", "--root-regex", "^root$", "--json", "-", "net.topo").out)
        assert len(result["records"]) == 1
        assert b"/" in name or as_text(name) in result["records"][0]["description"], (name, result)


def every_name_is_data_in_the_page(fab):
    fab.file("net.topo", dump(of_leaves(b"leaf")))
    harmless = Page(fab.reads("check", "--root-regex", "^root$", "--html", "-", "net.topo").out)
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        page = Page(fab.reads("check", "--root-regex", "^root$", "--html", "-", "net.topo").out)
        assert page.elements == harmless.elements, (name, page.elements)
        names = [switch[1] for switch in json_of(page.data)["switches"]]
        assert b"/" in name or seen_text(name) + "1" in names, (name, names)


def every_name_is_words_in_the_picture(fab):
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        text = fab.reads("check", "--root-regex", "^root$", "--svg", "-", "net.topo").out
        titles = [element.text for element in ElementTree.fromstring(text).iter(SVG_TITLE)]
        # XML has no such characters.
        shown = seen_text(name).replace("\ufffe", "\ufffd").replace("\uffff", "\ufffd")
        assert b"/" in name or shown + "1" in titles, (name, titles)


def every_name_comes_through_every_format(fab):
    for name in fab.some(ALL):
        fab.file("net.topo", dump(of_leaves(name)))
        fab.reads("convert", "net.topo", "-o", "net.json")
        nodes = json_of(fab.read("net.json"))["nodes"]
        assert as_text(name + b"1") in [node["name"] for node in nodes], (name, nodes)
        labels = dot_labels(fab.reads("convert", "net.topo", "--format", "dot", "-o", "-").out)
        # Graphviz makes XML of its labels, which has no such characters.
        xml = seen_text(name + b"1").replace("\ufffe", "\ufffd").replace("\uffff", "\ufffd")
        label = xml.replace("\\", "\\\\").replace('"', '\\"').replace("&", "&amp;")
        assert label in labels, (name, labels)
        names = graphml_names(fab.reads("convert", "net.topo", "--format", "graphml", "-o", "-").out)
        assert xml in names, (name, names)
        fab.reads("convert", "net.topo", "-o", "net.net")
        # What was written is read as the same.
        fab.reads("convert", "net.topo", "-o", "again.topo")
        fab.reads("convert", "again.topo", "-o", "again.json")
        assert fab.read("again.json") == fab.read("net.json"), name
        fab.reads("convert", "net.json", "-o", "other.json")
        assert fab.read("other.json") == fab.read("net.json"), name


def every_name_leaves_the_topology_of_slurm_well_formed(fab):
    line = re.compile(rb"SwitchName=[A-Za-z0-9_-]+ (Nodes|Switches)=[A-Za-z0-9_.,\[\]-]+")
    for name in fab.some(ALL):
        for names in (of_leaves(name), [b"root", b"leaf-1", b"leaf-2", name + b"3", b"host-2"]):
            fab.file("net.topo", dump(names))
            lines = fab.reads("convert", "net.topo", "--root-regex", "^root$", "--format", "slurm",
                              "-o", "-").out.splitlines()
            switches = [text for text in lines if not text.startswith(b"# ")]
            assert all(line.fullmatch(text) for text in switches), (name, lines)
            # Without the adapter of a name that is none its leaf is left out, too.
            assert len(switches) in (2, 3), (name, lines)


def every_name_may_stand_in_a_document(fab):
    for name in fab.some(ALL):
        try:
            text = name.decode()
        except UnicodeDecodeError:
            continue
        nodes = [{"guid": f"0x{i}", "type": "switch", "numPorts": 4, "name": of} for i, of in
                 enumerate(["root", text + "1", text + "2"], 1)]
        fab.file("net.json", document(nodes=nodes))
        result = json_of(fab.reads("check", "--root-regex", "^root$", "--json", "-", "net.json").out)
        assert b"/" in name or as_text(name) in result["records"][0]["description"], (name, result)


def bytes_that_are_no_utf8_are_told_in_a_document(fab):
    whole = document().encode()
    at = whole.index(b"leaf-1")
    for name in NO_UTF8:
        fab.file("net.json", whole.replace(b"leaf-1", name, 1))
        fab.refuses("check", "net.json",
                    message=f"net.json:1:{at + 1}: malformed JSON: not valid UTF-8")


def lone_surrogates_of_a_document_are_no_text(fab):
    for escape in ["\\ud800", "\\udfff", "\\ud800\\ud800", "\\udc27\\ud83d", "\\uD83D", "\\u12", "\\x1b"]:
        fab.file("net.json", document().replace("leaf-1", escape, 1))
        result = fab.run("check", "--roots", "smdb", "--json", "-", "net.json")
        if result.status == 2:
            assert result.err.endswith(": malformed JSON: bad escape in a string\n"), result.err
        else:
            json_of(result.out)


def every_name_of_a_map_is_reported_without_its_control_characters(fab):
    fab.file("net.topo", dump())
    for name in fab.some(ALL):
        if b'"' in name:
            continue
        fab.file("names.map", b'0x2 "%s1"\n0x3 "%s2"\n' % (name, name))
        out = fab.reads("check", "--root-regex", "^root$", "--node-name-map", "names.map",
                        "net.topo").out
        assert b"/" in name or seen(name) + b"1" in out, (name, out)


def a_name_of_a_megabyte_is_cut(fab):
    for name in [b"x" * (1 << 20), b"9" * (1 << 20), b"\xff" * (1 << 20), b'"' * (1 << 20)]:
        fab.file("net.topo", dump(of_leaves(name)))
        out = fab.reads("check", "--root-regex", "^root$", "net.topo").out
        assert b"(%s port: 2) and (%s port: 2)" % (name[:256], name[:256]) in out
        csv_of_it = fab.reads("check", "--root-regex", "^root$", "--csv", "-", "net.topo").out
        assert csv_of_it.count(b"\n") == 2
        json_of(fab.reads("check", "--root-regex", "^root$", "--json", "-", "net.topo").out)
        for form in ["document", "ibnetdiscover", "ibsim", "dot", "graphml"]:
            fab.reads("convert", "net.topo", "--format", form, "-o", "-")
        fab.reads("convert", "net.topo", "--format", "slurm", "--root-regex", "^root$", "-o", "-")


def names_of_files_are_told_without_their_control_characters(fab):
    for name, told in [("\x1b[2J.topo", "?[2J.topo"), ("a\nfabscope: b", "a?fabscope: b"),
                       ("\r.topo", "?.topo")]:
        fab.refuses("check", name, message=f"{told}: No such file or directory")
        fab.refuses("check", "--ranks", name, fab.file("net.topo", dump()),
                    message=f"{told}: No such file or directory")
        fab.refuses("check", "--equal", name, "net.topo",
                    message=f'--equal: "{told}" is not allowed, expected a whole number from 1 to '
                            "2147483647 (see fabscope check --help)")
        fab.refuses("convert", "net.topo", "-o", f"{name}/out.json",
                    message=f"cannot write {told}/out.json: No such file or directory")
        fab.reads("check", "--root-regex", "^root$", "--json", f"{name}.json", "net.topo")
