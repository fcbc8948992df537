#!/usr/bin/env python3
"""Counts C/C++ code lines (non-blank, not comment-only) of the program's
layers and of tests/, and prints the tests' share. Used to keep the suite in
proportion to the code it checks."""
import os
import re
import sys

CODE_DIRS = ["host", "image", "formats", "ui", "modules", "app", "tools"]
SUFFIXES = (".h", ".hpp", ".c", ".cc", ".cpp")


def count(path):
    lines = 0
    in_block = False
    with open(path, encoding="utf-8", errors="replace") as f:
        for raw in f:
            line = raw.strip()
            if in_block:
                if "*/" in line:
                    in_block = False
                    line = line.split("*/", 1)[1].strip()
                else:
                    continue
            if line.startswith("/*"):
                if "*/" not in line:
                    in_block = True
                    continue
                line = line.split("*/", 1)[1].strip()
            if not line or line.startswith("//"):
                continue
            lines += 1
    return lines


def tree(root, folder):
    total = 0
    per = {}
    for base, _, files in os.walk(os.path.join(root, folder)):
        for name in files:
            if name.endswith(SUFFIXES):
                n = count(os.path.join(base, name))
                total += n
                per[os.path.relpath(base, root)] = per.get(os.path.relpath(base, root), 0) + n
    return total, per


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")
    code = 0
    for folder in CODE_DIRS:
        n, _ = tree(root, folder)
        print(f"{folder:10} {n:6}")
        code += n
    tests, per = tree(root, "tests")
    for folder in sorted(per):
        print(f"  {folder:28} {per[folder]:6}")
    print(f"code {code}, tests {tests}, tests/code {100.0 * tests / code:.1f} %")


if __name__ == "__main__":
    main()
