#!/usr/bin/python3
"""Times the filters of scipy.ndimage that are the peers of some lines of the benchmark, in one thread.

Takes lines by name ("mean 3d, half 1/uint8"), all it knows without one; others are passed over. Prints {line: median
nanoseconds per sample} as JSON. vexo_bench starts it.
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

VOLUME, SMALL_VOLUME, TINY_VOLUME, PLANE, LARGE_PLANE = (256,) * 3, (128,) * 3, (64,) * 3, (1024,) * 2, (4096,) * 2
TYPES = (numpy.uint8, numpy.uint16, numpy.float32)


def mean(half):
    return lambda image, out: ndimage.uniform_filter(image, 2 * half + 1, output=out, mode="reflect")


def gaussian(sigma):
    # Half size 3 sigma, as our default coverage gives for whole deviations up to 30.
    return lambda image, out: ndimage.gaussian_filter(image, sigma, output=out, mode="reflect", truncate=3.0)


def convolution():
    weights = numpy.arange(1, 28, dtype=numpy.float32).reshape(3, 3, 3)
    weights /= weights.sum()
    return lambda image, out: ndimage.convolve(image, weights, output=out, mode="reflect")


def median(half):
    return lambda image, out: ndimage.median_filter(image, 2 * half + 1, output=out, mode="reflect")


def pearson(image, out):
    first, second = image.astype(numpy.float64), numpy.flip(image).astype(numpy.float64)
    return (first - first.mean()) * (second - second.mean()) / (first.std() * second.std())


# Line: shape of the image, filter, repetitions. Slow ones run on less, as times are per sample.
LINES = {
    "mean 3d, half 1": (VOLUME, mean(1), 5),
    "mean 3d, half 5": (VOLUME, mean(5), 5),
    "Gaussian 3d, sigma 1": (VOLUME, gaussian(1), 5),
    "Gaussian 3d, sigma 3": (VOLUME, gaussian(3), 5),
    "convolution 3d, 3x3x3": (VOLUME, convolution(), 5),
    "generic median, half 3": (PLANE, median(3), 3),
    "median 3d, half 1": (SMALL_VOLUME, median(1), 3),
    "median 3d, half 3": (TINY_VOLUME, median(3), 3),
    "Pearson map": (LARGE_PLANE, pearson, 3),
}


def random_image(sample_type, shape):
    values = numpy.random.default_rng(1).integers(0, 65536, shape, dtype=numpy.uint16)
    return values.astype(sample_type)  # 8 bits: the low ones


def median_nanoseconds(work, samples, repetitions):
    times = []
    for _ in range(repetitions):
        start = time.perf_counter()
        work()
        times.append(1e9 * (time.perf_counter() - start) / samples)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("lines", nargs="*", help="names of lines, with their types")
    wanted = parser.parse_args().lines

    results = {}
    for name, (shape, run, repetitions) in LINES.items():
        for sample_type in TYPES:
            line = f"{name}/{numpy.dtype(sample_type).name}"
            if wanted and line not in wanted:
                continue
            print(line, file=sys.stderr)
            image = random_image(sample_type, shape)
            out = numpy.zeros_like(image)
            results[line] = median_nanoseconds(lambda: run(image, out), image.size, repetitions)
    json.dump(results, sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main()
