"""Fits the choice among the candidates of the blind search, and its confidence.

Reads tables that studyCandidates has written for half 0, and prints the weights of
restoration/blind/candidates/Evidence.h. Figures are cross-validated: the weights that judge a
picture come from the other pictures.

    studyCandidates PHOTOGRAPHS --half 0 --every 9 > half.tsv
    studyCandidates --pairs NAME=SHARP=TAKEN,... --candidates 1 > pairs.tsv
    python3 tools/blind/fitChoice.py half.tsv pairs.tsv

The confidence is that of the first candidate, where the search restores at all. Names of pairs
begin with the name of the picture and "_". With few pictures the choice of the search may be better than
the cross-validated one; its weights should stay then.
"""

import argparse
import csv

import numpy as np

# Evidence that may take part. What is not named does not help in cross-validation.
SCORE = ["sparsity", "edges", "residual", "unlikelihood", "spectralMisfit",
         "reachesRim", "isAnalytic"]
# Given, not fitted: zeros of the spectrum are strong evidence. Pictures that are
# blurred in parts only need a larger weight than those of the study.
WEIGHT_OF_ZEROS = -2.0
CONFIDENCE = ["unevenness", "excess", "agreement"]
FOLDS = 8
HARM = 1.5  # a decibel lost counts as much as so many gained
RIDGE_OF_SCORE = 0.5
RIDGE_OF_CONFIDENCE = 3.0


class Case:
    """The candidates of one blurred picture; the first one is what the search chose."""

    def __init__(self, rows):
        self.picture = rows[0]["picture"].split("_")[0].removesuffix("-soft")
        self.family = rows[0]["family"]
        self.blur = rows[0]["blur"]
        self.noise = float(rows[0]["noise"])
        self.known = float(rows[0]["known"])
        column = lambda name: np.array([float(row[name]) for row in rows])
        self.gain, self.half = column("gain"), column("half")
        self.share = float(rows[0]["share"])
        self.evidence = {name: column(name) for name in SCORE + CONFIDENCE}
        self.is_of_edges, self.certain = column("isOfEdges"), column("showsZeros")

    def features(self, names):
        return np.stack([self.evidence[name] for name in names], axis=1)

    def best(self, weights):
        """The candidate with the lowest score, kernels of edges first."""
        return int(np.argmin(self.features(SCORE) @ weights
                             + WEIGHT_OF_ZEROS * self.certain - 1e6 * self.is_of_edges))


def read(paths):
    groups = {}
    for path in paths:
        with open(path, newline="", encoding="utf-8") as file:
            for row in csv.DictReader(file, delimiter="\t"):
                if row.get("agreement") is not None:
                    groups.setdefault((row["picture"], row["blur"]), []).append(row)
    return [Case(rows) for rows in groups.values()]


def fit_score(cases, steps=400):
    """Maximises the expected utility of a choice with probabilities ~ exp(-score)."""
    free = [case for case in cases if len(case.gain) > 1 and not case.certain.any()]
    centred = [case.features(SCORE) - case.features(SCORE).mean(axis=0) for case in free]
    scale = np.concatenate(centred).std(axis=0) + 1e-9
    count = max(map(len, centred))
    points = np.zeros((len(free), count, len(SCORE)))
    mask = np.full((len(free), count), -1e9)
    utility = np.zeros((len(free), count))
    for i, case in enumerate(free):
        points[i, : len(case.gain)] = -centred[i] / scale
        mask[i, : len(case.gain)] = 0.0
        worth = np.where(case.gain > 0, case.gain, HARM * case.gain)
        utility[i, : len(case.gain)] = worth / (1.0 + 0.5 * abs(case.known))
    weights = np.zeros(len(SCORE))
    mean, square = np.zeros_like(weights), np.zeros_like(weights)
    for step in range(1, steps + 1):
        odds = points @ weights + mask
        odds = np.exp(odds - odds.max(axis=1, keepdims=True))
        odds /= odds.sum(axis=1, keepdims=True)
        expected = (odds * utility).sum(axis=1, keepdims=True)
        slope = np.einsum("ij,ijk->k", odds * (utility - expected), points) / len(free)
        slope -= RIDGE_OF_SCORE * 0.1 * weights
        mean = 0.9 * mean + 0.1 * slope
        square = 0.99 * square + 0.01 * slope**2
        rate = 0.1 if step < 0.7 * steps else 0.02
        weights += rate * (mean / (1 - 0.9**step)) / (np.sqrt(square / (1 - 0.99**step)) + 1e-8)
    weights /= scale
    return weights / weights[0]


def fit_confidence(cases):
    """Logistic regression of gains of the first candidates; returns the weights, the offset last."""
    points = np.stack([case.features(CONFIDENCE)[0] for case in cases])
    better = np.array([float(case.gain[0] > 0) for case in cases])
    centre, scale = points.mean(axis=0), points.std(axis=0) + 1e-9
    design = np.c_[(points - centre) / scale, np.ones(len(points))]
    ridge = RIDGE_OF_CONFIDENCE * np.eye(design.shape[1])
    ridge[-1, -1] = 1e-6
    solution = np.zeros(design.shape[1])
    for _ in range(60):
        odds = 1 / (1 + np.exp(-np.clip(design @ solution, -30, 30)))
        curvature = odds * (1 - odds) + 1e-9
        gradient = design.T @ (better - odds) - ridge @ solution
        solution += np.linalg.solve(design.T @ (design * curvature[:, None]) + ridge, gradient)
    weights = solution[:-1] / scale
    return np.append(weights, solution[-1] - weights @ centre)


def folds(cases):
    """Pairs of the cases of some pictures and of all others."""
    pictures = sorted({case.picture for case in cases})
    for fold in range(FOLDS):
        inside = [case for case in cases if pictures.index(case.picture) % FOLDS == fold]
        if inside:
            yield inside, [case for case in cases if case not in inside]


def cross_validated_gains(cases):
    """Gains of the candidates that weights of other pictures choose."""
    return np.array([case.gain[case.best(score)] for inside, others in folds(cases)
                     for score in [fit_score(others)] for case in inside])


def cross_validated_confidences(cases):
    """Confidences by weights of other pictures, and the gains of the first candidates."""
    confidences, gains = [], []
    for inside, others in folds(cases):
        weights = fit_confidence(others)
        for case in inside:
            odds = case.features(CONFIDENCE)[0] @ weights[:-1] + weights[-1]
            confidences.append(1 / (1 + np.exp(-np.clip(odds, -30, 30))))
            gains.append(case.gain[0])
    return np.array(confidences), np.array(gains)


def report(label, cases, gains):
    known = np.array([case.known for case in cases])
    print(f"{label:24s} gain {gains.mean():5.2f} share {gains.sum() / known.sum():.3f} "
          f"error ratio <= 2 {np.mean(known - gains <= 3.01):.2f} <= 3 "
          f"{np.mean(known - gains <= 4.77):.2f} worse {np.sum(gains < 0)} of {len(cases)}")


def print_reliability(confidences, gains):
    print("confidence  cases  mean  better")
    for low in np.arange(0.0, 1.0, 0.1):
        inside = (confidences >= low) & (confidences < low + 0.1 + 1e-9 * (low > 0.85))
        if inside.any():
            print(f"{low:.1f} to {low + 0.1:.1f} {inside.sum():6d} "
                  f"{confidences[inside].mean():6.2f} {np.mean(gains[inside] > 0):6.2f}")
    worse, warned = gains < 0, confidences < 0.5
    print(f"worse {worse.sum()}, of these warned {np.sum(worse & warned)}, warned though better "
          f"{np.sum(~worse & warned)} of {len(gains)}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("tables", nargs="+", help="what studyCandidates has written")
    cases = read(parser.parse_args().tables)
    restored = [case for case in cases if case.share > 0]
    print(f"{len(cases) - len(restored)} of {len(cases)} pictures are returned as they are")
    print_reliability(*cross_validated_confidences(restored))
    odds = fit_confidence(restored)
    blurred = [case for case in cases if case.known > 0]
    score = np.zeros(len(SCORE))
    if any(len(case.gain) > 1 for case in blurred):
        report("best candidate", blurred, np.array([case.gain.max() for case in blurred]))
        report("chosen by the search", blurred, np.array([case.gain[0] for case in blurred]))
        report("cross-validated choice", blurred, cross_validated_gains(blurred))
        score = fit_score(blurred)
    scores = dict(zip(SCORE, score)) | {"showsZeros": WEIGHT_OF_ZEROS}
    logits = dict(zip(CONFIDENCE, odds))
    for name in dict.fromkeys(SCORE + CONFIDENCE):
        print(f'    EvidenceWeight{{"{name}", &Evidence::{name}, {scores.get(name, 0.0):.3g}, '
              f"{logits.get(name, 0.0):.3g}}},")
    print(f"inline constexpr double kConfidenceOffset = {odds[-1]:.3g};")


if __name__ == "__main__":
    main()
