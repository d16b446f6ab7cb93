"""Simulated photographs of sharp pictures, and distances from the truth."""

from dataclasses import dataclass

import numpy
from scipy.signal import fftconvolve

MARGIN = 24  # pixels along the frame that the distance ignores


@dataclass
class Photograph:
    sharp: numpy.ndarray  # float RGB, 0..255
    taken: numpy.ndarray  # uint8, of the same size

    def decibels(self, restored):
        """Peak signal-to-noise ratio of `restored`, 0..255, without the border."""
        inner = slice(MARGIN, -MARGIN)
        difference = numpy.clip(restored, 0, 255)[inner, inner] - self.sharp[inner, inner]
        return 10 * numpy.log10(255**2 / numpy.mean(difference**2))


def photograph(sharp, kernel, noise, seed=0):
    """`sharp` blurred by `kernel`, cut to what no light from beyond its frame reaches, with normal
    noise in every sample, rounded to 8 bits."""
    blurred = numpy.stack([fftconvolve(sharp[..., c], kernel, "valid") for c in range(3)], axis=-1)
    rows, columns = kernel.shape[0] // 2, kernel.shape[1] // 2
    inside = sharp[rows:sharp.shape[0] - rows, columns:sharp.shape[1] - columns]
    noisy = blurred + numpy.random.default_rng(seed).normal(0, noise, blurred.shape)
    return Photograph(inside, numpy.clip(numpy.rint(noisy), 0, 255).astype(numpy.uint8))


def disc(radius):
    return _sampled(lambda x, y: x**2 + y**2 <= radius**2, int(radius + 0.5) + 1)


def gaussian(deviation):
    return _sampled(lambda x, y: numpy.exp(-(x**2 + y**2) / (2 * deviation**2)),
                    int(4 * deviation + 0.5))


def motion(length, degrees):
    """A straight motion that spends equal times at all points of its path."""
    reach = int(length / 2) + 2
    kernel = numpy.zeros((2 * reach + 1, 2 * reach + 1))
    along = numpy.linspace(-(length - 1) / 2, (length - 1) / 2, 40 * length)
    angle = numpy.deg2rad(degrees)
    for x, y in zip(reach + along * numpy.cos(angle), reach - along * numpy.sin(angle)):
        column, row = int(x), int(y)
        right, down = x - column, y - row
        kernel[row, column] += (1 - right) * (1 - down)
        kernel[row, column + 1] += right * (1 - down)
        kernel[row + 1, column] += (1 - right) * down
        kernel[row + 1, column + 1] += right * down
    return kernel / kernel.sum()


def _sampled(function, reach, points=8):
    """Mean of `function` over each pixel, from `points` by `points` places."""
    side = 2 * reach + 1
    place = (numpy.arange(side * points) + 0.5) / points - side / 2
    values = function(place[None, :], place[:, None]).astype(float)
    kernel = values.reshape(side, points, side, points).mean(axis=(1, 3))
    return kernel / kernel.sum()
