"""Changes the sources one place at a time and tells which changes no unit test notices.

A change is one operator, constant, condition or call in protocol/, disk/, monitor/, scan/ or config/. For each,
what depends on the file is built again and the tests of its folder run, then, if those pass, all other unit
tests. Everything happens in a copy of the tree under build/mutate/; the checkout is only read.

What does not compile is not counted. Some survivors change nothing that matters (the size of a buffer); the
others are cases that no test has.
"""

import argparse
import os
import random
import re
import signal
import subprocess
import sys
import time
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
BUILD = WORK / "build"
JOBS = os.environ.get("JOBS", "2")
FOLDERS = ["protocol", "disk", "monitor", "scan", "config"]

# clang-format puts blanks around binary operators and none inside template brackets.
OPERATORS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "+=": "-=", "-=": "+=",
    "&": "|", "|": "&", "<<": ">>", ">>": "<<", "&=": "|=", "|=": "&=",
}
OPERATOR = re.compile(r"(?<=\s)(" + "|".join(map(re.escape, sorted(OPERATORS, key=len, reverse=True))) + r")(?=\s)")
STEP = re.compile(r"\+\+|--")
BOOLEAN = re.compile(r"\b(true|false)\b")
NOT = re.compile(r"!(?=[\w(])")
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|\d[\d']*)(?=[uUlL]*\b)(?![.'])")
CONDITION = re.compile(r"\b(if|while) (?=\()")
CALL = re.compile(r"^[ ]{4,}[\w:]+(?:(?:\.|->)[\w:]+)*\([^;]*\);$", re.MULTILINE)

# Not looked at: text, comments, the preprocessor, and statements that only log or assert.
OPAQUE = re.compile(
    r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'|^[ ]*\#[^\n]*"""
    r"""|\b(?:qC?(?:Debug|Warning|Info|Critical)|Q_ASSERT|Q_LOGGING_CATEGORY|static_assert)\b[^;]*;""",
    re.MULTILINE | re.DOTALL | re.VERBOSE)


@dataclass(frozen=True)
class Mutant:
    file: str  # from the root of the tree
    begin: int  # of the text that is replaced
    end: int
    replacement: str

    @property
    def folder(self):
        return self.file.split("/")[0]

    def apply(self, source):
        return source[:self.begin] + self.replacement + source[self.end:]

    def describe(self, source):
        line = source.count("\n", 0, self.begin) + 1
        start = source.rfind("\n", 0, self.begin) + 1
        end = source.find("\n", self.end)
        changed = source[start:self.begin] + "[" + source[self.begin:self.end] + " -> " + self.replacement + "]"
        return f"{self.file}:{line}: {(changed + source[self.end:end]).strip()}"


def closing(text, opening):
    """The place of the parenthesis that closes the one at `opening`."""
    depth = 0
    for i in range(opening, len(text)):
        depth += {"(": 1, ")": -1}.get(text[i], 0)
        if depth == 0:
            return i
    return len(text)


def replacements(code):
    """(begin, end, new text) for everything in `code` that a mutant changes."""
    for match in OPERATOR.finditer(code):
        yield match.start(), match.end(), OPERATORS[match[0]]
    for match in STEP.finditer(code):
        yield match.start(), match.end(), "--" if match[0] == "++" else "++"
    for match in BOOLEAN.finditer(code):
        yield match.start(), match.end(), "false" if match[0] == "true" else "true"
    for match in NOT.finditer(code):
        yield match.start(), match.end(), ""
    for match in NUMBER.finditer(code):
        yield match.start(), match.end(), str(int(match[0].replace("'", ""), 0) + 1)
    for match in CONDITION.finditer(code):
        end = closing(code, match.end())
        condition = code[match.end() + 1:end]
        if ";" not in condition and " = " not in condition:
            yield match.end() + 1, end, "false"
            if match[1] == "if":
                yield match.end() + 1, end, "true"
    for match in CALL.finditer(code):
        yield match.start(), match.end(), " " * 4 + ";"


def mutants_of(file):
    source = (TREE / file).read_text()
    code = OPAQUE.sub(lambda match: re.sub(r"[^\n]", "\0", match[0]), source)
    return [Mutant(file, *replacement) for replacement in replacements(code)]


def run(*command, **options):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", **options)


def demand(*command):
    result = run(*command)
    if result.returncode != 0:
        sys.exit(f"{result.stdout}\nmutate: this failed: {' '.join(map(str, command))}")
    return result.stdout


def copy_tree():
    """Copies what git knows of; an unchanged file keeps its time, so that it is not compiled again."""
    for name in demand("git", "-C", ROOT, "ls-files").splitlines():
        target = TREE / name
        content = (ROOT / name).read_bytes()
        if not target.exists() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
            target.chmod((ROOT / name).stat().st_mode)
    # A warning about a mutant is no news, and most of the time to build one goes into Qt's headers.
    flags = TREE / "cmake" / "build_flags.cmake"
    flags.write_text(flags.read_text().replace("-Werror", "-w"))
    with (TREE / "CMakeLists.txt").open("a") as project:
        project.write("target_precompile_headers(halvex PRIVATE <QtCore> <QtNetwork>)\n")


class Tests:
    """The unit tests, by the folder that they belong to."""

    def __init__(self):
        demand("cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O0",
               "-DCCACHE=")
        listed = demand("ctest", "--test-dir", BUILD, "-N", "-L", "^unit$")
        self.folder_of = {path.stem: path.parent.name for path in (TREE / "tests").glob("*/tst_*.cpp")}
        self.names = [name for name in re.findall(r"Test +#\d+: (\S+)", listed) if name in self.folder_of]

    def of(self, folder):
        return [name for name in self.names if self.folder_of[name] == folder]

    def others(self, folder):
        return [name for name in self.names if self.folder_of[name] != folder]


def build(names):
    return run("ninja", "-C", BUILD, "-j", JOBS, *names).returncode == 0


def passes(names, timeout):
    pattern = "^(" + "|".join(names) + ")$"
    return run("ctest", "--test-dir", BUILD, "-R", pattern, "-j", JOBS, "--timeout", timeout,
               "--stop-on-failure").returncode == 0


def outcome(mutant, tests, timeout):
    """"killed", "survived", or "invalid" when it does not compile."""
    for names in (tests.of(mutant.folder), tests.others(mutant.folder)):
        if not build(names):
            return "invalid"
        if not passes(names, timeout):
            return "killed"
    return "survived"


def sample(folders, seed):
    """Mutants in an order that takes turns between the folders, so that a run may end anywhere."""
    queues = []
    for folder in folders:
        files = sorted(path.relative_to(TREE).as_posix() for path in (TREE / folder).glob("*.cpp"))
        queue = [mutant for file in files for mutant in mutants_of(file)]
        random.Random(f"{seed} {folder}").shuffle(queue)
        queues.append(queue)
    while any(queues):
        for queue in queues:
            if queue:
                yield queue.pop()


def report(counts, survivors):
    print("\nsurvivors:" if survivors else "\nno survivors")
    for line in sorted(survivors):
        print("  " + line)
    print(f"\n{'folder':<10}{'killed':>8}{'survived':>10}{'invalid':>9}{'score':>8}")
    for folder in FOLDERS:
        killed, survived, invalid = (counts[folder, kind] for kind in ("killed", "survived", "invalid"))
        if killed + survived:
            print(f"{folder:<10}{killed:>8}{survived:>10}{invalid:>9}{killed / (killed + survived):>8.0%}")


def main():
    parser = argparse.ArgumentParser(prog="mutate", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folders", nargs="*", metavar="FOLDER", help="of " + ", ".join(FOLDERS) + "; default: all")
    parser.add_argument("--minutes", type=float, default=30, help="how long to go on (default: 30)")
    parser.add_argument("--seed", type=int, default=1, help="another number, another sample (default: 1)")
    arguments = parser.parse_args()
    unknown = set(arguments.folders) - set(FOLDERS)
    if unknown:
        parser.error("no such folder: " + ", ".join(sorted(unknown)))
    signal.signal(signal.SIGTERM, signal.default_int_handler)

    print("mutate: building a copy of the tree in build/mutate/", flush=True)
    copy_tree()
    tests = Tests()
    demand("ninja", "-C", BUILD, "-j", JOBS, *tests.names)
    begin = time.monotonic()
    if not passes(tests.names, 120):
        sys.exit("mutate: the tests fail as they are")
    timeout = 20 + 5 * (time.monotonic() - begin)

    counts, survivors = Counter(), []
    end = time.monotonic() + 60 * arguments.minutes
    try:
        for mutant in sample([f for f in FOLDERS if not arguments.folders or f in arguments.folders], arguments.seed):
            if time.monotonic() > end:
                break
            file = TREE / mutant.file
            source = file.read_text()
            try:
                file.write_text(mutant.apply(source))
                result = outcome(mutant, tests, timeout)
            finally:
                file.write_text(source)
            counts[mutant.folder, result] += 1
            if result == "survived":
                survivors.append(mutant.describe(source))
                print("survived: " + survivors[-1], flush=True)
    except KeyboardInterrupt:
        pass
    report(counts, survivors)


if __name__ == "__main__":
    main()
