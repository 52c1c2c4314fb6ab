#!/usr/bin/env python3
"""Makes the tables of other programs in docs/archiver.md; run by tools/interop.

Each reader extracts each archive into a folder of its own, and what comes out is compared byte by
byte with what went in: an exit status of 0 proves nothing.
"""

import collections
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
KOZOR = ROOT / "build/release/bin/kozor"
PAGE = ROOT / "docs/archiver.md"
BEGIN, END = "<!-- by tools/interop -->\n", "<!-- end of tools/interop -->\n"

# Each extracts {archive} below the current folder.
READERS = {
    "lhasa": ["lhasa", "xqf", "{archive}"],
    "7zz": ["7zz", "x", "-y", "{archive}"],
    "bsdtar": ["bsdtar", "-xf", "{archive}"],
    "unar": ["unar", "-q", "-f", "-D", "{archive}"],
    "jlha": ["jlha", "xqf", "{archive}"],
}
OURS = {"kozor": [str(KOZOR), "extract", "-q", "--force", "{archive}"]}
PACKAGES = ["lhasa", "7zip", "libarchive-tools", "unar", "jlha-utils"]


class Work:
    """Folders for one run; the current one is where a reader extracts."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.count = 0

    def new(self):
        self.count += 1
        path = self.folder / str(self.count)
        path.mkdir()
        return path


def run(command, folder, **environment):
    """The exit status and the output; a program that hangs is ended."""
    try:
        done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=60, env={**os.environ, "TZ": "UTC", **environment})
        return done.returncode, (done.stdout + done.stderr).decode("utf-8", "replace")
    except subprocess.TimeoutExpired:
        return -1, "doesn't end"


def contents(folder):
    """What is below a folder, by path in bytes: a file's bytes, a link's target, a folder's None."""
    found = {}
    top = os.fsencode(folder)
    for directory, folders, files in os.walk(top):
        for name in folders + files:
            path = os.path.join(directory, name)
            key = os.path.relpath(path, top)
            if os.path.islink(path):
                found[key] = b"-> " + os.readlink(path)
            elif os.path.isdir(path):
                found[key] = None
            else:
                found[key] = pathlib.Path(os.fsdecode(path)).read_bytes()
    return found


def in_page_932(tree):
    """The same with names as bytes of code page 932; empty if it can't express them."""
    try:
        return {path.decode().encode("cp932"): data for path, data in tree.items()}
    except UnicodeEncodeError:
        return {}


def complaint(output):
    """The line of the output that says what is wrong."""
    lines = [line.strip() for line in output.splitlines() if line.strip()]
    for sign in (r"unsup|unrecog|recognize", r"unknown|can't|cannot|crc|refused|dangerous", r"error"):
        for line in lines:
            if re.search(sign, line, re.IGNORECASE):
                return re.sub(r"\S*/\S*|\s+", " ", line).strip().split(" : ")[0][:90]
    return ""


def judge(expected, folder, output):
    """A word for the table, and why."""
    came = contents(folder)
    if came == expected:
        return "yes", ""
    if came == in_page_932(expected):
        return "names in 932", ""
    without_folders = {path: data for path, data in expected.items() if data is not None}
    if came == without_folders or all(came.get(path) == data
                                      for path, data in without_folders.items()):
        return "files only", "" if came else complaint(output)
    if sorted(filter(None, came.values())) == sorted(filter(None, expected.values())):
        return "other names", ""
    return "no", complaint(output) or "other contents, and no word of it"


class Table:
    """Rows of words, with the reasons for other words than yes below."""

    def __init__(self, first, columns):
        self.lines = [f"| {first} | " + " | ".join(columns) + " |",
                      "| --- |" + " --- |" * len(columns)]
        self.reasons = {}

    def row(self, name, words):
        cells = []
        for reader, (word, why) in words:
            if why:
                note = self.reasons.setdefault(f"`{reader}`: {why}", len(self.reasons) + 1)
                word += f" ({note})"
            cells.append(word)
        self.lines.append(f"| {name} | " + " | ".join(cells) + " |")

    def text(self):
        notes = [f"({number}) {why}  " for why, number in self.reasons.items()]
        return "\n".join(self.lines + ([""] + notes if notes else [])) + "\n\n"


def make_tree(folder, files):
    for name, data in files.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if data is None:
            path.mkdir(exist_ok=True)
        elif isinstance(data, str):
            path.symlink_to(data)
        else:
            path.write_bytes(data)
    return folder


def sample_files():
    random.seed(1)
    words = [b"archive ", b"member ", b"window ", b"of the ", b"header\n"]
    return {
        "text": b"".join(random.choice(words) for _ in range(40000)),
        "noise": random.randbytes(100000),
        "empty": b"",
        "one": b"1",
        "folder/below/file": b"in a folder" * 100,
    }


def our_archives(work):
    """Names of archives, what is in them, and their paths."""
    files = sample_files()
    sets = [(f"`-{method}-`", files, ["--method", method])
            for method in ("lh0", "lh1", "lh5", "lh6", "lh7")]
    japanese = {"表示.txt": b"1", "漢字/かな ｶﾅ.txt": b"2"}
    sets += [
        ("names of code page 932", japanese, ["--no-unix"]),
        ("the same in UTF-8 (`--unix`)", japanese, []),
        ("names beyond it", {"한글/Ünïcödé.txt": b"1"}, []),
        ("a name of 255 bytes", {"n" * 255: b"1"}, []),
        ("a path of 500", {"/".join(["d" * 99] * 4 + ["f" * 100]): b"1"}, []),
        ("empty folders", {"a/b": None, "c": None, "f": b"1"}, []),
        ("symbolic links", {"f": b"1", "a/up": "../f", "link": "f"}, []),
        ("2,000 members", {f"{i:04}": b"%d" % i for i in range(2000)}, []),
        ("a self-extracting program", files, ["--sfx"]),
    ]
    for name, tree, options in sets:
        source, target = make_tree(work.new(), tree), work.new()
        status, output = run([str(KOZOR), "add", "-q", *options, "--dir", str(source),
                              str(target / "a.lzh")], target)
        if status != 0:
            sys.exit(f"{name}: {output}")
        made = target / ("a.run" if "--sfx" in options else "a.lzh")
        yield name, contents(source), made


def read_by(readers, work, archive, expected):
    for reader, command in readers.items():
        folder = work.new()
        _, output = run([part.format(archive=archive) for part in command], folder)
        yield reader, judge(expected, folder, output)
        shutil.rmtree(folder)


def their_archives(work):
    """Archives by jlha, which writes levels 0 to 2."""
    source = make_tree(work.new(), sample_files())
    for level in (0, 1, 2):
        for switch, method in (("z", "lh0"), ("o5", "lh5"), ("o6", "lh6"), ("o7", "lh7")):
            archive = work.new() / "a.lzh"
            run(["jlha", f"aq{level}{switch}", str(archive), *os.listdir(source)], source)
            yield f"jlha, level {level}, `-{method}-`", contents(source), archive


def crc16(data, table=[]):
    if not table:
        for value in range(256):
            for _ in range(8):
                value = value >> 1 ^ (0xA001 if value & 1 else 0)
            table.append(value)
    crc = 0
    for byte in data:
        crc = crc >> 8 ^ table[(crc ^ byte) & 0xFF]
    return f"{crc:04x}"


def samples():
    """Archives of the sample folder with the sums that their members should have."""
    folder = pathlib.Path(os.environ.get("KOZOR_TESTDATA", ROOT / "../shared/testdata")) / "lzh"
    if not (folder / "MANIFEST.tsv").exists():
        return
    for line in (folder / "MANIFEST.tsv").read_text().splitlines()[1:]:
        path, levels, methods, _, sums, note = (line.split("\t") + [""] * 6)[:6]
        wanted = sorted(s for s in sums.split(",") if s not in ("0000", "-"))
        if wanted and not note.startswith(("original size", "cut off")):
            yield folder / path, levels, methods.split(",")[-1], wanted


def sample_tables(work):
    readers = {**OURS, **READERS}
    right = collections.defaultdict(collections.Counter)
    known = {}
    for archive, level, method, wanted in samples():
        keys = (f"`{method}`", f"level {level}")
        for reader, command in readers.items():
            folder = work.new()
            run([part.format(archive=archive) for part in command], folder)
            data = [d for d in contents(folder).values() if d and not d.startswith(b"-> ")]
            for d in data:
                known.setdefault(d, crc16(d) if d not in known else None)
            good = sorted(s for s in map(known.get, data) if s != "0000") == wanted
            for key in keys:
                right[key][reader] += good
            shutil.rmtree(folder)
        for key in keys:
            right[key]["all"] += 1
    if not right:
        return ""
    table = Table("archives with", list(readers))
    for key in sorted(right):
        name = {"`-lk7-`": "the other `-lh7-`"}.get(key, key)
        count = right[key]
        table.row(f"{name}: {count['all']}", [(r, (str(count[r]), "")) for r in readers])
    return ("Archives by old programs, of a public collection: how many come out with the right "
            "sizes and sums.\n\n" + table.text())


def versions():
    named = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}, ", *PACKAGES],
                           capture_output=True, text=True, check=False).stdout
    return named.rstrip(", ")


def main():
    with tempfile.TemporaryDirectory() as folder:
        work = Work(folder)
        ours = Table("our archives", list(READERS))
        for name, expected, archive in our_archives(work):
            ours.row(name, read_by(READERS, work, archive, expected))
        theirs = Table("their archives", list(OURS))
        for name, expected, archive in their_archives(work):
            theirs.row(name, read_by(OURS, work, archive, expected))
        text = (BEGIN + f"Made by `tools/interop` with {versions()}.\n\n" + ours.text() +
                theirs.text() + sample_tables(work) + END)
    page = PAGE.read_text()
    begin, end = page.index(BEGIN), page.index(END) + len(END)
    PAGE.write_text(page[:begin] + text + page[end:])
    print(text)


main()
