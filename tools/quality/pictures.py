"""Sharp pictures: sample data of scikit-image and SciPy, and variants of them with soft parts."""

from pathlib import Path

import numpy
import scipy.misc
import skimage.data
from PIL import Image
from scipy.ndimage import gaussian_filter

# Settings of the library were chosen on the pictures of the first list. Constants of the second
# pass were also compared on gravel, coins and moon.
TUNED = ["astronaut", "chelsea", "coffee", "raccoon", "rocket", "camera", "brick", "motorcycle",
         "astronaut soft", "chelsea soft", "coffee soft", "raccoon soft"]
UNTUNED = ["ihc", "hubble", "gravel", "coins", "moon", "grass", "scene",
           "ihc soft", "gravel soft", "coins soft", "scene soft"]

_FILES = {"rocket": "rocket.jpg", "motorcycle": "motorcycle_left.png",
          "hubble": "hubble_deep_field.jpg"}
_SIDE = 320  # pixels of a side, larger kernels and margins included


def load(name, scene):
    """The picture `name` as float RGB, 0..255, at most 320 by 320 pixels.

    `scene` is the file of the drawn scene.
    """
    base, _, variant = name.partition(" ")
    picture = _centre(_whole(base, scene))
    return _softened(picture) if variant == "soft" else picture


def _whole(base, scene):
    if base == "raccoon":
        return scipy.misc.face().astype(float)
    if base == "scene":
        path = scene
    else:
        path = Path(skimage.data.__file__).parent / _FILES.get(base, base + ".png")
    return numpy.asarray(Image.open(path).convert("RGB"), dtype=float)


def _centre(picture):
    height, width = picture.shape[:2]
    side = (min(height, _SIDE), min(width, _SIDE))
    top, left = int((height - side[0]) * 0.45), (width - side[1]) // 2
    return picture[top:top + side[0], left:left + side[1]]


def _softened(picture):
    """A subject in focus before a background that is not: the blur grows away from the centre."""
    height, width = picture.shape[:2]
    blurred = gaussian_filter(picture, (2.5, 2.5, 0))
    y, x = numpy.mgrid[:height, :width]
    distance = ((x - 0.45 * width) / (0.22 * width))**2 + ((y - 0.5 * height) / (0.22 * height))**2
    sharpness = numpy.exp(-distance)[..., None]
    return sharpness * picture + (1 - sharpness) * blurred
