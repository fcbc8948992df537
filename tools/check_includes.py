#!/usr/bin/env python3
"""Checks the include graph of the program's layers.

Fails (status 1) on
  - an include of a higher layer (each layer may include its own folder and
    the layers below it, as the build links them), or one that climbs out of
    its folder with "..";
  - an include cycle whose files lie in more than one folder. A header and
    the source file of the same name count as one node, since together they
    are one unit that others depend on.
Cycles inside one folder are listed but tolerated.

Usage: check_includes.py [repository root]
"""
import os
import re
import sys

# Each layer and the folders it may include from.
ALLOWED = {
    "host": {"host"},
    "image": {"host", "image"},
    "formats": {"host", "image", "formats"},
    "ui": {"host", "image", "ui"},
    "modules": {"host", "image", "modules"},
    "app": {"host", "image", "formats", "ui", "modules", "app"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def read_includes(root):
    """Maps every source file of the layers (relative path) to its quoted includes."""
    files = {}
    for layer in ALLOWED:
        for base, _, names in os.walk(os.path.join(root, layer)):
            for name in names:
                if name.endswith((".h", ".cpp")):
                    path = os.path.relpath(os.path.join(base, name), root).replace(os.sep, "/")
                    with open(os.path.join(root, path), encoding="utf-8", errors="replace") as f:
                        files[path] = INCLUDE.findall(f.read())
    return files


def resolve(root, path, include):
    """The repository path an include names: beside the file first, then from the root."""
    beside = os.path.normpath(os.path.join(os.path.dirname(path), include)).replace(os.sep, "/")
    if os.path.exists(os.path.join(root, beside)):
        return beside
    if os.path.exists(os.path.join(root, include)):
        return include
    return None


def node(path):
    return os.path.splitext(path)[0]


def strongly_connected(graph):
    """Tarjan's algorithm, iterative; returns the components of more than one node."""
    index, low, on_stack, stack, found = {}, {}, set(), [], []
    counter = 0
    for start in sorted(graph):
        if start in index:
            continue
        work = [(start, iter(sorted(graph[start])))]
        index[start] = low[start] = counter
        counter += 1
        stack.append(start)
        on_stack.add(start)
        while work:
            v, children = work[-1]
            advanced = False
            for w in children:
                if w not in index:
                    index[w] = low[w] = counter
                    counter += 1
                    stack.append(w)
                    on_stack.add(w)
                    work.append((w, iter(sorted(graph.get(w, ())))))
                    advanced = True
                    break
                if w in on_stack:
                    low[v] = min(low[v], index[w])
            if advanced:
                continue
            work.pop()
            if work:
                low[work[-1][0]] = min(low[work[-1][0]], low[v])
            if low[v] == index[v]:
                component = []
                while True:
                    w = stack.pop()
                    on_stack.discard(w)
                    component.append(w)
                    if w == v:
                        break
                if len(component) > 1:
                    found.append(sorted(component))
    return found


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")
    files = read_includes(root)
    errors = 0
    graph = {}
    for path, includes in sorted(files.items()):
        layer = path.split("/")[0]
        for include in includes:
            if include.startswith("..") or "/../" in include:
                print(f"{path}: includes \"{include}\", which leaves its folder")
                errors += 1
                continue
            top = include.split("/")[0]
            if top in ALLOWED and top not in ALLOWED[layer]:
                print(f"{path}: includes \"{include}\" of the higher layer {top}/")
                errors += 1
            target = resolve(root, path, include)
            if target and target in files and node(target) != node(path):
                graph.setdefault(node(path), set()).add(node(target))
    for component in strongly_connected(graph):
        folders = sorted({os.path.dirname(n) for n in component})
        if len(folders) > 1:
            print(f"include cycle across {', '.join(folders)}: {' '.join(component)}")
            errors += 1
        else:
            print(f"note: include cycle inside {folders[0]}: {' '.join(component)}")
    if errors:
        print(f"{errors} include problem(s)")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
