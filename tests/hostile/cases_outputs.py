"""Files that are replaced by an output, and who may read them afterwards."""

import os
import shutil
import subprocess

from hostile import dump


def acl(*words):
    done = subprocess.run(words, capture_output=True, text=True, check=True)
    return done.stdout


def list_of(path):
    return acl("getfacl", "-cnE", "--absolute-names", str(path))


def replace(fab, *as_somebody):
    """One of the files that a check writes."""
    fab.inputs += 1
    program = shutil.copy(fab.binary, fab.folder / "program")
    done = subprocess.run([*as_somebody, program, "check", "--csv", "out", "net.topo"], cwd=fab.folder,
                          capture_output=True, check=False)
    assert b"cannot write" not in done.stderr, done
    assert fab.read("out").startswith(b"Scope,"), done


def an_access_control_list_is_kept(fab):
    fab.file("net.topo", dump())
    out = fab.folder / "out"
    for entries in ("u:12345:r", "u:12345:-", "g:23456:rw,m::r", "u:12345:rw,g::-,o::-", "m::-,u:12345:rw,o::r"):
        out.unlink(missing_ok=True)
        out.write_text("old")
        out.chmod(0o664)
        acl("setfacl", "-m", entries, str(out))
        before = list_of(out)
        replace(fab)
        assert list_of(out) == before, (entries, before, list_of(out))


def a_folder_opens_no_file_that_was_closed(fab):
    """Its default list goes to new files, but not to one that takes the place of another."""
    fab.file("net.topo", dump())
    acl("setfacl", "-d", "-m", "u:12345:rw,g:23456:rw", str(fab.folder))
    out = fab.folder / "out"
    out.write_text("old")
    acl("setfacl", "-b", str(out))
    for mode in (0o600, 0o640, 0o664, 0o604):
        out.chmod(mode)
        before = list_of(out)
        assert "12345" not in before
        replace(fab)
        assert list_of(out) == before, (oct(mode), before, list_of(out))


def a_list_that_cannot_be_kept_leaves_the_owner_alone(fab):
    """Somebody else, who is not of the file's group, replaces it."""
    if os.geteuid() != 0:
        return  # only root can be somebody else
    fab.file("net.topo", dump())
    (fab.folder / "net.topo").chmod(0o644)
    fab.folder.chmod(0o777)
    out = fab.folder / "out"
    for entries, after in (("u:12345:-", "user::rw-\ngroup::---\nother::---\n\n"),
                           ("g:34567:rw", "user::rw-\ngroup::---\nother::---\n\n"),
                           (None, "user::rw-\ngroup::r--\nother::r--\n\n")):
        out.unlink(missing_ok=True)
        out.write_text("old")
        os.chown(out, 23456, 23456)
        out.chmod(0o664)
        if entries:
            acl("setfacl", "-m", entries, str(out))
        replace(fab, "setpriv", "--reuid=45678", "--regid=45678", "--clear-groups")
        assert out.stat().st_uid == 45678
        assert list_of(out) == after, (entries, list_of(out))
