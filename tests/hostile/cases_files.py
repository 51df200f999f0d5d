"""Files of odd sizes, shapes and kinds."""

import gzip
import struct
import zlib

from hostile import document, dump

FAR_TOO_MUCH = "the gzip data unpacks to more than 250 times its size, which that of a fabric never does"
TOO_LONG = "the line is longer than 16 MiB, which that of a fabric never is"
DAMAGED = "the gzip data is damaged or cut short: this is the last place that could be unpacked"
NO_NODE = ("no node found, expected a fabric document (JSON) or a topology dump as `ibnetdiscover` "
           "prints it")


def bomb(unit, gigabytes, head=b""):
    """Gzip data of many equal blocks, a thousandth of what it unpacks to."""
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    start = packer.compress(head) + packer.flush(zlib.Z_FULL_FLUSH)
    block = packer.compress(unit * (1 << 24)) + packer.flush(zlib.Z_FULL_FLUSH)
    return b"\x1f\x8b\x08" + bytes(7) + start + block * (gigabytes * 64) + b"\x03\x00" + bytes(8)


def small_files_that_unpack_to_ten_gigabytes_are_not_unpacked(fab):
    fab.file("net.topo", dump())
    for unit in [b"\0", b" ", b"#"] + ([] if fab.is_sanitized else [b"\n"]):
        fab.file("bomb.gz", bomb(unit, 10))
        is_one_line = unit != b"\n"
        fab.refuses("check", "bomb.gz", message=f"bomb.gz:...: {TOO_LONG if is_one_line else FAR_TOO_MUCH}")
        if unit == b"\0":
            for option in ["--ranks", "--flids", "--node-name-map"]:
                fab.refuses("check", option, "bomb.gz", "net.topo", message=f"bomb.gz:...: {TOO_LONG}")
            fab.refuses("convert", "bomb.gz", "-o", "out.json", message=f"bomb.gz:...: {TOO_LONG}")
    fab.file("bomb.gz", bomb(b" ", 10, head=b"{"))
    fab.refuses("check", "bomb.gz", message=f"bomb.gz:...: {FAR_TOO_MUCH}")
    if fab.is_sanitized:
        return  # line ends take it too long
    fab.file("bomb.gz", bomb(b"\n", 10, head=dump()))
    fab.refuses("check", "-", stdin=fab.read("bomb.gz"), message=f"<stdin>:...: {FAR_TOO_MUCH}")


def gzip_in_gzip_is_not_unpacked_twice(fab):
    packed = gzip.compress(bomb(b"\0", 10), 1)
    fab.file("net.gz", packed)
    fab.refuses("check", "net.gz", message="net.gz:1:1: the file is binary, expected a fabric document "
                "(JSON) or a topology dump")


def many_members_take_no_longer_than_their_bytes(fab):
    empty = gzip.compress(b"")
    fab.file("net.gz", empty * 100_000)
    fab.refuses("check", "net.gz", message="net.gz:1:1: the file is empty")
    fab.file("net.gz", empty * 100_000 + gzip.compress(dump()))
    fab.reads("check", "--root-regex", "^root$", "net.gz")
    fab.file("net.gz", b"".join(gzip.compress(dump()[i:i + 1]) for i in range(len(dump()))))
    fab.reads("check", "--root-regex", "^root$", "net.gz")


def heads_of_gzip_without_end_are_passed_over_or_told(fab):
    name = b"\x1f\x8b\x08\x08" + bytes(6)
    fab.file("net.gz", name + b"n" * 30_000_000)
    fab.refuses("check", "net.gz", message=f"net.gz:1:1: {DAMAGED}")
    extra = b"\x1f\x8b\x08\x04" + bytes(6) + struct.pack("<H", 65535) + b"e" * 65535
    fab.file("net.gz", extra + gzip.compress(dump())[10:])
    fab.reads("check", "--root-regex", "^root$", "net.gz")
    for flags in range(0, 256, 5):
        fab.file("net.gz", b"\x1f\x8b\x08" + bytes([flags]) + gzip.compress(dump())[4:])
        result = fab.run("check", "--root-regex", "^root$", "net.gz")
        assert result.status in (1, 2), result


def packed_data_may_be_damaged_anywhere(fab):
    packed = gzip.compress(document().encode(), mtime=0)
    for at in range(10, len(packed), 7):
        fab.file("net.gz", packed[:at] + bytes([packed[at] ^ 0x55]) + packed[at + 1:])
        result = fab.run("check", "--roots", "smdb", "net.gz")
        assert result.status == 2 and result.err.endswith(f"{DAMAGED}\n"), (at, result)
    for at in range(3, len(packed), 7):
        fab.file("net.gz", packed[:at])
        result = fab.run("check", "--roots", "smdb", "net.gz")
        assert result.status == 2 and result.err.endswith(f"{DAMAGED}\n"), (at, result)


def lines_without_end_are_not_read_to_it(fab):
    for start in [b"", b"#", b"Switch ", b'Switch 4 "S-1" # "', b"[1", b"vendid=0x"]:
        fab.refuses("check", "-", stdin=start + b"x" * 40_000_000, message=f"<stdin>:1:16777217: {TOO_LONG}")


def a_document_that_is_cut_anywhere_is_told(fab):
    text = document()
    for size in range(1, len(text), 23 if fab.is_sanitized else 5):
        fab.file("net.json", text[:size])
        result = fab.run("check", "net.json")
        assert result.status == 2 and result.out == b"", result
        assert result.err.startswith("fabscope: net.json:1:") and result.err.count("\n") == 1, result


def replace_bytes(fab, name, text, step, values, *options):
    """Bytes of a file in turn, by each of these values."""
    for at in range(0, len(text), step):
        for byte in values:
            fab.file(name, text[:at] + bytes([byte]) + text[at + 1:])
            result = fab.run("check", *options, name)
            assert result.status in (0, 1) or result.err.count("\n") >= 1, result


def any_byte_of_a_document_may_be_another(fab):
    replace_bytes(fab, "net.json", document().encode(), 61 if fab.is_sanitized else 17,
                  b'\x00\n"\\\xff{9', "--roots", "smdb")


def any_byte_of_a_dump_may_be_another(fab):
    replace_bytes(fab, "net.topo", dump(), 97 if fab.is_sanitized else 29, b'\x00\n"[\xff9',
                  "--root-regex", "^root$")


def nesting_without_end_is_told_with_its_place(fab):
    text = document()
    deep = 1_000_000
    for place in ['"name": "root"', '"numPorts": 4', '"nodes": [', '"links": [', '"aPort": 1']:
        for opening, closing in [("[", "]"), ('{"a":', "}"), ("[" * deep, ""), ('{"a":' * deep, ""),
                                 ("[" * deep, "]" * deep), ('[{"guid":' * deep, "")]:
            value = place.split(":")[0] + ": " + opening + "1" + closing
            fab.file("net.json", text.replace(place, value, 1))
            result = fab.run("check", "net.json")
            assert result.status == 2 and result.out == b"", result
            assert result.err.startswith("fabscope: net.json:1:") and result.err.count("\n") == 1, result


def links_of_a_document_join_two_ports_that_are_there(fab):
    link = {"a": "0x1", "aPort": 4, "b": "0x2", "bPort": 4}
    cases = [({"b": "0x1"}, "port 4 of node 0x0000000000000001 is linked to itself"),
             ({"b": "0x9"}, "unknown node 0x0000000000000009"),
             ({"a": "0xffffffffffffffff"}, "unknown node 0xffffffffffffffff"),
             ({"a": "0x0"}, "unknown node 0x0000000000000000"),
             ({"aPort": 5}, "port 5 of node 0x0000000000000001 does not exist: it has 4 ports"),
             ({"bPort": 255}, "port 255 of node 0x0000000000000002 does not exist: it has 4 ports"),
             ({"aPort": 1}, "port 1 of node 0x0000000000000001 has a link already")]
    for change, message in cases:
        text = document(links=[{"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1}, link | change])
        fab.file("net.json", text)
        fab.refuses("check", "net.json", message=f"net.json:1:{text.rindex('{') + 1}: {message}")


def whatever_is_given_twice_in_a_document_is_told(fab):
    node = {"guid": "0x1", "type": "switch", "name": "root", "numPorts": 4}
    same_port = [{"num": 1}, {"num": 1}]
    for changes, at, message in [
            ({"nodes": [node, node], "links": []}, '"0x1"', "node GUID 0x0000000000000001 is given twice"),
            ({"nodes": [node | {"ports": same_port}]}, '{"num"',
             "port 1 of node 0x0000000000000001 is given twice"),
            ({"aports": [{"ports": [["0x1", 1], ["0x1", 1]]}]}, '{"ports"',
             "port 1 of node 0x0000000000000001 is in an aggregated port already"),
            ({"aports": [{"ports": [["0x1", 1]]}, {"ports": [["0x1", 1]]}]}, '{"ports"',
             "port 1 of node 0x0000000000000001 is in an aggregated port already")]:
        text = document(**changes)
        fab.file("net.json", text)
        fab.refuses("check", "net.json", message=f"net.json:1:{text.rindex(at) + 1}: {message}")
    whole = document(aports=[{"ports": [["0x1", 1]], "asymmetry": 1}])
    for key in ["format", "version", "nodes", "links", "guid", "type", "name", "numPorts", "smdbRank",
                "a", "aPort", "b", "bPort", "aports", "asymmetry"]:
        at = whole.index(f'"{key}": ')
        value = {"nodes": "[]", "links": "[]", "aports": "[]", "format": '"fabscope-fabric"',
                 "type": '"switch"'}.get(key, '"0x7"' if key in ("guid", "a", "b", "name") else "1")
        if key == "nodes":
            value = "[]"
        fab.file("net.json", whole[:at] + f'"{key}": {value}, ' + whole[at:])
        told = at + len(f'"{key}": {value}, ') + 1
        fab.refuses("check", "net.json", message=f'net.json:1:{told}: key "{key}" is given twice')


def links_of_a_dump_join_two_ports_that_are_there(fab):
    switch = 'Switch {} "S-1" # "root"\n'
    for ports, line, message in [
            (4, '[1] "S-1"[1] # "root" lid 1 4xHDR', None), (4, '[1] "S-9"[1] # "x" lid 1 4xHDR', None),
            (4, '[1] "S-1"[5] # "root" lid 1 4xHDR', "2:11: port number out of range: port 5 of node "
             "0x0000000000000001 does not exist: it has 4 ports"),
            (0, '[1] "S-1"[1] # "root" lid 1 4xHDR', "2:2: port number out of range, the node has 0 ports"),
            (254, '[255] "S-1"[1] # "root" lid 1 4xHDR',
             "2:2: port number out of range, the node has 254 ports")]:
        fab.file("net.topo", switch.format(ports) + line + "\n")
        if message:
            fab.refuses("check", "net.topo", message=f"net.topo:{message}")
        else:
            result = fab.run("check", "net.topo")
            assert "net.topo:2: warning: " in result.err and "link left out" in result.err, result


def a_switch_has_up_to_255_ports(fab):
    lines = [f'[{i}]\t"S-2"[{i}]\t# "leaf" lid 1 4xHDR'.encode() for i in range(1, 256)]
    back = [f'[{i}]\t"S-1"[{i}]\t# "root" lid 1 4xHDR'.encode() for i in range(1, 256)]
    fab.file("net.topo", b"\n".join([b'Switch 255 "S-1" # "root"', *lines, b'Switch 255 "S-2" # "leaf"',
                                     *back, b""]))
    result = fab.reads("check", "--root-regex", "^root$", "net.topo")
    assert result.err == "" and b"2 level Fat-Tree" in result.out, result


def records_and_ports_of_a_dump_given_twice_are_told(fab):
    fab.file("net.topo", dump() + dump())
    fab.refuses("check", "net.topo", message="net.topo:... is given twice")
    port = b'[1]\t"S-0000000000000002"[1]\t\t# "leaf-1" lid 1 4xHDR\n'
    fab.file("net.topo", dump().replace(port, port * 1000, 1))
    result = fab.reads("check", "--root-regex", "^root$", "net.topo")
    assert result.err.count("\n") == 11 and "989 more: port given twice\n" in result.err, result.err


def of_lines_about_one_switch_that_holds_which_is_documented(fab):
    fab.file("net.json", document())
    fab.file("ranks.csv", "guid,rank\n" + "0x1,7\n" * 100_000 + "0x1,0\n0x2,1\n0x3,1\n")
    assert b"2 level" in fab.reads("check", "--ranks", "ranks.csv", "net.json").out
    fab.file("flids.csv", "guid,flid\n" + "0x2,7\n" * 100_000)
    fab.reads("check", "--roots", "smdb", "--flids", "flids.csv", "net.json")
    fab.file("names.map", '0x2 "first"\n' + '0x2 "second"\n' * 100_000)
    out = fab.reads("check", "--roots", "smdb", "--node-name-map", "names.map", "net.json").out
    assert b"(first port: 2)" in out and b"second" not in out


def malformed_lines_of_side_files_are_told_with_their_place(fab):
    fab.file("net.json", document())
    for text, place, message in [
            ("", "1:1", 'the file has no header line, expected "guid,rank"'),
            ("\0", "1:1", 'not the header line, expected the columns "guid,rank"'),
            ("guid,guid", "1:1", 'not the header line, expected the columns "guid,rank"'),
            ("rank,rank", "1:1", 'not the header line, expected the columns "guid,rank"'),
            ("guid,rank,rank", "1:1", 'not the header line, expected the columns "guid,rank"'),
            ("guid;rank", "1:1", 'not the header line, expected the columns "guid,rank"'),
            ("guid,rank\n0x1", "2:1", "expected 2 fields as in the header, found 1"),
            ("guid,rank\n" + "," * 1_000_000, "2:1",
             "expected 2 fields as in the header, found 1000001"),
            ("guid,rank\n=1,0", "2:1", "not a GUID, expected 0x and 1 to 16 hexadecimal digits"),
            ("guid,rank\n\x1b[2J,0", "2:1", "not a GUID, expected 0x and 1 to 16 hexadecimal digits"),
            ('guid,rank\n"0x1",0', "2:1", "not a GUID, expected 0x and 1 to 16 hexadecimal digits")]:
        fab.file("ranks.csv", text)
        fab.refuses("check", "--ranks", "ranks.csv", "net.json", message=f"ranks.csv:{place}: {message}")
    for text, place, message in [
            ("\0", "1:1", 'not a GUID, expected a line of the form 0xGUID "name"'),
            ("0x1", "1:4", "expected a name in double quotes and nothing behind it"),
            ('0x1 "', "1:5", "expected a name in double quotes and nothing behind it"),
            ('0x1 "a" b', "1:5", "expected a name in double quotes and nothing behind it"),
            ('0x1 "a"b"', "1:5", "expected a name in double quotes and nothing behind it"),
            ("0x11111111111111111 \"a\"", "1:1", 'not a GUID, expected a line of the form 0xGUID "name"')]:
        fab.file("names.map", text)
        fab.refuses("check", "--node-name-map", "names.map", "net.json",
                    message=f"names.map:{place}: {message}")


def other_line_ends_are_no_line_ends(fab):
    for end in [b"\r", b"\x00", b"\x0b", b"\x0c", b"\xc2\x85", b"\xe2\x80\xa8", b"\xe2\x80\xa9", b"\x1e"]:
        fab.file("net.topo", dump().replace(b"\n", end))
        result = fab.run("check", "net.topo")
        assert result.status == 2 and result.err.count("\n") == 1, result
        assert result.err.startswith("fabscope: net.topo:1:"), result


def a_hundred_thousand_switches_without_a_cable_are_no_tree(fab):
    lines = "".join(f'Switch 255 "S-{i:x}" # "s"\n' for i in range(1, 100_001))
    fab.file("net.topo", lines)
    result = fab.run("check", "net.topo")
    assert result.status == 2 and "Cannot build Fat-Tree topology" in result.err, result.err


def announcements_that_are_not_kept_cost_nothing(fab):
    for text, message in [
            ('{"format": "fabscope-fabric", "version": 1, "nodes": [', None),
            ("# 10000000 nodes\nChassis 10000000 (guid 0x1)\n", NO_NODE),
            ("{", None), ("{}", '1:1: the document has no "format"')]:
        fab.file("net", text)
        result = fab.run("check", "net")
        assert result.status == 2 and result.err.count("\n") == 1, result
        assert message is None or result.err.endswith(f"{message}\n"), result.err


def things_that_are_no_files_are_told(fab):
    (fab.folder / "folder").mkdir()
    (fab.folder / "loop").symlink_to("loop")
    (fab.folder / "gone").symlink_to("nowhere")
    for name, message in [("folder", "Is a directory"), ("loop", "Too many levels of symbolic links"),
                          ("gone", "No such file or directory"), ("n" * 300, "File name too long"),
                          ("/proc/self/mem", "Input/output error"), ("folder/x", "No such file or directory"),
                          ("/dev/null/x", "Not a directory")]:
        fab.refuses("check", name, message=f"{name}: {message}")
    fab.refuses("check", "/dev/null", message="/dev/null:1:1: the file is empty")
    fab.refuses("check", "/dev/zero", message=f"/dev/zero:1:16777217: {TOO_LONG}")
