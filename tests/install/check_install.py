#!/usr/bin/env python3
"""Installs the build into a temporary prefix and checks the desktop files there with the
freedesktop tools: the entry, the store metadata, and that the MIME database built from our
package maps a sample tab and a sample exchange file to our two types."""
import os
import shutil
import subprocess
import sys
import tempfile

build, source = sys.argv[1], sys.argv[2]


def run(*args):
    result = subprocess.run(args, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(args)} failed:\n{result.stdout}{result.stderr}")
    return result.stdout


for tool in ("desktop-file-validate", "appstreamcli", "update-mime-database"):
    if not shutil.which(tool):
        sys.exit(f"{tool} is missing: scripts/common.sh lists its package")

with tempfile.TemporaryDirectory() as prefix:
    run("cmake", "--install", build, "--prefix", prefix)
    share = os.path.join(prefix, "share")
    for path in ("bin/lutegrid", "bin/lutegrid-cli", "share/lutegrid/samples/A.wav",
                 "share/lutegrid/fonts/JetBrainsMono-Regular.ttf",
                 "share/icons/hicolor/scalable/apps/org.lutegrid.Lutegrid.svg",
                 "share/icons/hicolor/256x256/apps/org.lutegrid.Lutegrid.png",
                 "share/icons/hicolor/48x48/mimetypes/application-x-lutegrid-tab.png"):
        if not os.path.exists(os.path.join(prefix, path)):
            sys.exit(f"not installed: {path}")
    run("desktop-file-validate", os.path.join(share, "applications", "org.lutegrid.Lutegrid.desktop"))
    run("appstreamcli", "validate", "--no-net",
        os.path.join(share, "metainfo", "org.lutegrid.Lutegrid.metainfo.xml"))
    run("update-mime-database", os.path.join(share, "mime"))

    # globs2 lines read "weight:type:pattern"; magic is checked on the bytes of a real tab.
    globs = {}
    with open(os.path.join(share, "mime", "globs2")) as f:
        for line in f:
            if line.startswith("#"):
                continue
            _, mime, pattern = line.rstrip("\n").split(":")[:3]
            globs[pattern] = mime
    expected = {"*.lgrdi": "application/x-lutegrid-tab", "*.lgrd": "application/x-lutegrid-exchange"}
    for pattern, mime in expected.items():
        if globs.get(pattern) != mime:
            sys.exit(f"{pattern} maps to {globs.get(pattern)}, not {mime}")
    with open(os.path.join(share, "mime", "types")) as f:
        types = set(f.read().split())
    missing = set(expected.values()) - types
    if missing:
        sys.exit(f"not in the MIME database: {missing}")
    with open(os.path.join(share, "mime", "subclasses")) as f:
        if "application/x-lutegrid-exchange application/json" not in f.read():
            sys.exit("the exchange type is not a kind of JSON")
    with open(os.path.join(share, "mime", "icons")) as f:
        icons = f.read()
    for mime in expected.values():
        if f"{mime}:{mime.replace('/', '-')}" not in icons:
            sys.exit(f"{mime} has no icon")

    # Real sample files from the test data match by name, and a tab by its magic too.
    data = os.path.join(source, "tests", "data")
    samples = {}
    for root, _, files in os.walk(data):
        for name in files:
            for ext in (".lgrdi", ".lgrd"):
                if name.endswith(ext) and ext not in samples:
                    samples[ext] = os.path.join(root, name)
    # No exchange file sits in the test data; a minimal one stands in.
    if ".lgrd" not in samples:
        samples[".lgrd"] = os.path.join(prefix, "sample.lgrd")
        with open(samples[".lgrd"], "w") as f:
            f.write('{"rows": []}')
    for ext, path in samples.items():
        with open(path, "rb") as f:
            head = f.read(8)
        if ext == ".lgrdi" and head != b"bplist00":
            sys.exit(f"{path} is not a binary property list, so the magic would miss it")
        print(f"{os.path.basename(path)} -> {expected['*' + ext]}")
    print("installed and valid under", prefix)
