"""Collects sharp photographs for the study of the blind search from Debian's packages, in two
halves: settings are tuned on half 0 only."""

import subprocess
import sys
import tempfile
from pathlib import Path

import numpy
import scipy.misc
from PIL import Image
from scipy.ndimage import gaussian_filter

PACKAGES = ["python3-skimage", "python3-sklearn", "opencv-doc", "lxqt-themes",
            "plasma-workspace-wallpapers"]
SKIMAGE = "usr/lib/python3/dist-packages/skimage/data/"
SKLEARN = "usr/lib/python3/dist-packages/sklearn/datasets/images/"
OPENCV = "usr/share/doc/opencv-doc/examples/"
LXQT = "usr/share/lxqt/wallpapers/"
PLASMA = "usr/share/wallpapers/"
SIDES = (600, 500)

# Name: file, width to reduce the picture to, centre of the part that is cut out. Large photographs
# are reduced so that they are sharp; in several of both halves, large parts are out of focus.
HALVES = [
    {
        "aloe": (OPENCV + "data/aloeL.jpg", 900, (.5, .6)),
        "astronaut": (SKIMAGE + "astronaut.png", None, (.45, .45)),
        "barrier": (OPENCV + "text/scenetext05.jpg", 900, (.5, .5)),
        "boats": (PLASMA + "EveningGlow/contents/images/1280x1024.jpg", 1100, (.5, .6)),
        "brick": (SKIMAGE + "brick.png", None, (.5, .5)),
        "cameraman": (SKIMAGE + "camera.png", None, (.5, .5)),
        "cat": (SKIMAGE + "chelsea.png", None, (.5, .5)),
        "china": (SKLEARN + "china.jpg", None, (.5, .5)),
        "circuit": (OPENCV + "data/board.jpg", None, (.5, .5)),
        "coins": (SKIMAGE + "coins.png", None, (.5, .5)),
        "drop": (LXQT + "drop.png", 1000, (.35, .4)),
        "flowers": (LXQT + "flowers.png", 1000, (.5, .6)),
        "graffiti": (OPENCV + "data/graf1.png", None, (.5, .5)),
        "raccoon": (None, None, (.5, .5)),
        "squirrel": (OPENCV + "data/squirrel_cls.jpg", None, (.5, .5)),
        "swallowtail": (OPENCV + "data/butterfly.jpg", None, (.5, .5)),
        "thistle": (LXQT + "butterfly.png", 1000, (.45, .6)),
    },
    {
        "blossom": (LXQT + "appleflower.png", 1000, (.5, .5)),
        "building": (OPENCV + "data/building.jpg", None, (.5, .5)),
        "butterfly": (LXQT + "Butterfly-Kenneth-Wimer.jpg", 1000, (.5, .5)),
        "church": (OPENCV + "data/home.jpg", None, (.5, .5)),
        "coffee": (SKIMAGE + "coffee.png", None, (.5, .5)),
        "cups": (PLASMA + "ColorfulCups/contents/images/2560x1600.jpg", 900, (.5, .5)),
        "dahlia": (SKLEARN + "flower.jpg", None, (.5, .5)),
        "dog": (OPENCV + "data/chicky_512.png", None, (.5, .5)),
        "dunes": (LXQT + "this-is-not-windows.jpg", 1000, (.5, .7)),
        "forest": (PLASMA + "Path/contents/images/1280x1024.jpg", 1100, (.5, .5)),
        "gravel": (SKIMAGE + "gravel.png", None, (.5, .5)),
        "leaves": (PLASMA + "FallenLeaf/contents/images/1280x1024.jpg", 1000, (.55, .55)),
        "mandrill": (OPENCV + "data/baboon.jpg", None, (.5, .5)),
        "motorcycle": (SKIMAGE + "motorcycle_left.png", None, (.5, .5)),
        "rocket": (SKIMAGE + "rocket.jpg", None, (.5, .5)),
        "sign": (OPENCV + "text/scenetext01.jpg", None, (.5, .4)),
        "street": (OPENCV + "data/leuvenA.jpg", None, (.5, .5)),
    },
]
# These also take part with their surroundings out of focus.
SOFTENED = [{"astronaut", "raccoon", "graffiti"}, {"coffee", "dog", "street"}]


def unpacked(folder):
    """Downloads the packages into `folder` and unpacks them there, without installing them."""
    root = folder / "unpacked"
    for package in PACKAGES:
        mark = folder / (package + ".done")
        if not mark.exists():
            with tempfile.TemporaryDirectory(dir=folder) as downloads:
                subprocess.run(["apt-get", "download", "-qq", package], cwd=downloads, check=True,
                               stderr=subprocess.DEVNULL)
                for archive in Path(downloads).glob("*.deb"):
                    subprocess.run(["dpkg-deb", "-x", archive, root], check=True)
            mark.touch()
    return root


def part(picture, width, centre):
    if width:
        height = round(picture.height * width / picture.width)
        picture = picture.resize((width, height), Image.LANCZOS)
    sides = [min(picture.width, SIDES[0]), min(picture.height, SIDES[1])]
    left = round(min(max(centre[0] * picture.width - sides[0] / 2, 0), picture.width - sides[0]))
    top = round(min(max(centre[1] * picture.height - sides[1] / 2, 0), picture.height - sides[1]))
    return picture.crop((left, top, left + sides[0], top + sides[1]))


def softened(picture):
    """A subject in focus before a background that is not."""
    sharp = numpy.asarray(picture, dtype=float)
    blurred = gaussian_filter(sharp, (2.5, 2.5, 0))
    height, width = sharp.shape[:2]
    y, x = numpy.mgrid[:height, :width]
    distance = ((x - 0.5 * width) / (0.25 * width))**2 + ((y - 0.5 * height) / (0.25 * height))**2
    focus = numpy.exp(-distance**2)[..., None]
    mixed = focus * sharp + (1 - focus) * blurred
    return Image.fromarray(numpy.rint(mixed).astype(numpy.uint8))


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    root = unpacked(folder)
    for half, pictures in enumerate(HALVES):
        target = folder / str(half)
        target.mkdir(exist_ok=True)
        for name, (path, width, centre) in pictures.items():
            whole = Image.fromarray(scipy.misc.face()) if path is None else Image.open(root / path)
            picture = part(whole.convert("RGB"), width, centre)
            picture.save(target / (name + ".png"))
            if name in SOFTENED[half]:
                softened(picture).save(target / (name + "-soft.png"))


main()
