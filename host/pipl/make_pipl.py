#!/usr/bin/env python3
"""Writes the plug-in's property list (PiPL) from quillo_pipl.json in the two forms the host reads:

  --rsrc FILE   the Mac resource file: one 'PiPL' resource in the classic resource-fork layout
                (header, data, map with type list and reference list), all numbers big-endian.
  --win FILE    the Windows resource data: the same properties, little-endian, behind the
                16-bit word (1) that the Windows resource starts with.

The version (major.minor.bug) comes from the build; the host reads it packed as its effects' are:
major << 19 | minor << 15 | bug << 11 | stage << 9 | build, released stage (3), build 0.
"""
import argparse
import json
import struct
import sys

VENDOR = "8BIM"
# Entry point property keys by platform, and whether the symbol is a Pascal string (the Mac's
# resource compiler) or a C string (the Windows one).
# Each form holds the entry points of its own platform only.
ENTRY_KEYS = {"macIntel64": ("mi64", "pascal", False), "macArm64": ("ma64", "pascal", False),
              "winX64": ("8664", "c", True)}


def pad4(data):
    return data + b"\0" * (-len(data) % 4)


def pascal(text):
    raw = text.encode("mac_roman")
    if len(raw) > 255:
        sys.exit("make_pipl: %r is longer than 255 bytes" % text)
    return bytes([len(raw)]) + raw


def packed_version(text):
    parts = [int(p) for p in text.split(".")] + [0, 0]
    major, minor, bug = parts[:3]
    if major >= 1 << 13 or minor >= 16 or bug >= 16:
        sys.exit("make_pipl: version %s does not fit" % text)
    return major << 19 | minor << 15 | bug << 11 | 3 << 9


def properties(desc, version, windows):
    """(key, value bytes, stated length) in the order the host lists them."""
    def code(text):
        return text.encode("ascii")[::-1] if windows else text.encode("ascii")

    def number(value):
        return struct.pack("<I" if windows else ">I", value)

    props = [("kind", code(desc["kind"])), ("name", pascal(desc["name"])),
             ("catg", pascal(desc["category"])), ("vers", number(packed_version(version)))]
    for platform, symbol in desc["entryPoints"].items():
        key, form, for_windows = ENTRY_KEYS[platform]
        if for_windows == windows:
            props.append((key, symbol.encode("ascii") + b"\0" if form == "c" else pascal(symbol)))
    # The Mac's resource compiler states a string's own length and pads after it; the Windows
    # resources state the padded length.
    return [(key, value, len(pad4(value)) if windows else len(value)) for key, value in props]


def pipl(desc, version, windows):
    order = "<" if windows else ">"
    out = struct.pack("<H", 1) if windows else b""
    props = properties(desc, version, windows)
    out += struct.pack(order + "II", 0, len(props))
    for key, value, length in props:
        four = (lambda t: t.encode("ascii")[::-1]) if windows else (lambda t: t.encode("ascii"))
        out += four(VENDOR) + four(key) + struct.pack(order + "II", 0, length) + pad4(value)
    return out


def resource_file(resource_type, resource_id, data):
    """A resource fork holding one resource, without a name."""
    data_offset = 256  # after the header and the bytes reserved for the system
    data_area = struct.pack(">I", len(data)) + data
    type_list = struct.pack(">H", 0) + resource_type.encode("ascii") + struct.pack(">HH", 0, 2 + 8)
    reference = struct.pack(">hhI", resource_id, -1, 0) + struct.pack(">I", 0)  # attributes 0, offset 0
    map_body = type_list + reference
    type_list_offset = 28
    name_list_offset = type_list_offset + len(map_body)
    map_offset = data_offset + len(data_area)
    map_length = name_list_offset
    header = struct.pack(">IIII", data_offset, map_offset, len(data_area), map_length)
    resource_map = header + struct.pack(">IhHHH", 0, 0, 0, type_list_offset, name_list_offset) + map_body
    return header + b"\0" * (data_offset - len(header)) + data_area + resource_map


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--rsrc")
    parser.add_argument("--win")
    args = parser.parse_args()
    with open(args.json, encoding="utf-8") as f:
        desc = json.load(f)
    if args.rsrc:
        with open(args.rsrc, "wb") as f:
            f.write(resource_file("PiPL", desc["resourceId"], pipl(desc, args.version, False)))
    if args.win:
        with open(args.win, "wb") as f:
            f.write(pipl(desc, args.version, True))


if __name__ == "__main__":
    main()
