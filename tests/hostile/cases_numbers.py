"""Numbers: out of range, beyond every width, and in forms that no number has."""

from hostile import document, dump

EDGES = [str(2**bits + more) for bits in (8, 16, 31, 32, 63, 64, 128) for more in (-1, 0, 1)]
FORMS = ["-1", "+1", "1e1", "1E400", "1.5", "0x1", "", " ", "1 1", "1,1", "--1", "nan", "inf", "one",
         "1k", "\u0661", "9" * 10000]
SPELLINGS_OF_ONE = ["01", "001"]  # a decimal number may have zeros in front


def is_in(text, least, greatest):
    return text.isascii() and text.isdigit() and least <= int(text[:100]) <= greatest and \
        len(text) < 100


def numbers_outside(least, greatest):
    return [text for text in EDGES + FORMS if not is_in(text, least, greatest)]


def port_numbers_of_a_dump_are_1_to_255(fab):
    line = 4
    for number in fab.some(["0", "-0"] + numbers_outside(1, 255)):
        if not number[:1].isascii() or not number[:1].isdigit():
            continue  # only a bracket and a digit begin a port line
        for text, column in [(f'[{number}]\t"S-2"[1]\t# "a" lid 1 4xHDR', 2),
                             (f'[3]\t"S-2"[{number}]\t# "a" lid 1 4xHDR', 11)]:
            fab.file("net.topo", b'vendid=0x0\nSwitch 255 "S-1" # "root"\n\n' + text.encode() + b"\n")
            result = fab.run("check", "net.topo")
            assert result.status == 2 and result.out == b""
            expected = [f"fabscope: net.topo:{line}:{column}: port number out of range, expected 1 to 255\n"]
            if not number.isdigit():  # 1e1: the number is 1, and then there is no bracket
                digits = len(number) - len(number.lstrip("0123456789"))
                expected.append(f"fabscope: net.topo:{line}:{column + digits}: "
                                'expected "]" behind the port\n')
            assert result.err in expected, (number[:50], result.err)


def peer_port_numbers_without_a_digit_are_told(fab):
    for number in ["", "-1", "+1", " 1", "x", "\u0661"]:
        fab.file("net.topo", f'Switch 255 "S-1" # "root"\n[3]\t"S-2"[{number}]\t# "a" lid 1 4xHDR\n')
        fab.refuses("check", "net.topo",
                    message="net.topo:2:11: port number out of range, expected 1 to 255")


def port_counts_of_a_dump_are_0_to_255(fab):
    for number in numbers_outside(0, 255):
        if " " in number or not number:
            continue  # two words, or none
        kind = "Switch"
        fab.file("net.topo", f'{kind}\t{number} "S-1" # "root"\n')
        fab.refuses("check", "net.topo",
                    message="net.topo:1:8: not a number of ports, expected 0 to 255")


def guids_of_a_dump_have_1_to_16_digits(fab):
    for guid in ["", "g", "1" * 17, "0" * 17, "f" * 100000, "-1", "+1", "0x1", " 1", "1 ", "1.", "\u0661"]:
        fab.file("net.topo", f'Switch 1 "S-{guid}" # "root"\n')
        fab.refuses("check", "net.topo",
                    message="net.topo:1:13: not a GUID, expected 1 to 16 hexadecimal digits")
        fab.file("net.topo", f'Switch 1 "S-1" # "root"\n[1] "S-{guid}"[1] # "a" lid 1 4xHDR\n')
        fab.refuses("check", "net.topo",
                    message="net.topo:2:8: not a GUID, expected 1 to 16 hexadecimal digits")
    for guid in ["", "0x", "g", "0x" + "1" * 17, "-0x1", "+0x1", "0x1.", "0x0x1"]:
        for key in ["vendid", "devid", "sysimgguid", "switchguid", "caguid", "rtguid"]:
            fab.file("net.topo", f"{key}={guid}\n" + dump().decode())
            fab.refuses("check", "net.topo", message=f"net.topo:1:{len(key) + 2}: "
                        "expected 0x and 1 to 16 hexadecimal digits")


def lids_widths_and_speeds_of_a_dump_may_be_anything(fab):
    for text in fab.some(EDGES + FORMS):
        for line in [f'" lid {text} 4xHDR', f'" lid 1 {text}xHDR', f'" lid 1 4x{text}', f'" lid {text}']:
            fab.file("net.topo", dump().replace(b'" lid 1 4xHDR', line.encode()))
            fab.reads("check", "--root-regex", "^root$", "net.topo")


NODE_NUMBERS = {"numPorts": (0, 255), "smdbRank": (0, 255), "planesNumber": (-2**31, 2**31 - 1),
                "suitablePlane": (-2**31, 2**31 - 1)}
PORT_NUMBERS = {"num": (1, 255), "state": (0, 2**32 - 1), "speed": (0, 2**32 - 1),
                "planeMultiplicity": (-2**31, 2**31 - 1), "group": (-2**31, 2**31 - 1)}
LINK_NUMBERS = {"aPort": (1, 255), "bPort": (1, 255), "speed": (0, 2**32 - 1)}
OTHER_VALUES = ["1e1", "1.0", "-0.5", "1E400", "-1e-400", "true", "null", "[]", "{}", '"1"',
                "9" * 10000, "-" + "9" * 10000, "[" * 3000, '"\\u0031"']
NO_JSON = ["+1", "0x1", "01", "1e", "-", "NaN", "Infinity", "1_000", "0b1", "\u0661", "1 1"]


def number_of_a_document(fab, text, column, least, greatest, is_json=True):
    fab.file("net.json", text)
    result = fab.run("check", "net.json")
    assert result.status == 2 and result.out == b"", result
    message = f"fabscope: net.json:1:{column}: expected a whole number from {least} to {greatest}\n"
    if is_json:
        assert result.err == message, result.err
    else:
        start = "fabscope: net.json:1:"
        assert result.err == message or (
            result.err.startswith(start) and ": malformed JSON: " in result.err
            and result.err.count("\n") == 1), result.err


def every_number_of_a_document_is_held_to_its_range(fab):
    whole = {"guid": "0x9", "type": "switch", "name": "x", "numPorts": 255}
    places = [(key, limits, "nodes", lambda key: whole | {key: "@"}) for key, limits in
              NODE_NUMBERS.items()]
    places += [(key, limits, "nodes", lambda key: whole | {"ports": [{"num": 1} | {key: "@"}]})
               for key, limits in PORT_NUMBERS.items()]
    places += [(key, limits, "links", lambda key: {"a": "0x1", "aPort": 1, "b": "0x2", "bPort": 1} |
                {key: "@"}) for key, limits in LINK_NUMBERS.items()]
    places += [("planes", (-2**31, 2**31 - 1), "nodes", lambda key: whole | {key: ["@"]}),
               ("flids", (0, 65535), "nodes", lambda key: whole | {key: ["@"]}),
               ("asymmetry", (0, 2**64 - 1), "aports", lambda key: {"ports": [], key: "@"}),
               ("aports", (1, 255), "aports", lambda key: {"ports": [["0x1", "@"]]})]
    for key, (least, greatest), where, make in places:
        text = document(**{where: [make(key)]})
        column = text.encode().index(b'"@"') + 1
        outside = {str(number) for number in [least - 1, greatest + 1, *map(int, EDGES),
                                               *(-int(edge) for edge in EDGES)]
                   if not least <= number <= greatest}
        others = [value for value in OTHER_VALUES if not (key == "speed" and value.startswith('"'))]
        for value in fab.some(sorted(outside) + others):
            number_of_a_document(fab, text.replace('"@"', value), column, least, greatest,
                                 is_json=value not in ["[" * 3000])
        for value in fab.some(NO_JSON):
            number_of_a_document(fab, text.replace('"@"', value), column, least, greatest, False)


def guids_of_a_document_are_0x_and_1_to_16_digits(fab):
    text = document()
    column = text.index('"0x1"') + 1
    for guid in ["", "0x", "1", "0X1", "0x" + "0" * 17, "0xg", "-0x1", " 0x1", "0x1 ", "0x\u0661",
                 "0x" + "f" * 100000, "0x1\\u0000"]:
        fab.file("net.json", text.replace("0x1", guid, 1))
        fab.refuses("check", "net.json", message=f"net.json:1:{column}: not a GUID, expected "
                    '"0x" and 1 to 16 hexadecimal digits')
    fab.file("net.json", text.replace("0x1", "0x0000000000000000", 1))
    fab.refuses("check", "net.json", message=f"net.json:1:{column}: a node's GUID must not be 0")


def versions_other_than_1_are_unknown(fab):
    for version in ["0", "2", "-1", "1.0", "1e0", '"1"', "null", "4294967297", "18446744073709551617"]:
        text = document().replace('"version": 1', f'"version": {version}')
        fab.file("net.json", text)
        fab.refuses("check", "net.json", message=f"net.json:1:{text.index('version') + 11}: "
                    "unknown version of the format, expected 1")


def ranks_and_flids_are_held_to_their_ranges(fab):
    fab.file("net.json", document())
    for column, greatest in [("rank", 255), ("flid", 65535)]:
        option = f"--{column}s"
        for number in fab.some(numbers_outside(0, greatest)):
            if "," in number:
                continue  # a field more
            fab.file("side.csv", f"guid,{column}\n0x1,{number}\n")
            told = 5 + (len(number) - len(number.lstrip(" ")))
            fab.refuses("check", option, "side.csv", "net.json", message=f"side.csv:2:{told}: "
                        f"not a {column}, expected a number from 0 to {greatest}")
        for number in SPELLINGS_OF_ONE:
            fab.file("side.csv", f"guid,{column}\n0x1,{number}\n")
            result = fab.run("check", option, "side.csv", "net.json")
            assert "side.csv" not in result.err, result.err


def numbers_of_options_are_held_to_their_ranges(fab):
    most = 2**31 - 1
    tree = ["--levels", "2", "--radix", "4"]
    options = [("check", "--retries", 0, most, ["x.topo"]), ("check", "--equal", 1, most, ["x.topo"]),
               ("check", "--merge-percent", 0, 100, ["x.topo"]),
               ("generate", "--levels", 1, 8, []), ("generate", "--radix", 2, 254, []),
               ("generate", "--pods", 1, 254, tree), ("generate", "--hosts-per-leaf", 1, 254, tree),
               ("generate", "--parallel", 1, 255, tree), ("generate", "--planes", 1, 16, tree),
               ("generate", "--seed", 0, 2**64 - 1, tree)]
    for command, option, least, greatest, rest in options:
        for number in fab.some(numbers_outside(least, greatest)) + [str(least - 1), str(greatest + 1)]:
            fab.refuses(command, f"{option}={number}", *rest,
                        message=f'{option}: "{number}" is not allowed, expected a whole number from '
                                f"{least} to {greatest} (see fabscope {command} --help)")
    for number in fab.some(numbers_outside(1, 1_000_000)):
        fab.refuses("generate", *tree, "--fault", f"missing-link={number}",
                    message=f'--fault: "missing-link={number}" is not allowed, expected a whole number '
                            "from 1 to 1000000 behind missing-link= (see fabscope generate --help)")


def trees_that_cannot_be_are_refused_at_once(fab):
    shapes = ["", ";", ";;", "0; ; ", "1; 1; 0", "1; 0; 1", "1; 256; 1", "1; 4294967297; 1", "1; -1; 1",
              "9; 1,1,1,1,1,1,1,1,1; 1,1,1,1,1,1,1,1,1", "4294967296; 1; 1", "4294967295; 1; 1",
              "2; 255,255; 1", "2; 2,2,2; 1,1", "1; 1; 1;", "1; 1; 1 x", "1; 1e1; 1", "h; m; w",
              "1; 0x1; 1", "99999999999999999999; 1; 1", "1,1,1", "2; 255,255; 255,255",
              "8; 2,2,2,2,2,2,2,255; 127,127,127,127,127,127,127,1", "1" * 100000]
    for shape in shapes:
        result = fab.run("generate", "--xgft", shape)
        assert result.status == 2 and result.out == b"", (shape[:50], result.err)
        assert result.err.count("\n") == 1, result.err
    if fab.is_sanitized:
        return  # the largest of these can be, and take it too long
    for levels, radix, more in [(8, 254, []), (8, 2, ["--pods", "254"]), (8, 254, ["--parallel", "255"]),
                                (5, 254, ["--hosts-per-leaf", "254"]), (2, 254, ["--planes", "16"])]:
        result = fab.run("generate", "--levels", str(levels), "--radix", str(radix), *more, "-o", "x")
        assert result.status in (0, 2), result
        assert result.status == 0 or result.err.count("\n") == 1, result.err


def as_many_faults_as_can_be_named_end_soon(fab):
    for kind in ["missing-link", "missing-host", "slow-link", "swapped-cables", "moved-cable",
                 "dead-switch", "same-rank-link", "root-link", "stray-host"]:
        result = fab.run("generate", "--levels", "3", "--radix", "8", "--fault", f"{kind}=1000000",
                         "-o", "out.json")
        assert result.status == 2 and result.err.count("\n") == 1, (kind, result.err)
        assert result.err.startswith(f"fabscope: --fault {kind}=1000000: only "), result.err
    assert "out.json" not in fab.names()
