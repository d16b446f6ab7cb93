#!/usr/bin/env python3
"""Measures velorn with automatic settings against scikit-image's filters with parameters chosen by
the sharp picture, and writes the tables of docs/quality.md.

    measure.py VELORN MAKE_SCENE CACHE [--update DOCUMENT] [--only TEXT] [--options OPTIONS]
"""

import argparse
import json
import subprocess
import sys
import tempfile
from dataclasses import asdict
from pathlib import Path
from time import perf_counter

import numpy
from PIL import Image

import pictures
from peers import Peer, best_peer
from photographs import disc, gaussian, motion, photograph

KERNELS = {"disc 3": disc(3), "gaussian 1.5": gaussian(1.5), "motion 15,30": motion(15, 30)}
PEER_NOISES = (1, 3)
NOISES = (0.5, 1, 3, 6)


class Bench:
    def __init__(self, arguments, folder):
        self.velorn = arguments.velorn
        self.options = arguments.options.split()
        self.folder = folder
        self.cache_path = Path(arguments.cache)
        self.cache = json.loads(self.cache_path.read_text()) if self.cache_path.exists() else {}
        self.scene = folder / "scene.png"
        subprocess.run([arguments.make_scene, self.scene, folder / "unused.png", "--disc", "1"],
                       check=True, stdout=subprocess.DEVNULL)

    def peer(self, name, photo, kernel):
        if name not in self.cache:
            self.cache[name] = asdict(best_peer(photo, kernel))
            self.cache_path.write_text(json.dumps(self.cache, indent=1))
        return Peer(**self.cache[name])

    def restored(self, photo, kernel):
        """The restoration by velorn and its seconds, start of the process included."""
        taken, result, values = (self.folder / n for n in ("taken.png", "result.png", "kernel.txt"))
        Image.fromarray(photo.taken).save(taken)
        numpy.savetxt(values, kernel)
        start = perf_counter()
        subprocess.run([self.velorn, "deblur", taken, result, "--kernel", values, *self.options],
                       check=True)
        seconds = perf_counter() - start
        return numpy.asarray(Image.open(result), dtype=float), seconds


def case(bench, picture, kernel_name, noise):
    kernel = KERNELS[kernel_name]
    photo = photograph(pictures.load(picture, bench.scene), kernel, noise)
    restored, seconds = bench.restored(photo, kernel)
    row = {"picture": picture, "kernel": kernel_name, "noise": noise,
           "blurred": photo.decibels(photo.taken.astype(float)),
           "velorn": photo.decibels(restored), "seconds": seconds}
    if noise in PEER_NOISES:
        row["peer"] = bench.peer(f"{picture}|{kernel_name}|{noise}", photo, kernel)
        row["peer seconds"] = row["peer"].restored(photo, kernel)[1]
    return row


def cases(bench, names, only):
    rows = []
    for picture in names:
        for kernel in KERNELS:
            for noise in NOISES:
                if only in f"{picture}|{kernel}|{noise}":
                    rows.append(case(bench, picture, kernel, noise))
                    print(text_of(rows[-1]), file=sys.stderr, flush=True)
    return rows


def text_of(row):
    text = (f"{row['picture']:16} {row['kernel']:13} {row['noise']:>3}  "
            f"blurred {row['blurred']:.2f}  velorn {row['velorn']:.2f}")
    if "peer" in row:
        text += f"  peer {row['peer'].decibels:.2f} ({row['peer'].text()})"
    return text


def summary(rows):
    lines = ["| noise | cases | gain over blurred: mean | least | margin to the peer: mean | least |",
             "|---|---|---|---|---|---|"]
    for noise in NOISES:
        chosen = [r for r in rows if r["noise"] == noise]
        if not chosen:
            continue
        gains = [r["velorn"] - r["blurred"] for r in chosen]
        margins = [r["velorn"] - r["peer"].decibels for r in chosen if "peer" in r]
        peers = (f"{numpy.mean(margins):+.2f} | {min(margins):+.2f}" if margins else "| ")
        lines.append(f"| {noise} | {len(chosen)} | {numpy.mean(gains):+.2f} | {min(gains):+.2f} | "
                     f"{peers} |")
    return lines


def table(rows):
    lines = ["| picture | blur | noise | blurred | velorn | seconds | peer | its filter | seconds |",
             "|---|---|---|---|---|---|---|---|---|"]
    for row in rows:
        peer = row.get("peer")
        against = "| | "
        if peer:
            against = f"{peer.decibels:.2f} | {peer.text()} | {row['peer seconds']:.2f}"
        lines.append(f"| {row['picture']} | {row['kernel']} | {row['noise']} | {row['blurred']:.2f} | "
                     f"{row['velorn']:.2f} | {row['seconds']:.2f} | {against} |")
    return lines


def update(document, tables):
    """Replaces the text between the lines `<!-- NAME -->` and `<!-- end -->` of the document."""
    text = Path(document).read_text()
    for name, lines in tables.items():
        begin = f"<!-- {name} -->\n"
        head, rest = text.split(begin)
        text = head + begin + "\n".join(lines) + "\n" + rest[rest.index("<!-- end -->"):]
    Path(document).write_text(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("velorn")
    parser.add_argument("make_scene")
    parser.add_argument("cache", help="file that keeps the best parameters of the peers")
    parser.add_argument("--update", metavar="DOCUMENT")
    parser.add_argument("--only", default="", help="cases whose name contains this text")
    parser.add_argument("--options", default="", help="further options of velorn deblur")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(arguments, Path(folder))
        tables = {}
        for name, names in (("tuned", pictures.TUNED), ("untuned", pictures.UNTUNED)):
            rows = cases(bench, names, arguments.only)
            tables[f"{name} summary"], tables[f"{name} cases"] = summary(rows), table(rows)
            print(name, *tables[f"{name} summary"], sep="\n", flush=True)
    if arguments.update:
        update(arguments.update, tables)


if __name__ == "__main__":
    main()
