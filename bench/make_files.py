#!/usr/bin/env python3
"""Writes a tree of test files for the benchmarks: nested folders of files that
look like pictures, archives and documents (real signatures at their start,
random bodies), with a manifest of their SHA-256 sums.

usage: make_files.py OUTDIR TOTAL_MIB SEED
"""
import hashlib
import os
import random
import struct
import sys

KINDS = [
    ("jpg", b"\xff\xd8\xff\xe0\x00\x10JFIF\x00"),
    ("png", b"\x89PNG\r\n\x1a\n"),
    ("gif", b"GIF89a"),
    ("txt", b""),
    ("pdf", b"%PDF-1.4\n"),
    ("bin", b""),
]


def body(rng, size):
    return rng.randbytes(size) if hasattr(rng, "randbytes") else os.urandom(size)


def make_file(rng, kind, header, size):
    if kind == "txt":
        words = [b"recover", b"lost", b"file", b"disk", b"cluster", b"folder", b"\n"]
        out = bytearray()
        while len(out) < size:
            out += rng.choice(words) + b" "
        return bytes(out[:size])
    if kind == "png":
        return header + body(rng, size - len(header))
    return header + body(rng, max(0, size - len(header)))


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
        kind, header = KINDS[rng.randrange(len(KINDS))]
        size = min(int(rng.lognormvariate(11.5, 1.2)) + 100, 8 * 1024 * 1024, budget - written + 100)
        data = make_file(rng, kind, header, size)
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
