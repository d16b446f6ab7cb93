#!/usr/bin/env python3
"""Restores pictures with metadata from and to every format, compares the metadata with exiftool, and
checks or rewrites the table of docs/formats.md.

    metadata.py VELORN --check docs/formats.md
    metadata.py VELORN --update docs/formats.md

Fails if a block is neither kept nor named in the warning, if a tag appears that the source does not
have, or (with --check) if the table differs from the results."""

import argparse
import base64
import json
import pathlib
import struct
import subprocess
import sys
import tempfile

SOURCES = ["jpg", "png", "tif", "webp", "heic"]
TARGETS = ["jpg", "png", "tif", "webp"]
NAMES = {"jpg": "JPEG", "png": "PNG", "tif": "TIFF", "webp": "WebP", "heic": "HEIC"}
WIDTH, HEIGHT = 64, 40
BEGIN = "<!-- metadata matrix: begin -->"
END = "<!-- metadata matrix: end -->"

# Tags that describe how a file stores its pixels, where the decoded values belong to the file.
STORAGE = {
    "ImageWidth", "ImageHeight", "BitsPerSample", "Compression", "PhotometricInterpretation",
    "StripOffsets", "SamplesPerPixel", "RowsPerStrip", "StripByteCounts", "PlanarConfiguration",
    "Predictor", "SampleFormat", "ExtraSamples", "YCbCrPositioning", "YCbCrSubSampling",
    "ExifByteOrder", "FillOrder", "SubfileType"}
# Written by tools that create a packet, and the announcement of extended XMP.
WRITER = {"XMPToolkit", "HasExtendedXMP"}


def run(*words, **options):
    return subprocess.run([str(word) for word in words], capture_output=True, check=False, **options)


def must(*words):
    result = run(*words)
    if result.returncode != 0:
        sys.exit(f"{words[0]} fails: {result.stderr.decode(errors='replace')}")
    return result.stdout


# --- sources -------------------------------------------------------------------------------------


def write_pixels(path):
    pixels = bytes((7 * x * (c + 1) + 5 * y) % 256
                   for y in range(HEIGHT) for x in range(WIDTH) for c in range(3))
    path.write_bytes(b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT) + pixels)


def directory(entries, start):
    """A TIFF directory at offset `start` with (tag, type, count, bytes) entries."""
    body = struct.pack("<H", len(entries))
    data = b""
    data_start = start + 2 + 12 * len(entries) + 4
    for tag, kind, count, value in sorted(entries):
        if len(value) <= 4:
            field = value.ljust(4, b"\0")
        else:
            field = struct.pack("<I", data_start + len(data))
            data += value + b"\0" * (len(value) % 2)
        body += struct.pack("<HHI", tag, kind, count) + field
    return body + struct.pack("<I", 0) + data


def text(tag, value):
    raw = value.encode() + b"\0"
    return (tag, 2, len(raw), raw)


def exif_block():
    """EXIF with the directory of a maker note whose values lie at offsets from the header."""
    def whole(note_at, exif_at):
        note = directory([text(6, "Synthetic picture"), text(7, "Firmware 1.2.3"),
                          text(9, "An owner with a name"), (12, 4, 1, struct.pack("<I", 1234567890))],
                         note_at)
        exif_entries = [(0x9000, 7, 4, b"0232"), text(0x9003, "2020:01:02 03:04:05"),
                        (0x829A, 5, 1, struct.pack("<II", 1, 250)), (0xA001, 3, 1, b"\1\0"),
                        text(0xA434, "Fifty"), (0x927C, 7, len(note), note)]
        exif = directory(exif_entries, exif_at)
        image = [text(0x10F, "Canon"), text(0x110, "Synthetic"), text(0x131, "By hand"),
                 (0x112, 3, 1, b"\1\0"),
                 (0x8769, 4, 1, struct.pack("<I", exif_at))]
        return b"II*\0\x08\0\0\0" + directory(image, 8), exif, note
    head, _, _ = whole(0, 0)
    exif_at = len(head)
    head, exif, note = whole(0, exif_at)
    note_at = exif_at + exif.index(note)
    head, exif, note = whole(note_at, exif_at)
    return head + exif


def with_exif(jpeg, block):
    segment = b"Exif\0\0" + block
    at = 2 + 2 + struct.unpack(">H", jpeg[4:6])[0] if jpeg[2:4] == b"\xff\xe0" else 2
    return jpeg[:at] + b"\xff\xe1" + struct.pack(">H", len(segment) + 2) + segment + jpeg[at:]


def profile():
    """An ICC profile with one text tag."""
    data = bytearray(168)
    data[0:4] = struct.pack(">I", 168)
    data[8:12] = b"\x02\x40\0\0"
    data[12:24] = b"mntrRGB XYZ "
    data[36:40] = b"acsp"
    data[68:80] = b"\0\0\xf6\xd6\0\1\0\0\0\0\xd3\x2d"
    data[128:144] = b"\0\0\0\1cprt\0\0\0\x90\0\0\0\x18"
    data[144:164] = b"text\0\0\0\0nobody's own"
    return bytes(data)


class Sources:
    """Pictures in every format, bare and with metadata."""

    def __init__(self, velorn, folder):
        self.velorn = velorn
        self.folder = folder
        write_pixels(folder / "pixels.ppm")
        for extension in TARGETS:
            must(velorn, "deblur", folder / "pixels.ppm", self.path("bare", extension), "--disc", "1")
        self.encode_heic(self.path("bare", "png"), self.path("bare", "heic"))
        self.make_full()
        self.make_oriented()
        self.make_resolution()

    def path(self, kind, extension):
        return self.folder / f"{kind}.{extension}"

    @staticmethod
    def encode_heic(source, target):
        must("heif-enc", "-q", "95", source, "-o", target)

    def make_full(self):
        (self.folder / "profile.icc").write_bytes(profile())
        (self.folder / "caption.txt").write_text("A caption of many words. " * 3600)
        thumbnail = self.path("thumbnail", "jpg")
        thumbnail.write_bytes(self.path("bare", "jpg").read_bytes())
        jpeg = self.path("full", "jpg")
        jpeg.write_bytes(with_exif(self.path("bare", "jpg").read_bytes(), exif_block()))
        must("exiftool", "-q", "-overwrite_original", "-GPSLatitude=48.5", "-GPSLatitudeRef=N",
             "-GPSLongitude=11.25", "-GPSLongitudeRef=E", "-IPTC:Keywords=first",
             "-IPTC:Keywords=second", "-IPTC:City=Somewhere", "-XMP-dc:Title=A title",
             "-XMP-dc:Subject=first", "-XMP-dc:Subject=second", "-XMP-crs:Sharpness=12",
             f"-XMP-dc:Description<={self.folder / 'caption.txt'}", "-Comment=A comment",
             f"-ICC_Profile<={self.folder / 'profile.icc'}", f"-ThumbnailImage<={thumbnail}",
             "-EXIF:XResolution=300", "-EXIF:YResolution=300", "-EXIF:ResolutionUnit=inches", jpeg)
        for extension in SOURCES[1:]:
            target = self.path("full", extension)
            if extension == "heic":
                # exiftool does not add a profile to these files; the encoder copies that of a JPEG file.
                self.encode_heic(jpeg, target)
            else:
                target.write_bytes(self.path("bare", extension).read_bytes())
            result = run("exiftool", "-q", "-overwrite_original", "-TagsFromFile", jpeg, "-all:all",
                         "-ICC_Profile", "-ThumbnailImage", "-PNG:Description<File:Comment", target)
            if b"Error" in result.stderr:
                sys.exit(result.stderr.decode())

    def make_oriented(self):
        for extension in SOURCES:
            for code in range(1, 9):
                target = self.path(f"turned{code}", extension)
                target.write_bytes(self.path("bare", extension).read_bytes())
        for code in range(1, 9):
            must("exiftool", "-q", "-overwrite_original", f"-IFD0:Orientation#={code}",
                 *(self.path(f"turned{code}", extension) for extension in SOURCES))

    def make_resolution(self):
        """The resolution where the format itself has a place for it, without EXIF."""
        tags = {"jpg": ["-JFIF:XResolution=240", "-JFIF:YResolution=240", "-JFIF:ResolutionUnit=inches"],
                "png": ["-PNG-pHYs:PixelsPerUnitX=9449", "-PNG-pHYs:PixelsPerUnitY=9449",
                        "-PNG-pHYs:PixelUnits=meters"]}
        in_exif = ["-IFD0:XResolution=240", "-IFD0:YResolution=240", "-IFD0:ResolutionUnit=inches"]
        for extension in SOURCES:
            target = self.path("dense", extension)
            target.write_bytes(self.path("bare", extension).read_bytes())
            must("exiftool", "-q", "-overwrite_original", *tags.get(extension, in_exif), target)


# --- comparison ----------------------------------------------------------------------------------


class Tags:
    """The metadata of a file as exiftool reads it: (general group, name) -> value."""

    def __init__(self, record):
        self.thumbnail = self.profile = b""
        self.all = {}
        for key, value in record.items():
            parts = key.split(":")
            if len(parts) > 1: # a group without subgroups has one name
                self.all[(parts[0], parts[-2], parts[-1])] = value

    def of(self, general, *groups):
        return {(group, name): value for (first, group, name), value in self.all.items()
                if first == general and name not in STORAGE | WRITER
                and (not groups or group in groups)}

    def value(self, name, *groups):
        for (_, group, tag), value in self.all.items():
            if tag == name and group in groups:
                return value
        return None

    def comment(self):
        return (self.value("Comment", "File") or self.value("Description", "PNG")
                or self.value("ImageDescription", "IFD0"))

    def exif(self):
        tags = self.of("EXIF", "IFD0", "ExifIFD", "InteropIFD")
        # The description may hold the comment.
        return {key: value for key, value in tags.items()
                if key[1] not in ("ImageDescription", "Orientation", "XResolution", "YResolution",
                                  "ResolutionUnit")}

    def texts(self):
        return {key: value for key, value in self.of("PNG").items()
                if key[1] not in ("BitDepth", "ColorType", "Filter", "Interlace", "ImageOffset",
                                  "Description", "ProfileName", "PixelUnits", "PixelsPerUnitX",
                                  "PixelsPerUnitY")}

    def dots_per_inch(self):
        metre = self.value("PixelsPerUnitX", "PNG-pHYs", "PNG")
        if metre:
            return round(metre * 0.0254)
        # The formats number the units differently.
        for group, inch, centimetre in (("IFD0", 2, 3), ("JFIF", 1, 2)):
            value = self.value("XResolution", group)
            unit = self.value("ResolutionUnit", group)
            if value and unit in (inch, centimetre):
                return round(float(value) * (2.54 if unit == centimetre else 1))
        return None


def decoded(value):
    return base64.b64decode(value.removeprefix("base64:")) if value else b""


def read_tags(folder):
    """The metadata of all pictures in `folder`, by name."""
    # Numbers, all groups, duplicates; lists stay lists.
    records = json.loads(must("exiftool", "-j", "-n", "-a", "-G0:1", "-struct", "-ext", "*", folder))
    tags = {pathlib.Path(record["SourceFile"]).name: Tags(record) for record in records}
    for record in json.loads(must("exiftool", "-j", "-b", "-ThumbnailImage", "-ICC_Profile", "-ext",
                                  "*", folder)):
        found = tags[pathlib.Path(record["SourceFile"]).name]
        found.thumbnail = decoded(record.get("ThumbnailImage"))
        found.profile = decoded(record.get("ICC_Profile"))
    return tags


class Failures:
    def __init__(self):
        self.lines = []

    def add(self, what):
        self.lines.append(what)


def cell(source, target, warning, word):
    """What happened to a block: `source` and `target` are its values in the two files."""
    if not source:
        return "–"
    if source == target:
        return "kept"
    return "warned" if word in warning else "LOST"


def restore(velorn, source, target):
    result = run(velorn, "deblur", source, target, "--disc", "1")
    errors = result.stderr.decode(errors="replace")
    if result.returncode != 0:
        sys.exit(f"{source} to {target}: {errors}")
    return errors


def jpeg_size(data):
    """Width and height of a JPEG file."""
    at = 2
    while at + 9 < len(data):
        marker, length = data[at + 1], struct.unpack(">H", data[at + 2:at + 4])[0]
        if 0xC0 <= marker <= 0xC3:
            height, width = struct.unpack(">HH", data[at + 5:at + 9])
            return width, height
        at += 2 + length
    return None


COLUMNS = ["EXIF", "maker note", "GPS", "XMP", "IPTC", "profile", "comment", "resolution",
           "orientation", "thumbnail"]


def full_row(source, target, warning, failures, label):
    row = {
        "EXIF": cell(source.exif(), target.exif(), warning, "EXIF"),
        "maker note": cell(source.of("MakerNotes"), target.of("MakerNotes"), warning, "maker note"),
        "GPS": cell(source.of("EXIF", "GPS"), target.of("EXIF", "GPS"), warning, "GPS"),
        "XMP": cell(source.of("XMP"), target.of("XMP"), warning, "XMP"),
        "IPTC": cell(source.of("IPTC"), target.of("IPTC"), warning, "IPTC"),
        "profile": cell(source.profile, target.profile, warning, "profile"),
        "comment": cell(source.comment(), target.comment(), warning, "comment"),
    }
    old, new = source.thumbnail, target.thumbnail
    if not old:
        row["thumbnail"] = "–"
    elif not new:
        row["thumbnail"] = "dropped"
    else:
        row["thumbnail"] = "renewed" if new != old and jpeg_size(new) == (WIDTH, HEIGHT) else "STALE"
    if warning.count("\n") > 1:
        failures.add(f"{label}: more than one warning")
    for what, before, after in (("EXIF", source.exif(), target.exif()),
                                ("XMP", source.of("XMP"), target.of("XMP")),
                                ("IPTC", source.of("IPTC"), target.of("IPTC")),
                                ("text", source.texts(), target.texts())):
        invented = sorted(name for _, name in set(after) - set(before))
        if invented:
            failures.add(f"{label}: invented {what}: {' '.join(invented)}")
    return row


def orientation_cell(pairs, is_turned_by_decoder):
    """`pairs`: orientation of the source and of the target, for 1..8."""
    if is_turned_by_decoder:
        return "1" if all(after in (None, 1) for _, after in pairs) else "LOST"
    return "kept" if all(before == after for before, after in pairs) else "LOST"


KINDS = ["full", "dense", "bare", *(f"turned{code}" for code in range(1, 9))]


def restore_all(velorn, sources):
    """Restores every picture to every format; returns the warnings by name of the result."""
    warnings = {}
    for before in SOURCES:
        for after in TARGETS:
            for kind in KINDS:
                name = f"{kind}-from-{before}.{after}"
                warnings[name] = restore(velorn, sources.path(kind, before), sources.folder / name)
    return warnings


def measure(velorn, folder):
    failures = Failures()
    sources = Sources(velorn, folder)
    warnings = restore_all(velorn, sources)
    tags = read_tags(folder)
    table = {}
    for before in SOURCES:
        for after in TARGETS:
            label = f"{NAMES[before]} to {NAMES[after]}"
            result = {kind: f"{kind}-from-{before}.{after}" for kind in KINDS}
            row = full_row(tags[f"full.{before}"], tags[result["full"]], warnings[result["full"]],
                           failures, label)
            row["resolution"] = cell(tags[f"dense.{before}"].dots_per_inch(),
                                     tags[result["dense"]].dots_per_inch(), "", "-")
            row["orientation"] = orientation_cell(
                [(tags[f"turned{code}.{before}"].value("Orientation", "IFD0"),
                  tags[result[f"turned{code}"]].value("Orientation", "IFD0"))
                 for code in range(1, 9)], before == "heic")
            for kind in KINDS[1:]:
                if warnings[result[kind]]:
                    failures.add(f"{label}: without a reason: {warnings[result[kind]].strip()}")
            bare = tags[result["bare"]]
            added = {**bare.exif(), **bare.of("XMP"), **bare.of("IPTC"), **bare.texts()}
            if added or bare.comment() or bare.thumbnail:
                failures.add(f"{label}: a bare picture gains {added} {bare.comment()}")
            for column, value in row.items():
                if value.isupper():
                    failures.add(f"{label}: {column}: {value}; {warnings[result['full']].strip()}")
            table[label] = row
    return table, failures.lines


def markdown(table):
    lines = ["| from, to | " + " | ".join(COLUMNS) + " |", "|---" * (len(COLUMNS) + 1) + "|"]
    for label, row in table.items():
        lines.append(f"| {label} | " + " | ".join(row[column] for column in COLUMNS) + " |")
    return "\n".join(lines)


def replaced(document, block):
    head, rest = document.split(BEGIN)
    return head + BEGIN + "\n\n" + block + "\n\n" + END + rest.split(END)[1]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("velorn")
    parser.add_argument("--check", metavar="DOCUMENT")
    parser.add_argument("--update", metavar="DOCUMENT")
    parser.add_argument("--keep", metavar="FOLDER", help="where the pictures stay")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(arguments.keep or temporary)
        folder.mkdir(exist_ok=True)
        table, failures = measure(arguments.velorn, folder)
    block = markdown(table)
    document = arguments.check or arguments.update
    if document:
        path = pathlib.Path(document)
        new = replaced(path.read_text(), block)
        if arguments.update:
            path.write_text(new)
        elif new != path.read_text():
            failures.append(f"{document} is out of date")
    if failures or not document:
        print(block)
    for line in failures:
        print(line, file=sys.stderr)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
