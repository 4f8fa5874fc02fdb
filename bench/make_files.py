#!/usr/bin/python3
"""Writes a tree of test files for the benchmarks: nested folders of real
pictures (JPEG and PNG that decode), text, and opaque binary files, with a
manifest of their SHA-256 sums. Needs Debian's python3-pil.

usage: make_files.py OUTDIR TOTAL_MIB SEED
"""
import hashlib
import io
import os
import random
import struct
import sys

from PIL import Image

KINDS = ["jpg", "jpg", "png", "txt", "bin"]


def body(rng, size):
    return rng.randbytes(size) if hasattr(rng, "randbytes") else os.urandom(size)


def picture(rng, kind, size):
    # Noise compresses badly, so the pixel count sets the file size.
    side = max(16, int((size / (3 if kind == "png" else 1.2)) ** 0.5))
    img = Image.frombytes("RGB", (side, side), body(rng, side * side * 3))
    out = io.BytesIO()
    img.save(out, "JPEG" if kind == "jpg" else "PNG", quality=90)
    return out.getvalue()


def make_file(rng, kind, size):
    if kind in ("jpg", "png"):
        return picture(rng, kind, size)
    if kind == "txt":
        words = [b"recover", b"lost", b"file", b"disk", b"cluster", b"folder", b"\n"]
        out = bytearray()
        while len(out) < size:
            out += rng.choice(words) + b" "
        return bytes(out[:size])
    return body(rng, size)


def main():
    outdir, total_mib, seed = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    rng = random.Random(seed)
    budget = total_mib * 1024 * 1024
    manifest = []
    folder_count = max(6, total_mib // 8)
    folders = []
    for i in range(folder_count):
        depth = rng.randint(1, 3)
        parts = ["dir%03d" % i] + ["sub%d" % rng.randint(0, 3) for _ in range(depth - 1)]
        folders.append(os.path.join(*parts))
    written = 0
    n = 0
    while written < budget:
        folder = folders[n % len(folders)]
        kind = KINDS[rng.randrange(len(KINDS))]
        size = min(int(rng.lognormvariate(11.5, 1.2)) + 100, 8 * 1024 * 1024, budget - written + 100)
        data = make_file(rng, kind, size)
        rel = os.path.join(folder, "file%05d.%s" % (n, kind))
        path = os.path.join(outdir, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(data)
        manifest.append((hashlib.sha256(data).hexdigest(), len(data), rel))
        written += len(data)
        n += 1
    with open(os.path.join(outdir, "..", os.path.basename(outdir) + ".manifest"), "w") as f:
        for h, size, rel in manifest:
            f.write("%s %d %s\n" % (h, size, rel))


if __name__ == "__main__":
    main()
