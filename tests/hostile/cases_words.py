"""Command lines, expressions and the environment."""

import os

from hostile import document, dump


def groups_without_end_are_refused_at_once(fab):
    fab.file("net.topo", dump())
    nested = 100_000 // 2  # a single word of a command line has at most 128 KiB
    for expression in ["(" * nested + ")" * nested, "(" * nested, "()" * nested]:
        for option in ["--root-regex", "--special-nodes"]:
            fab.refuses("check", option, expression, "net.topo",
                        message=f'{option}: "{expression}" is not allowed, expected a POSIX extended '
                                "regular expression: it has more than 5000 groups "
                                "(see fabscope check --help)")


def repetitions_that_the_c_library_cannot_take_are_refused(fab):
    fab.file("net.topo", dump([b"core"]))
    empty = "it has more than 2000 parts in a row that may be empty"
    large = "its repetitions stand for more than 10000 characters"
    deep = "it has more than 1000 groups inside each other"
    for stack in (None, 1 << 20):
        fab.stack = stack
        for expression, reason in (("(){32767}", large), ("(x?){32767}", large), ("(x*){22015}", large),
                                   ("((x{0,200}){200}){200}", large), ("((((x{99}){99}){99}){99}){99}", large),
                                   ("x" + "+" * 60, large), ("(" * 999 + "x" + ")+" * 999, large),
                                   ("(){2000}", empty), ("x?" * 2100, empty), ("^" * 101, empty),
                                   ("()" * 4500, empty), ("x" + "*" * 2100, empty),
                                   ("(" * 1600 + "x" + ")" * 1600, deep), ("(" * 5000 + ")" * 5000, deep)):
            fab.refuses("check", "--root-regex", expression, "net.topo",
                        message=f'--root-regex: "{expression}" is not allowed, expected a POSIX extended '
                                f"regular expression: {reason} (see fabscope check --help)")
        # What is less is matched: the fabric has no tree, but it is read.
        for expression in ("(){900}core", "(x?){600}core", "(" * 1000 + "core" + ")" * 1000, "x?" * 1000 + "core",
                           "^" * 90 + "core", "c{1}o{1,900}re", "|".join(f"core-{i}" for i in range(900)),
                           "^(spine|core)[0-9]{0,3}$"):
            result = fab.run("check", "--root-regex", expression, "net.topo")
            assert result.status in (0, 1, 2) and "is not allowed" not in result.err, (expression, result.err)
    fab.stack = None


def malformed_expressions_are_refused(fab):
    fab.file("net.topo", dump())
    for expression in ["(", "[", "[a", "a{2,1}", "a{99999}", "[[:nothing:]]", "[z-a]", "\\", "*", "a{1",
                       "[[.x", "(()", "\x01(", "\u2028["]:
        result = fab.run("check", "--root-regex", expression, "net.topo")
        assert result.status == 2 and result.err.count("\n") == 1, (expression, result)


def expressions_that_others_choke_on_are_matched(fab):
    """Each against a name that nearly matches; the first of a megabyte."""
    fab.file("long.topo", dump([b"a" * (1 << 20)]))
    fab.file("net.topo", dump([b"a" * 64]))
    for expression in ["^(a+)+$", "^(a|aa)+$", "^(a|a?)+$", "^(.*a){12}$", "(x+x+)+y", "^a*a*a*a*a*a*b",
                       "^([a-z]+)*[0-9]$", "^" + "a?" * 60 + "a" * 60 + "$"]:
        result = fab.run("check", "--root-regex", expression, "net.topo")
        assert result.status in (1, 2), result
    fab.run("check", "--root-regex", "^(a+)+b$", "long.topo")


def odd_command_lines_are_wrong_usage(fab):
    fab.file("net.topo", dump())
    for words in [[], [""], ["", "check"], ["check"], ["check", ""], ["diff", "net.topo"],
                  ["check", "-"], ["check", "-", "-"], ["check", "--ranks", "-", "-"], ["checks", "net.topo"],
                  ["check", "--json="], ["check", "--json", "", "net.topo"], ["check", "---", "net.topo"],
                  ["check", "--no-such", "net.topo"], ["check", "-qx", "net.topo"], ["check", "--color=red", "net.topo"],
                  ["check", "--roots", "auto", "--root-regex", "x", "net.topo"], ["x" * 100_000],
                  ["check", "--" + "x" * 100_000], ["convert", "\x1b[2J", "b"], ["check", "--\x1b[2J", "b"],
                  ["\x1b[2J"], ["generate"], ["generate", "--fault", "\x1b[2J=1"], ["convert"],
                  ["convert", "net.topo"], ["convert", "net.topo", "net.topo", "-o", "a.json"], ["convert", "net.topo", "-o", "\x1b[2J"],
                  ["check", "--json", "net.topo", "net.topo"], ["convert", "net.topo", "-o", "./net.topo"],
                  ["check", "--csv", "a", "--json", "a", "net.topo"]] + [["check"] + ["--equal"] * 10_001]:
        before = fab.read("net.topo")
        result = fab.run(*words)
        assert result.status == 2 and result.out == b"", (words, result)
        assert result.err.count("\n") == 1, (words, result.err)
        assert fab.read("net.topo") == before and fab.names() == ["net.topo"]


def the_environment_changes_no_byte(fab):
    fab.file("net.topo", dump([b"r\xc3\xb6\xff" + b"1,5"]))
    fab.file("net.json", document())
    commands = [["check", "--root-regex", "^r", "--dump", "-", "net.topo"],
                ["check", "--roots", "smdb", "--json", "-", "net.json"],
                ["check", "--help"], ["--version"], ["check", "no-such-file"], ["check", "--equal", "0"],
                ["generate", "--levels", "3", "--radix", "24"],
                ["convert", "net.topo", "--format", "graphml", "-o", "-"]]
    plain = [fab.run(*words, environment={}) for words in commands]
    locales = ["C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "ar_EG", "../../etc/passwd", "%s%n",
               "x" * 10_000, ""]
    odd = [{"LC_ALL": name, "LANG": name, "LANGUAGE": name, "LC_NUMERIC": name} for name in locales]
    odd += [{"TMPDIR": "/nowhere", "HOME": "/nowhere", "PWD": "/nowhere", "TZ": "../../x", "COLUMNS": "5",
             "TERM": "\x1b[2J"}, {"CLICOLOR_FORCE": "1", "FORCE_COLOR": "1", "NO_COLOR": ""},
            {"MALLOC_ARENA_MAX": "1", "MALLOC_PERTURB_": "165", "MALLOC_MMAP_THRESHOLD_": "1"},
            {"LOCPATH": "/tmp", "NLSPATH": "/tmp/%N", "GCONV_PATH": "/tmp", "POSIXLY_CORRECT": "1"},
            {"FABSCOPE": "x", "FABSCOPE_CHECK": "--quiet", "FABSCOPE_OPTIONS": "--quiet", "DEBUG": "1"},
            dict(os.environ)]
    for environment in fab.some(odd):
        for words, expected in zip(commands, plain):
            assert fab.run(*words, environment=environment) == expected, (environment, words)
