#!/usr/bin/env python3
"""Changes one place of a folder's sources at a time and asks its tests whether they notice.

usage: mutate.py FOLDER [--sample N] [--seed N] [--list]

Works on a copy of the project below build/mutation, so the working tree stays as it is. A change
that the tests do not notice has survived: it is printed as FILE:LINE with the line before and
after, unless equivalent.txt lists it with the reason why it changes nothing that can be seen.
Exits with 1 when a smaller share than the folder's bar was noticed.
"""

import argparse
import json
import pathlib
import random
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
COPY = ROOT / "build" / "mutation"
EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")

# Folder: the share of changes that its tests must notice, the programs that hold them.
FOLDERS = {
    "item": (0.92, ["item_test"]),
    "kvsc": (0.92, ["kvsc_test", "kvsc_client_test", "kvsc_tls_test", "kvsc_credentials_test",
                    "kvsc_failing_openssl_test"]),
    "persistence": (0.92, ["persistence_test"]),
    "download": (0.92, ["download_test"]),
    "plugin": (0.92, ["plugin_parts_test", "plugin_test"]),
    "playerx/platform": (0.85, ["platform_test"]),
    "playerx/transfers": (0.85, ["transfers_test"]),
    "playerx/app": (0.85, ["app_test"]),
    "playerx/cli": (0.85, ["cli_test"]),
}
SECONDS_OF_A_BUILD = 900
BYTES_OF_A_PROGRAM = 12 * 2**30
SLOW_CASE = 0.3  # seconds

# What is replaced by what. Patterns see code only: comments, strings and includes are blanked.
REPLACEMENTS = [
    (r"==", ["!="]), (r"!=", ["=="]),
    (r"(?<=\s)<=(?=\s)", ["<"]), (r"(?<=\s)>=(?=\s)", [">"]),
    (r"(?<=\s)<(?=\s)", ["<="]), (r"(?<=\s)>(?=\s)", [">="]),
    (r"&&(?=\s)", ["||"]), (r"\|\|", ["&&"]),
    (r"(?<=\s)\+(?=\s)", ["-"]), (r"(?<=\s)-(?=\s)", ["+"]),
    (r"(?<=\s)\*(?=\s\d)", ["/"]), (r"(?<=\s)/(?=\s)", ["*"]),
    (r"\+\+", ["--"]), (r"\+=", ["-="]),
    (r"\btrue\b", ["false"]), (r"\bfalse\b", ["true"]),
    (r"(?<=[(\s])!(?=[a-zA-Z(])", [""]),
    (r"(?<![\w.'])\d+(?![\w.'])", ["{+1}"]),
    (r"\bif \((?=[^;{]*\))", ["negated"]),
]
STATEMENT = re.compile(r"^\s+(?!return\b|const\b|auto\b|using\b|case\b|break\b|continue\b|public\b"
                       r"|private\b|throw\b|else\b|if\b|for\b|while\b|do\b|switch\b|static\b"
                       r"|template\b|namespace\b)[\w:>.\-*]+(\(.*\)| [+\-|&]?= .*|\+\+|--);\s*$")


def blanked(text):
    """The text with comments, literals and directives as blanks; every line keeps its length."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"'
                         r"|'(?:\\.|[^'\\\n])+'|^\s*#[^\n]*", re.S | re.M)
    return pattern.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)


def negate(line, start):
    """The line with the condition that opens behind `if ` negated; None where it goes on below."""
    opening = line.index("(", start)
    depth = 0
    for place in range(opening, len(line)):
        depth += {"(": 1, ")": -1}.get(line[place], 0)
        if depth == 0:
            condition = line[opening + 1:place]
            if ";" in condition or condition.startswith("const "):
                return None
            return f"{line[:opening]}(!({condition})){line[place + 1:]}"
    return None


def changes_of_line(line, code):
    """Every changed form of one line; `code` is the same line with comments and texts blanked."""
    for pattern, replacements in REPLACEMENTS:
        for match in re.finditer(pattern, code):
            if pattern.startswith(r"\bif"):
                changed = negate(line, match.start())
                if changed:
                    yield changed
                continue
            for replacement in replacements:
                new = str(int(match.group(), 10) + 1) if replacement == "{+1}" else replacement
                yield line[:match.start()] + new + line[match.end():]
    if STATEMENT.match(code):
        yield re.match(r"\s*", line).group() + ";"


def changes_of_folder(folder):
    for path in sorted((ROOT / folder).rglob("*.cpp")):
        text = path.read_text()
        lines, code = text.split("\n"), blanked(text).split("\n")
        for number, line in enumerate(lines):
            for changed in changes_of_line(line, code[number]):
                yield path.relative_to(ROOT), number, changed


class Program:
    """A test program: its quick cases, its slow ones, and how long each lot may take."""

    def __init__(self, name):
        self.name = name
        self.lots = []

    def measure(self):
        """Runs every case as it is; False when one fails."""
        report = COPY / "build" / f"{self.name}.json"
        if not self.run("*", SECONDS_OF_A_BUILD, f"--gtest_output=json:{report}"):
            return False
        seconds = {f"{suite['name']}.{case['name']}": float(case["time"].rstrip("s"))
                   for suite in json.loads(report.read_text())["testsuites"]
                   for case in suite["testsuite"]}
        slow = [name for name, taken in seconds.items() if taken >= SLOW_CASE]
        taken_by_slow = sum(seconds[name] for name in slow)
        self.lots = [(f"-{':'.join(slow)}", sum(seconds.values()) - taken_by_slow)]
        if slow:
            self.lots.append((":".join(slow), taken_by_slow))
        return True

    def passes(self):
        """Whether all cases pass, the quick ones first; a time-out is a failure."""
        return all(self.run(cases, 30 + 5 * taken) for cases, taken in self.lots)

    def run(self, cases, seconds, *options):
        return run([f"build/bin/{self.name}", "--gtest_brief=1", "--gtest_fail_fast",
                    f"--gtest_filter={cases}", *options], seconds)


def run(command, seconds):
    """Whether a command succeeds; when its time is up, what it started ends with it."""
    limits = ["timeout", "--signal=KILL", str(seconds), "prlimit", f"--as={BYTES_OF_A_PROGRAM}"]
    done = subprocess.run([*limits, *command], cwd=COPY, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False)
    return done.returncode == 0


def build(programs):
    return run(["cmake", "--build", "build", "--target", *(program.name for program in programs)],
               SECONDS_OF_A_BUILD)


def prepare(programs):
    files = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True,
                           check=True).stdout
    COPY.mkdir(parents=True, exist_ok=True)
    # Times are not copied: an object of the last change may be younger than the original.
    subprocess.run(["rsync", "-a", "--no-times", "--checksum", "--files-from=-", f"{ROOT}/",
                    f"{COPY}/"], input=files, text=True, check=True)
    if not (COPY / "build" / "build.ninja").exists():
        subprocess.run(["cmake", "-S", ".", "-B", "build", "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=",
                        "-DVESK_JOINED_TESTS=ON", "-DCMAKE_CXX_COMPILER_LAUNCHER=env;"
                        "CCACHE_SLOPPINESS=pch_defines,time_macros;ccache"],
                       cwd=COPY, stdout=subprocess.DEVNULL, check=True)
    if not build(programs) or not all(program.measure() for program in programs):
        sys.exit("the tests do not pass as they are")


def outcome(path, number, changed, programs):
    file = COPY / path
    original = file.read_text()
    lines = original.split("\n")
    lines[number] = changed
    file.write_text("\n".join(lines))
    try:
        if not build(programs):
            return "does not compile"
        return "survived" if all(program.passes() for program in programs) else "noticed"
    finally:
        file.write_text(original)


def equivalents():
    """Files with a line before and after, where the change is known to be seen by nothing."""
    changes = set()
    for entry in EQUIVALENT.read_text().splitlines():
        if entry and not entry.startswith("#"):
            file, before, after, _reason = entry.split(" | ", 3)
            changes.add((file, before, after))
    return changes


def original_line(path, number):
    return (ROOT / path).read_text().split("\n")[number].strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", choices=FOLDERS)
    parser.add_argument("--sample", type=int, default=0, help="try so many places, not all")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true", help="print the changes, try none")
    arguments = parser.parse_args()
    bar, names = FOLDERS[arguments.folder]
    programs = [Program(name) for name in names]
    todo = list(changes_of_folder(arguments.folder))
    if arguments.sample and arguments.sample < len(todo):
        todo = sorted(random.Random(arguments.seed).sample(todo, arguments.sample))
    known = equivalents()
    todo = [(path, number, changed) for path, number, changed in todo
            if (str(path), original_line(path, number), changed.strip()) not in known]
    if arguments.list:
        for path, number, changed in todo:
            print(f"{path}:{number + 1}: {changed.strip()}")
        return
    prepare(programs)
    counts = {"noticed": 0, "survived": 0, "does not compile": 0}
    for path, number, changed in todo:
        result = outcome(path, number, changed, programs)
        counts[result] += 1
        if result == "survived":
            print(f"{path}:{number + 1}: {original_line(path, number)}\n    => {changed.strip()}",
                  flush=True)
    tried = counts["noticed"] + counts["survived"]
    share = counts["noticed"] / tried if tried else 1.0
    print(f"{arguments.folder}: {counts['noticed']} of {tried} changes noticed ({share:.1%}, "
          f"bar {bar:.0%}); {counts['does not compile']} did not compile")
    sys.exit(0 if share >= bar else 1)


if __name__ == "__main__":
    main()
