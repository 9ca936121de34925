#!/usr/bin/python3
"""Times the volume filters of scipy.ndimage, the peer of the benchmark's volumes, in one thread.

Prints {case: median milliseconds} as JSON, e.g. {"mean 3d, half 1/uint8": 12.3, ...}. vexo_bench starts it when volumes
are among its cases, and times ours.
"""

import argparse
import json
import os
import statistics
import sys
import time

# Before NumPy is imported: its libraries read these once.
for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[variable] = "1"

import numpy
from scipy import ndimage

SIZE = 256
TYPES = (numpy.uint8, numpy.uint16, numpy.float32)


def mean(half):
    return lambda volume, out: ndimage.uniform_filter(volume, 2 * half + 1, output=out, mode="reflect")


def gaussian(sigma):
    # Half size 3 sigma, as our default coverage gives for whole deviations up to 30.
    return lambda volume, out: ndimage.gaussian_filter(volume, sigma, output=out, mode="reflect", truncate=3.0)


def convolution():
    weights = numpy.arange(1, 28, dtype=numpy.float32).reshape(3, 3, 3)
    weights /= weights.sum()
    return lambda volume, out: ndimage.convolve(volume, weights, output=out, mode="reflect")


def median(half):
    return lambda volume, out: ndimage.median_filter(volume, 2 * half + 1, output=out, mode="reflect")


CASES = {
    "mean 3d, half 1": mean(1),
    "mean 3d, half 5": mean(5),
    "Gaussian 3d, sigma 1": gaussian(1),
    "Gaussian 3d, sigma 3": gaussian(3),
    "convolution 3d, 3x3x3": convolution(),
    "generic median 3d, half 1": median(1),
}
SLOW = {"generic median 3d, half 1"}  # many seconds: timed once


def random_volume(sample_type, size):
    values = numpy.random.default_rng(1).integers(0, 65536, (size, size, size), dtype=numpy.uint16)
    return values.astype(sample_type)  # 8 bits: the low ones


def median_milliseconds(work, repetitions):
    times = []
    for _ in range(repetitions):
        start = time.perf_counter()
        work()
        times.append(1e3 * (time.perf_counter() - start))
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--size", type=int, default=SIZE, help="edge of the volume (default %(default)s)")
    parser.add_argument("--repetitions", type=int, default=5, help="runs of each case (default %(default)s)")
    arguments = parser.parse_args()
    if arguments.size < 1 or arguments.repetitions < 1:
        parser.error("--size and --repetitions start at 1")

    results = {}
    for sample_type in TYPES:
        volume = random_volume(sample_type, arguments.size)
        out = numpy.zeros_like(volume)
        for name, run in CASES.items():
            case = f"{name}/{numpy.dtype(sample_type).name}"
            print(case, file=sys.stderr)
            repetitions = 1 if name in SLOW else arguments.repetitions
            results[case] = median_milliseconds(lambda: run(volume, out), repetitions)
    json.dump(results, sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main()
