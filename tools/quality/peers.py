"""scikit-image's filters for a known blur, with their parameters chosen by the sharp picture."""

from dataclasses import dataclass
from time import perf_counter

import numpy
from scipy import fft
from skimage import restoration

BALANCES = (0.0003, 0.001, 0.003, 0.01, 0.03, 0.1, 0.3, 1, 3)
MOST_ITERATIONS = 100


@dataclass
class Peer:
    decibels: float
    name: str
    parameter: float
    border: int  # mirrored pixels around the picture

    def text(self):
        number = f"{self.parameter} iterations" if self.name == "Richardson-Lucy" else (
            f"balance {self.parameter}")
        return f"{self.name}, {number}" + (", mirrored border" if self.border else "")

    def restored(self, photo, kernel):
        """The restoration, 0..255, and its seconds."""
        padded = _padded(photo, self.border)
        start = perf_counter()
        planes = numpy.stack([self._plane(padded[..., c], kernel) for c in range(3)], axis=-1)
        seconds = perf_counter() - start
        return 255 * _without(planes, self.border), seconds

    def _plane(self, plane, kernel):
        if self.name == "Wiener":
            return restoration.wiener(plane, kernel, self.parameter, clip=False)
        return restoration.richardson_lucy(plane, kernel, self.parameter, clip=False)


def best_peer(photo, kernel):
    """The filter and the parameter that come closest to the sharp picture. Each filter is tried on
    the picture itself and on the picture continued by mirroring."""
    candidates = []
    for border in (0, max(kernel.shape)):
        iterations = _best_iterations(photo, _padded(photo, border), border, kernel)
        candidates.append(Peer(0, "Richardson-Lucy", iterations, border))
        candidates += [Peer(0, "Wiener", balance, border) for balance in BALANCES]
    for peer in candidates:
        peer.decibels = photo.decibels(peer.restored(photo, kernel)[0])
    return max(candidates, key=lambda peer: peer.decibels)


def _padded(photo, border):
    return numpy.pad(photo.taken / 255, ((border, border), (border, border), (0, 0)),
                     mode="symmetric")


def _without(planes, border):
    return planes[border:-border, border:-border] if border else planes


def _best_iterations(photo, padded, border, kernel):
    """The number of iterations with the best result. The iteration is repeated here because the
    library returns only its last step; two transforms of the whole picture take the place of
    convolutions, with the same result inside the frame up to rounding."""
    shape = [fft.next_fast_len(n + k, True) for n, k in zip(padded.shape, kernel.shape)]
    spectrum = fft.rfft2(kernel, shape)[..., None]
    rows, columns = (n // 2 for n in kernel.shape)
    height, width = padded.shape[:2]

    def convolved(planes, kernel_spectrum):
        full = fft.irfft2(fft.rfft2(planes, shape, axes=(0, 1)) * kernel_spectrum, shape,
                          axes=(0, 1))
        return full[rows:rows + height, columns:columns + width]

    mirrored = fft.rfft2(kernel[::-1, ::-1], shape)[..., None]
    estimate = numpy.full_like(padded, 0.5)
    best = (-numpy.inf, 1)
    for iteration in range(1, MOST_ITERATIONS + 1):
        ratio = padded / (convolved(estimate, spectrum) + 1e-12)
        estimate = estimate * convolved(ratio, mirrored)
        decibels = photo.decibels(255 * _without(estimate, border))
        best = max(best, (decibels, iteration))
        if decibels < best[0] - 0.5:
            break
    return best[1]
