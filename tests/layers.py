#!/usr/bin/env python3
"""Checks that no include runs up a layer, and that the app's singletons stay out of the layers
that take settings and sound as values.

The layers and what each may use come from the build itself: every src/<layer>/CMakeLists.txt
says `lutegrid_layer(<layer> DEPENDS ...)`. A file of a layer may include its own layer's
headers and those of the layers it depends on, directly or through others. Files in `view/`
sub-folders belong to the app and may include any layer.
"""

import pathlib
import re
import sys

# The layers that are handed settings and sound by whoever sits above them.
VALUE_LAYERS = {"model", "music", "sound", "surface"}
# A call, not the definition `SavedData &SavedData::shared()`.
SINGLETON_CALL = re.compile(r"(?<![&\w])(SavedData|SoundManager)::shared\(\)")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"/]+)/[^"]+"', re.MULTILINE)
LAYER = re.compile(r"lutegrid_layer\(\s*(\w+)([^)]*)\)")


def read_layers(src):
    direct = {}
    for cmake in sorted(src.glob("*/CMakeLists.txt")):
        for match in LAYER.finditer(cmake.read_text()):
            deps, words = [], match.group(2).split()
            if "DEPENDS" in words:
                for word in words[words.index("DEPENDS") + 1:]:
                    if word == "SOURCES":
                        break
                    deps.append(word)
            direct[match.group(1)] = deps
    below = {}

    def closure(layer, seen=()):
        if layer in seen:
            raise SystemExit(f"layers: {' -> '.join(seen + (layer,))} is a loop")
        if layer not in below:
            found = set()
            for dep in direct.get(layer, []):
                found |= {dep} | closure(dep, seen + (layer,))
            below[layer] = found
        return below[layer]

    for layer in direct:
        closure(layer)
    return below


def check(root):
    src = root / "src"
    below = read_layers(src)
    if not below:
        return below, [f"layers: no lutegrid_layer() found under {src}"]
    faults = []
    for layer, allowed in sorted(below.items()):
        for path in sorted((src / layer).rglob("*")):
            if path.suffix not in (".h", ".cpp") or "view" in path.relative_to(src).parts:
                continue
            text = path.read_text(encoding="utf-8")
            where = path.relative_to(root)
            for match in INCLUDE.finditer(text):
                target = match.group(1)
                if target in below and target != layer and target not in allowed:
                    line = text.count("\n", 0, match.start()) + 1
                    faults.append(
                        f"{where}:{line}: the {layer} layer includes {match.group(0).strip()}, "
                        f"but {target} is not below {layer} (it may use: "
                        f"{', '.join(sorted(allowed)) or 'nothing'})")
            if layer in VALUE_LAYERS:
                for match in SINGLETON_CALL.finditer(text):
                    line = text.count("\n", 0, match.start()) + 1
                    faults.append(
                        f"{where}:{line}: the {layer} layer calls {match.group(0)}; it takes "
                        f"settings and sound as values from the layer above it")
    return below, faults


def self_test():
    """The check itself, on a small tree that breaks each rule once."""
    import tempfile

    files = {
        "src/model/CMakeLists.txt": "lutegrid_layer(model SOURCES a.h)",
        "src/surface/CMakeLists.txt": "lutegrid_layer(surface DEPENDS model SOURCES b.h)",
        "src/editor/CMakeLists.txt": "lutegrid_layer(editor DEPENDS surface SOURCES c.h)",
        "src/model/a.cpp": '#include "a.h"\n#include "editor/c.h"\n',
        "src/model/view/item.cpp": '#include "editor/c.h"\n',
        "src/surface/b.cpp": '#include "model/a.h"\nint x = SavedData::shared().n;\n',
        "src/editor/c.cpp": '#include "model/a.h"\nint y = SavedData::shared().n;\n',
        "src/editor/d.cpp": "SavedData &SavedData::shared() {}\n",
    }
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in files.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        below, faults = check(root)
    assert below == {"model": set(), "surface": {"model"}, "editor": {"surface", "model"}}, below
    assert len(faults) == 2, faults
    assert faults[0].startswith("src/model/a.cpp:2: the model layer includes"), faults
    assert "surface layer calls SavedData::shared()" in faults[1], faults
    print("layers: the check finds an upward include and a singleton in a value layer")
    return 0


def main():
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    below, faults = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "."))
    for fault in faults:
        print(fault)
    print(f"layers: {len(below)} layers checked, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
