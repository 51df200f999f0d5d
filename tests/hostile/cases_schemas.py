"""Files that were damaged as cables, people and disks damage them: whatever comes of them as JSON is
as the schemas of docs/ describe it. The files are those that the fuzzer of whole commands begins with."""

import json
import random
from pathlib import Path

import jsonschema

ROOT = Path(__file__).resolve().parent.parent.parent
SEEDS = ROOT / "fuzz" / "corpus" / "commands"
NAMES = {"F": "fabric", "G": "new", "R": "ranks", "L": "flids", "N": "names", "P": "plan"}
ROUNDS = 8  # of each seed


def schema(name):
    loaded = json.loads((ROOT / "docs" / f"{name}.schema.json").read_text())
    return jsonschema.Draft7Validator(loaded)


RESULT, PLAN, DIFFERENCE = map(schema, ["check-result", "repair-plan", "difference"])


def files_of(seed):
    """What a seed holds, by name: after a few bytes of options, files behind a mark and a letter."""
    return {NAMES[part[:1].decode()]: part[1:].splitlines(keepends=True)
            for part in seed.read_bytes().split(b"\x1e")[1:] if part[:1].decode() in NAMES}


def damage(lines, dice):
    """Changes one thing: a line less, more, elsewhere or mixed up with another, or a digit."""
    at, other = dice.randrange(len(lines)), dice.randrange(len(lines))
    what = dice.randrange(6)
    if what == 0:
        del lines[at]
    elif what == 1:
        lines.insert(other, lines[at])
    elif what == 2:
        lines.insert(other, lines.pop(at))
    elif what == 3:
        a, b = lines[at].split(b'"'), lines[other].split(b'"')
        place = dice.randrange(min(len(a), len(b)))
        a[place], b[place] = b[place], a[place]
        lines[at] = b'"'.join(a)
        if at != other:
            lines[other] = b'"'.join(b)
    else:
        digits = [place for place, byte in enumerate(lines[at]) if chr(byte) in "0123456789abcdef"]
        if digits:
            line = bytearray(lines[at])
            line[dice.choice(digits)] = ord(dice.choice("0123456789"))
            lines[at] = bytes(line)


def damaged(tool):
    """The names of files, of all seeds in all rounds; the files lie in the folder."""
    seeds = sorted(SEEDS.iterdir())
    for number, (seed, turn) in enumerate(tool.some([(seed, turn) for seed in seeds
                                                     for turn in range(ROUNDS)])):
        dice = random.Random(number)
        files = files_of(seed)
        for _ in range(turn):
            lines = dice.choice([lines for lines in files.values() if len(lines) > 1])
            damage(lines, dice)
        for name, lines in files.items():
            tool.file(name, b"".join(lines))
        yield files


def require(validator, result, statuses):
    """Without a result, as of a file that cannot be read, the reason is told."""
    if not result.out:
        assert result.status == 2 and result.err
        return
    document = json.loads(result.out)
    errors = [f"{error.json_path}: {error.message}" for error in validator.iter_errors(document)]
    assert not errors, errors
    assert document["status"] in statuses[result.status], (document["status"], result.status)


def words_for(files, **options):
    """Options for those of the files that there are."""
    return [word for name, option in {"ranks": "--ranks", "names": "--node-name-map",
                                      **options}.items()
            if name in files for word in (option, name)]


def damaged_files_give_results_as_described(fab):
    for files in damaged(fab):
        result = fab.run("check", *words_for(files, flids="--flids"), "fabric", "--json", "-")
        require(RESULT, result, [["clean"], ["findings"], ["failed"]])


def damaged_files_give_plans_as_described(fab):
    for files in damaged(fab):
        result = fab.run("repair", *words_for(files), "fabric", "--json", "-")
        require(PLAN, result, [["clean"], ["repairs", "abstained"], ["failed"]])


def damaged_files_give_differences_as_described(fab):
    for files in damaged(fab):
        new = "new" if "new" in files else "fabric"
        result = fab.run("diff", *words_for(files, plan="--plan"), "fabric", new, "--json", "-")
        require(DIFFERENCE, result, [["same"], ["different"], ["failed"]])
