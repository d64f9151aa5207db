# SPDX-License-Identifier: Zlib
"""Drives fenpack as a user would: fenpack_test.py PROGRAM"""
import os
import pty
import random
import subprocess
import sys
import tempfile
import zlib

program = sys.argv[1]


def run(*arguments, status, **options):
    done = subprocess.run([program, *arguments], capture_output=True, text=True, timeout=120, **options)
    assert done.returncode == status, f"{arguments}: ended with {done.returncode}, not {status}\n{done.stderr}"
    assert (done.stderr != "") == (status != 0), f"{arguments}: on standard error: {done.stderr!r}"
    return done.stdout + done.stderr


def write(name, content):
    with open(name, "wb") as file:
        file.write(content)


def read(name):
    with open(name, "rb") as file:
        return file.read()


def run_on_terminal(answers, *arguments):
    """Runs with a terminal and types each answer when a question came; gives all that was shown and the status."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execv(program, [program, *arguments])
    shown = b""
    answers = list(answers)
    while True:
        try:
            piece = os.read(terminal, 4096)
        except OSError:
            break
        if not piece:
            break
        shown += piece
        if answers and shown.endswith(b": "):
            os.write(terminal, answers.pop(0) + b"\n")
    return shown, os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])


def round_trips():
    dice = random.Random(1)
    text = b" ".join(dice.choice([b"sprite", b"layer", b"frame", b"sound"]) for _ in range(20000))
    samples = {"two": b"ab", "text": text, "noise": dice.randbytes(70000), "zeros": bytes(300000),
               "-dash": b"dashes" * 9}
    # Above 16 MB a file is packed piece by piece; one more byte than whole pieces must not make a piece of its own.
    samples["long"] = samples["one"] = text.ljust(2**24, b"?") + b"!"
    for name, content in samples.items():
        write(name, content)
        os.chmod(name, 0o640)
        run("pack", *(["--one"] if name == "one" else []), "--", name, status=0)
        os.remove(name)
        run("test", "--", name + ".fpk", status=0)
        run("unpack", "--", name + ".fpk", status=0)
        assert read(name) == content, name
        assert os.stat(name).st_mode & 0o777 == 0o640, name
    run("unpack", "text.fpk", "-o", "copy", status=0)
    assert read("copy") == text
    return samples


def container_is_the_documented_one(content):
    packed = read("text.fpk")
    fields = [int.from_bytes(packed[i:i + 4], "little") for i in range(0, 24, 4)]
    assert fields == [len(packed), 24, len(packed) - 24, zlib.crc32(packed[24:]), len(content), zlib.crc32(content)]


def lists(samples):
    lines = run("list", "text.fpk", "long.fpk", status=0).splitlines()
    for line, name in zip(lines[1:], ["text", "long"], strict=True):
        original, packed, _, shown = line.split()
        assert (int(original), int(packed)) == (len(samples[name]), os.path.getsize(name + ".fpk")), line
        assert shown == name + ".fpk", line


def passwords(content):
    write("key", b"open sesame\nnot read\n")
    write("wrong", b"open sesam\n")
    write("empty", b"")
    write("secret", content)
    run("pack", "secret", "--password-file", "key", status=0)
    assert read("secret.fpk") != read("text.fpk")
    run("list", "secret.fpk", status=0)
    for arguments, reason in [([], "needs a password"), (["--password-file", "wrong"], "password is wrong")]:
        assert reason in run("test", "secret.fpk", *arguments, status=1)
        assert reason in run("unpack", "secret.fpk", "-o", "not-made", *arguments, status=1)
    run("test", "secret.fpk", "--password-file", "key", status=0)
    for bad in ["empty", "missing"]:
        run("test", "secret.fpk", "--password-file", bad, status=1)
    run("test", "secret.fpk", "--password", status=1, start_new_session=True)


def terminals():
    """Needs what passwords() wrote."""
    try:
        os.close(os.open("/dev/ptmx", os.O_RDWR | os.O_NOCTTY))
    except OSError as error:
        print("prompts and progress are not tested, for this system gives no terminals:", error)
        return
    shown, status = run_on_terminal([b"open sesame"], "test", "--password", "secret.fpk")
    assert status == 0 and b"good" in shown and b"open" not in shown, shown
    shown, status = run_on_terminal([b"one", b"other"], "pack", "--password", "secret", "-o", "not-made")
    assert status == 1 and b"differ" in shown, shown
    shown, status = run_on_terminal([b"half a word\x03"], "test", "--password", "secret.fpk")
    assert status == 1 and b"no password" in shown, shown
    shown, status = run_on_terminal([], "pack", "--force", "long")
    assert status == 0 and b"49 %" in shown, shown


def refusals(content):
    packed = read("text.fpk")
    before = read("text")
    assert "--force" in run("unpack", "text.fpk", status=1)
    write("text", b"changed")
    run("unpack", "--force", "text.fpk", status=0)
    assert read("text") == before
    for length in range(0, len(packed), 97):
        write("cut.fpk", packed[:length])
        run("test", "cut.fpk", status=1)
    for place in [0, 4, 8, 12, 16, 20, 24, 500, len(packed) - 1]:
        damaged = bytearray(packed)
        damaged[place] ^= 0x40
        write("damaged.fpk", damaged)
        run("test", "damaged.fpk", status=1)
        run("unpack", "damaged.fpk", "-o", "not-made", status=1)
    write("nothing", b"")
    write("single", b"x")
    with open("huge", "wb") as file:
        file.truncate(2**31)
    for name, reason in [("nothing", "0 or 1 bytes"), ("single", "0 or 1 bytes"), ("huge", "2 GB"), (".", "plain file"),
                         ("missing", "No such file")]:
        assert reason in run("pack", name, "-o", "not-made", status=1)
    # One failing file does not keep the other from being done.
    run("test", "missing", "text.fpk", status=1)
    for arguments in [[], ["fold", "text"], ["pack"], ["pack", "--fast", "text"], ["pack", "text", "-o"],
                      ["pack", "text", "long", "-o", "not-made"]]:
        assert "usage:" in run(*arguments, status=2)
    run("--help", status=0)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    all_samples = round_trips()
    container_is_the_documented_one(all_samples["text"])
    lists(all_samples)
    passwords(all_samples["text"])
    terminals()
    refusals(all_samples["text"])
    left = [name for name in os.listdir(".") if "not-made" in name or len(name.partition(".")[2]) == 6]
    assert not left, f"left behind: {left}"
print("fenpack does what it says")
