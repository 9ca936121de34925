"""The pictures of docs/gallery.md, as gallery.sh makes them in its working folder.

gallery_pictures.py prepare DATA     crops real images out of the folder DATA, with noise and speckles where needed
gallery_pictures.py compose GALLERY  puts what vexo has made of them side by side, into the folder GALLERY
"""

import sys
from pathlib import Path

import numpy as np
from PIL import Image, ImageFilter

SIZE = 172  # of most pictures
GAP = 4  # white pixels between two pictures


def read(name):
    return np.asarray(Image.open(name))


def write(name, samples):
    Image.fromarray(samples).save(name, optimize=True)


def part(samples, x, y, size=SIZE):
    return samples[y:y + size, x:x + size]


def grey(samples, black=0, white=255):
    """8 bits, with the values from black to white spread over all of them."""
    return np.clip(np.rint((samples.astype(float) - black) * 255 / (white - black)), 0, 255).astype(np.uint8)


def magnify(samples, factor):
    return samples.repeat(factor, axis=0).repeat(factor, axis=1)


def speckle(samples, share, random):
    """Makes this share of the samples black or white."""
    chosen = random.random(samples.shape) < share
    return np.where(chosen, random.choice(np.array([0, 255], np.uint8), samples.shape), samples)


def prepare(data):
    random = np.random.default_rng(1)  # always the same noise
    coins = part(read(data / "coins.png"), 84, 62)
    cell = part(read(data / "cell.png"), 340, 288)
    tissue = part(read(data / "ihc.png"), 224, 184)

    write("coins.png", coins)
    write("noisy.png", speckle(coins, 0.1, random))
    grainy = grey(coins + random.normal(0, 12, coins.shape))
    write("grainy.png", grainy)
    write("edge.png", part(grainy, 86, 104, SIZE // 4))
    # The background, without islands and holes.
    background = Image.fromarray(grey(coins < 105, 0, 1)).filter(ImageFilter.MedianFilter(9))
    background.save("background.png")

    write("cell.png", cell)
    write("speckled.png", speckle(cell, 0.004, random))
    # A camera of 12 bits with some broken pixels, in a file of 16 bits.
    cell12 = 16 * cell.astype(np.uint16)
    cell12[random.random(cell.shape) < 0.002] = 65535
    write("cell12.png", cell12)

    write("red.png", tissue[:, :, 0])
    write("blue.png", tissue[:, :, 2])


def compose(gallery):
    def row(name, *pictures):
        gap = np.full((SIZE, GAP), 255, np.uint8)
        spaced = [piece for picture in pictures for piece in (gap, picture)][1:]
        write(gallery / f"{name}.png", np.hstack(spaced))

    def edge(name):
        return magnify(read(name), 4)

    def twelve_bits(name):
        return grey(read(name), 0, 4095)

    gallery.mkdir(exist_ok=True)
    row("mean", read("cell.png"), read("mean.png"))
    row("masked_mean", read("grainy.png"), read("background.png"), read("masked_mean.png"))
    row("sharpening", read("coins.png"), grey(read("sharp.tif")))
    row("gradient", read("coins.png"), grey(read("gradient.tif"), -100, 100))
    row("gaussian", read("coins.png"), read("gaussian.png"))
    row("median", read("noisy.png"), read("noisy_mean.png"), read("median.png"))
    row("small_medians", read("noisy.png"), read("median33.png"), read("median55.png"))
    row("compressed_median", *map(twelve_bits, ["cell12.png", "median12.png", "compressed12.png"]))
    row("despeckle", read("speckled.png"), read("despeckled.png"))
    row("bilateral", *map(edge, ["edge.png", "edge_gaussian.png", "edge_bilateral.png"]))
    row("separated_bilateral", *map(edge, ["edge.png", "edge_bilateral.png", "edge_separated.png"]))
    row("pearson", read("red.png"), read("blue.png"), grey(read("pearson.tif"), -1, 4))
    row("choice", read("gaussian.png"), read("coins.png"), read("background.png"), read("choice.png"))


step, folder = sys.argv[1:]
{"prepare": prepare, "compose": compose}[step](Path(folder))
