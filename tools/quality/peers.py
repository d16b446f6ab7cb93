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
    filter: str      # name and parameter
    seconds: float   # one run with this parameter


def best_peer(photo, kernel):
    """The filter and the parameter that come closest to the sharp picture. Each filter is tried on
    the picture itself and on the picture continued by mirroring."""
    candidates = []
    for border in (0, max(kernel.shape)):
        padded = numpy.pad(photo.taken / 255, ((border, border), (border, border), (0, 0)),
                           mode="symmetric")
        iterations = _best_iterations(photo, padded, border, kernel)
        candidates.append(_measured(f"Richardson-Lucy, {iterations} iterations", photo, padded,
                                    border, lambda plane: restoration.richardson_lucy(
                                        plane, kernel, iterations, clip=False)))
        for balance in BALANCES:
            candidates.append(_measured(f"Wiener, balance {balance}", photo, padded, border,
                                        lambda plane: restoration.wiener(
                                            plane, kernel, balance, clip=False)))
    return max(candidates, key=lambda peer: peer.decibels)


def _measured(name, photo, padded, border, restore):
    start = perf_counter()
    planes = numpy.stack([restore(padded[..., c]) for c in range(3)], axis=-1)
    seconds = perf_counter() - start
    name += ", mirrored border" if border else ""
    return Peer(photo.decibels(255 * _without(planes, border)), name, seconds)


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
