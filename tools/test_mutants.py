#!/usr/bin/env python3
"""Which tests catch a planted fault that no other test catches.

Keeps the suite lean with evidence: a test may go when every fault it catches
is caught by the rest of the suite too.

  tools/test_mutants.py coverage BUILD OUT
      BUILD is a build configured with --coverage (see below). Runs every test
      on its own and writes OUT/<test>.txt: the program lines it executed.
  tools/test_mutants.py mutants BUILD OUT CANDIDATES FILE[,FILE...] [PER_LINE]
      Plants faults, one at a time, in the lines of FILE the candidate tests
      (one name a line in CANDIDATES) execute: a comparison turned, a sum made
      a difference, a constant moved by one, a condition inverted. PER_LINE
      faults a line (1 by default). After each rebuild the candidates run; a
      fault one of them catches is then given to the other tests that execute
      that line, fastest program first, until one fails. Prints each caught
      fault as "ok" (the rest caught it too) or "LOST" (only candidates did),
      then a line a candidate: faults caught, of them lost.

A coverage build, beside the others:
  cmake -S . -B build/coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug \\
    -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g --coverage" -DCMAKE_C_FLAGS_DEBUG="-O1 -g --coverage" \\
    -DCMAKE_EXE_LINKER_FLAGS=--coverage -DPELLUCIDA_BENCH=OFF
  cmake --build build/coverage

The faults are planted in the checkout the build compiles, in place, and
taken out again; nothing else may build from that checkout meanwhile. Script
tests (windows, install) are not run for a fault and count as not catching it,
so a LOST is on the safe side.
"""
import collections
import glob
import json
import os
import random
import re
import subprocess
import sys

LAYERS = ("host", "image", "formats", "ui", "modules", "app")
SLOW = {"Soak.RandomUseNeverCrashesHangsOrChangesTheImageOnCancel"}  # random, time-bound
ORDER = ["ui_tests", "modules_tests", "image_tests", "host_tests", "formats_tests", "app_tests"]
FAULTS = [(r"<=", "<"), (r"(?<![<>=!])<(?![<=])", "<="), (r">=", ">"), (r"(?<![<>=\-])>(?![>=])", ">="),
          (r"==", "!="), (r"!=", "=="), (r" \+ 1\b", ""), (r" - 1\b", ""), (r" \+ ", " - "),
          (r" - ", " + "), (r"&&", "||"), (r"\|\|", "&&"), (r"\btrue\b", "false"),
          (r"\bfalse\b", "true"), (r"\b([2-9]|[1-9][0-9]+)\b", None), (r"\* 2\b", "* 3"),
          (r">> 1\b", ">> 2")]


def source_of(build):
    """The checkout the build compiles (its sources are the ones to fault)."""
    with open(os.path.join(build, "CMakeCache.txt")) as cache:
        for line in cache:
            if line.startswith("CMAKE_HOME_DIRECTORY:"):
                return line.split("=", 1)[1].strip()
    sys.exit("not a CMake build: " + build)


def tests_of(build):
    shown = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, capture_output=True, text=True)
    tests = {}
    for t in json.loads(shown.stdout)["tests"]:
        env, folder = {}, build
        for p in t.get("properties", []):
            if p["name"] == "ENVIRONMENT":
                env = dict(v.split("=", 1) for v in p["value"])
            if p["name"] == "WORKING_DIRECTORY":
                folder = p["value"]
        tests[t["name"]] = (t["command"][0], tuple(sorted(env.items())), folder)
    return tests


def coverage(build, out):
    source = source_of(build)
    os.makedirs(out, exist_ok=True)
    for name in tests_of(build):
        for old in glob.glob(os.path.join(build, "**", "*.gcda"), recursive=True):
            os.remove(old)
        subprocess.run(["ctest", "-R", "^" + re.escape(name) + "$"], cwd=build, capture_output=True)
        counted = glob.glob(os.path.join(build, "CMakeFiles", "pellucida*.dir", "**", "*.gcda"), recursive=True)
        report = subprocess.run(["gcov", "-j", "-t"] + counted, cwd=build, capture_output=True, text=True)
        lines = set()
        for doc in report.stdout.splitlines():
            if not doc.startswith("{"):
                continue
            for f in json.loads(doc)["files"]:
                path = os.path.relpath(os.path.realpath(f["file"]), source)
                if path.split(os.sep)[0] in LAYERS:
                    lines |= {f"{path}:{ln['line_number']}" for ln in f["lines"] if ln["count"] > 0}
        with open(os.path.join(out, name + ".txt"), "w") as f:
            f.write("\n".join(sorted(lines)) + "\n")
        print(name, len(lines), flush=True)


def failing(tests, names, first_only):
    """The names that fail (a crash or a hang names the first of its group)."""
    groups = collections.defaultdict(list)
    for n in names:
        program, env, folder = tests[n]
        if os.path.basename(program) in ORDER:
            groups[(program, env, folder)].append(n)
    failed = set()
    for key in sorted(groups, key=lambda k: ORDER.index(os.path.basename(k[0]))):
        program, env, folder = key
        args = [program, "--gtest_filter=" + ":".join(groups[key])] + (["--gtest_fail_fast"] if first_only else [])
        try:
            run = subprocess.run(args, cwd=folder, env={**os.environ, **dict(env)}, capture_output=True,
                                 text=True, timeout=60)
            found = {a + "." + b for a, b in re.findall(r"\[  FAILED  \] (\S+?)\.(\S+) \(", run.stdout)}
            failed |= found or ({groups[key][0]} if run.returncode != 0 else set())
        except subprocess.TimeoutExpired:
            failed.add(groups[key][0])
        if first_only and failed:
            break
    return failed


def mutants(build, out, candidates_file, files, per_line):
    source = source_of(build)
    tests = tests_of(build)
    covered = {}
    for path in glob.glob(os.path.join(out, "*.txt")):
        covered[os.path.basename(path)[:-4]] = set(open(path).read().split())
    candidates = set(open(candidates_file).read().split())
    caught, lost = collections.Counter(), collections.Counter()
    rng = random.Random(1)
    for name in files.split(","):
        path = os.path.join(source, name)
        original = open(path).read()
        lines = original.split("\n")
        try:
            for i, line in enumerate(lines):
                text = line.strip()
                if not text or text.startswith(("//", "#", "*", "/*")):
                    continue
                here = [t for t, c in covered.items() if f"{name}:{i + 1}" in c and t not in SLOW]
                mine = [t for t in here if t in candidates]
                if not mine:
                    continue
                variants = []
                for pattern, replacement in FAULTS:
                    for m in re.finditer(pattern, line):
                        new = str(int(m.group(0)) + 1) if replacement is None else replacement
                        variants.append(line[:m.start()] + new + line[m.end():])
                rng.shuffle(variants)
                for variant in variants[:per_line]:
                    open(path, "w").write("\n".join(lines[:i] + [variant] + lines[i + 1:]))
                    built = subprocess.run(["ninja"], cwd=build, capture_output=True).returncode == 0
                    by = failing(tests, mine, False) if built else set()
                    rest = failing(tests, [t for t in here if t not in candidates], True) if by else set()
                    open(path, "w").write(original)
                    if not by:
                        continue
                    for t in by:
                        caught[t] += 1
                        lost[t] += not rest
                    print(("ok   " if rest else "LOST ") + f"{name}:{i + 1}  {variant.strip()}  by " +
                          ",".join(sorted(by)), flush=True)
        finally:
            open(path, "w").write(original)
    subprocess.run(["ninja"], cwd=build, capture_output=True)
    for t in sorted(candidates):
        print(f"{caught[t]:4} caught {lost[t]:3} lost  {t}")


if __name__ == "__main__":
    if len(sys.argv) >= 4 and sys.argv[1] == "coverage":
        coverage(os.path.abspath(sys.argv[2]), sys.argv[3])
    elif len(sys.argv) >= 6 and sys.argv[1] == "mutants":
        mutants(os.path.abspath(sys.argv[2]), sys.argv[3], sys.argv[4], sys.argv[5],
                int(sys.argv[6]) if len(sys.argv) > 6 else 1)
    else:
        sys.exit(__doc__)
