#!/usr/bin/env python3
"""Writes the seed inputs of the foundation fuzz targets into fuzz/corpus/. Run from anywhere."""
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "corpus")
MAGIC = bytes([0x4E, 0x42, 0x43, 0x48, 0x46, 0, 0, 1])
LEGACY = bytes([0x4E, 0x42, 0x43, 0x46, 0x48, 0, 0, 1])


def chunk(ident, data, claimed=None):
    return struct.pack("<II", ident, len(data) if claimed is None else claimed) + data


def save(target, name, data):
    folder = os.path.join(ROOT, target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


def chunk_seeds():
    settings = MAGIC + b"".join([
        chunk(1, struct.pack("<i", 1)), chunk(2, struct.pack("<i", 3)),
        chunk(3, b"/Users/artist/Documents/Tarvelo/Quillo/Capture"), chunk(4, b"\x01"),
        chunk(5, struct.pack("<q", 1700000000)), chunk(7, struct.pack("<i", 49)),
        chunk(8, b"Space"), chunk(9, struct.pack("<i", 1)), chunk(10, struct.pack("<i", 0)),
        chunk(11, struct.pack("<i", 0)), chunk(12, struct.pack("<i", 0)),
    ])
    save("chunk_file_fuzzer", "settings", settings)
    save("chunk_file_fuzzer", "legacy_repeats", LEGACY + chunk(9, struct.pack("<i", 5)) + chunk(9, struct.pack("<i", 7)) + chunk(4, b""))
    save("chunk_file_fuzzer", "zero_in_middle", MAGIC + chunk(1, b"\x01\0\0\0") + chunk(0, b"x") + chunk(2, b"\x02\0\0\0"))
    save("chunk_file_fuzzer", "magic_only", MAGIC)
    save("chunk_file_fuzzer", "cut_short", MAGIC + chunk(1, b"\x01\0\0\0") + chunk(3, b"abc", 40))


def fnv1a(text):
    h = 14695981039346656037
    for c in text:
        h = ((h ^ c) * 1099511628211) % 2**64
    return h


def cache_header(entries, slots=50, max_size=524288000):
    out = bytearray(b"NBMPC\0\0\0" + struct.pack("<QQ", max_size, slots) + bytes(200 * slots))
    for index, (name, offset, size, used) in enumerate(entries):
        key = name + str(fnv1a(name)).encode()
        slot = key.ljust(152, b"\0") + struct.pack("<QQddQII", offset, size, used, used, index, 1, 0)
        out[24 + 200 * index:24 + 200 * (index + 1)] = slot
    return bytes(out)


def cache_input(flags, header, data, ops):
    return bytes([flags]) + struct.pack("<II", len(header), len(data)) + header + data + bytes(ops)


def cache_seeds():
    entries = [(b"n0", 0, 100, 3.0), (b"n1", 100, 200, 1.0), (b"n2", 300, 50, 2.0)]
    header = cache_header(entries)
    data = bytes(i % 251 for i in range(350))
    # get n0, get n1, set n2 (length 300), remove n1, remove oldest, defrag
    ops = [0x00, 0x10, 0x22, 0x2C, 0x01, 0x13, 0x04, 0x05]
    save("mapped_cache_fuzzer", "three_values", cache_input(0, header, data, ops))
    save("mapped_cache_fuzzer", "read_only", cache_input(1, header, data, [0x00, 0x10, 0x20, 0x02, 0x10, 0x00]))
    save("mapped_cache_fuzzer", "small_limit", cache_input(2, b"", b"", [0x20, 0x00] + [0x02, 0x30, 0x00, 0x12, 0x40, 0x01, 0x00]))
    save("mapped_cache_fuzzer", "grown_header", cache_input(0, cache_header(entries, slots=60), data, [0x00, 0x22, 0x10, 0x00]))


chunk_seeds()
cache_seeds()
