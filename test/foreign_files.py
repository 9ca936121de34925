#!/usr/bin/python3
"""foreign_files.py VEXO: files of other programs, read by the program VEXO and written again by an identity run, hold the
samples that NumPy made, for readers of three kinds: tifffile, libtiff's tools, and one that follows the label alone."""
import json, os, re, struct, subprocess, sys, tempfile, unittest

import numpy as np
import tifffile

vexo = os.path.abspath(sys.argv.pop(1))
IDENTITY = ["MeanSmoothing2dImg", "--InHalfKnlSizeX", "0", "--InHalfKnlSizeY", "0"]
TYPES = ["uint8", "int8", "uint16", "int16", "uint32", "int32", "float32"]


def call(*words):
    return subprocess.run(words, capture_output=True, text=True)


def done(*words):
    answer = call(*words)
    assert answer.returncode == 0, (words, answer.stderr)
    return answer.stdout


def make(shape, sample_type="uint16"):
    """Samples that differ everywhere, as many bits as the identity run keeps."""
    numbers = np.arange(np.prod(shape)) * 7919
    return (numbers - 30000 if sample_type == "float32" else numbers).reshape(shape).astype(sample_type)


def read_labelled(path):
    """Planes as a reader takes them that follows the label: one directory, everything behind its first strip."""
    with open(path, "rb") as file:
        data = file.read()
    order = "<" if data[:2] == b"II" else ">"
    at, tags = struct.unpack(order + "I", data[4:8])[0], {}
    for i in range(struct.unpack_from(order + "H", data, at)[0]):
        tag, kind, count = struct.unpack_from(order + "HHI", data, at + 2 + 12 * i)
        tags[tag] = (struct.unpack_from(order + ("H" if kind == 3 else "I"), data, at + 10 + 12 * i)[0], count)
    value, count = tags.get(270, (0, 0))
    label = dict(line.split("=", 1) for line in data[value : value + count].decode("ascii").rstrip("\0").splitlines() if "=" in line)
    kind = {1: "u", 2: "i", 3: "f"}[tags[339][0]]
    shape = [int(label.get(key, 1)) for key in ("frames", "slices", "channels")] + [tags[257][0], tags[256][0]]
    assert int(label.get("images", 1)) == np.prod(shape[:3]) and tags[273][1] == 1
    return np.frombuffer(data, f"{order}{kind}{tags[258][0] // 8}", np.prod(shape), tags[273][0]).reshape(shape)


class ForeignFiles(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        os.chdir(self.folder.name)

    def tearDown(self):
        os.chdir("/")
        self.folder.cleanup()

    def check(self, expected, path="in.tif"):
        """`expected` has the axes TZCYX."""
        done(vexo, "run", *IDENTITY, "--InImg", path, "--OutImg", "out.tif")
        np.testing.assert_array_equal(expected, read_labelled("out.tif"))
        self.assertEqual(expected.dtype, read_labelled("out.tif").dtype)
        with tifffile.TiffFile("out.tif") as tiff:
            np.testing.assert_array_equal(expected.squeeze(), tiff.asarray().squeeze())
            pages = np.stack([page.asarray() for page in tiff.pages])
            np.testing.assert_array_equal(expected.reshape(pages.shape), pages)
        done("tiffcp", "-s", "-r", "3", "-c", "lzw", "out.tif", "copy.tif")
        with tifffile.TiffFile("copy.tif") as tiff:
            self.assertEqual(len(tiff.pages), np.prod(expected.shape[:3]))
        done(vexo, "run", *IDENTITY, "--InImg", "copy.tif", "--OutImg", "again.tif")
        np.testing.assert_array_equal(expected, read_labelled("again.tif"))

    def info(self, path):
        return json.loads(done(vexo, "info", "--json", path))

    def check_refused(self, *parts, path="in.tif"):
        for words in (["info", path], ["run", *IDENTITY, "--InImg", path, "--OutImg", "never.tif"]):
            answer = call(vexo, *words)
            self.assertEqual(1, answer.returncode, answer)
            for part in (path, *parts):
                self.assertIn(part, answer.stderr)
        self.assertFalse(os.path.exists("never.tif"))

    def test_imagej(self):
        rgb = make((2, 3, 9, 7, 3), "uint8")
        for form in ({"byteorder": order, "truncate": alone} for order in "<>" for alone in (False, True)):
            for sample_type in ("uint8", "uint16", "float32"):
                for axes, shape in {"TZCYX": (2, 3, 4, 9, 7), "ZYX": (5, 9, 7), "CYX": (3, 9, 7), "TYX": (6, 9, 7)}.items():
                    with self.subTest(form=form, sample_type=sample_type, axes=axes):
                        image = make(shape, sample_type)
                        tifffile.imwrite("in.tif", image, imagej=True, metadata={"axes": axes}, **form)
                        self.check(image.reshape([dict(zip(axes, shape)).get(axis, 1) for axis in "TZCYX"]))
            tifffile.imwrite("in.tif", rgb, imagej=True, metadata={"axes": "TZYXS"}, **form)
            self.check(np.moveaxis(rgb, -1, 2))
            colours = make((4, 9, 7, 3), "uint8")  # colour pixels in four channels
            tifffile.imwrite("in.tif", colours, imagej=True, **form)
            self.check(np.moveaxis(colours, -1, 1).reshape(1, 1, 12, 9, 7))

    def test_imagej_calibration(self):
        label = {"axes": "ZCYX", "unit": "\\u00B5m", "spacing": 0.75, "finterval": 1.5, "mode": "composite"}
        tifffile.imwrite("in.tif", make((3, 2, 9, 7)), imagej=True, resolution=(1 / 0.1625, 1 / 0.325), metadata=label)
        done(vexo, "run", *IDENTITY, "--InImg", "in.tif", "--OutImg", "out.tif")
        for path in ("in.tif", "out.tif"):
            info = self.info(path)
            found = [info[key] for key in ("pixelWidth", "pixelHeight", "spacing", "unit", "frameInterval")]
            self.assertEqual([0.1625, 0.325, 0.75, "µm", 1.5], found)
            with tifffile.TiffFile(path) as tiff:
                self.assertEqual("composite", tiff.imagej_metadata["mode"])
                across, down = (a / b for a, b in (tiff.pages[0].tags[tag].value for tag in (282, 283)))
                np.testing.assert_allclose([1 / 0.1625, 1 / 0.325], [across, down], rtol=1e-6)

    def test_ome(self):
        for axes in ("TZCYX", "CTZYX", "ZCTYX", "CZTYX", "TCZYX", "ZTCYX"):
            with self.subTest(axes=axes):
                sizes = {"T": 2, "Z": 3, "C": 4, "Y": 9, "X": 7}
                image = make([sizes[axis] for axis in axes])
                tifffile.imwrite("in.ome.tif", image, ome=True, metadata={
                    "axes": axes, "PhysicalSizeX": 0.25, "PhysicalSizeY": 500, "PhysicalSizeYUnit": "nm", "PhysicalSizeZ": 0.002,
                    "PhysicalSizeZUnit": "mm", "TimeIncrement": 250, "TimeIncrementUnit": "ms"})
                self.check(np.transpose(image, [axes.index(axis) for axis in "TZCYX"]), "in.ome.tif")
                info = self.info("out.tif")
                self.assertEqual([0.25, 0.5, 2, "µm", 0.25], [
                    info[key] for key in ("pixelWidth", "pixelHeight", "spacing", "unit", "frameInterval")])
        image = make((2, 9, 7, 3), "uint8")
        for planar in ("contig", "separate"):
            shown = image if planar == "contig" else np.moveaxis(image, -1, 1)
            tifffile.imwrite("rgb.ome.tif", shown, ome=True, photometric="rgb", planarconfig=planar,
                             metadata={"axes": "ZYXS" if planar == "contig" else "ZSYX"})
            self.check(np.moveaxis(image, -1, 1)[np.newaxis], "rgb.ome.tif")

    def write_ome(self, change, path="in.tif"):
        """Six pages whose XML, of 3 slices and 2 channels, is changed."""
        xml = ('<?xml version="1.0"?><OME xmlns="http://www.openmicroscopy.org/Schemas/OME/2016-06" UUID="urn:uuid:1">'
               '<Image ID="Image:0"><Pixels ID="Pixels:0" DimensionOrder="XYZCT" Type="uint16" SizeX="7" SizeY="9" SizeZ="3" '
               'SizeC="2" SizeT="1">DATA</Pixels></Image></OME>')
        with tifffile.TiffWriter(path) as tiff:
            for i, plane in enumerate(make((6, 9, 7))):
                tiff.write(plane, description=change(xml) if i == 0 else None, metadata=None, contiguous=False)

    def test_ome_places(self):
        pages = make((6, 9, 7))
        part = '<TiffData IFD="{}" FirstZ="{}" FirstC="{}"{}/>'
        one_by_one = "".join(part.format(i, z, c, "") for i, (z, c) in enumerate([(2, 1), (0, 0), (1, 1), (2, 0), (0, 1), (1, 0)]))
        self.write_ome(lambda xml: xml.replace("DATA", one_by_one))
        self.check(pages[[1, 4, 5, 2, 3, 0]].reshape(1, 3, 2, 9, 7))
        runs = part.format(3, 0, 0, ' PlaneCount="3"') + part.format(0, 0, 1, ' PlaneCount="3"')
        self.write_ome(lambda xml: xml.replace("DATA", runs))
        self.check(pages[[3, 0, 4, 1, 5, 2]].reshape(1, 3, 2, 9, 7))
        for old, new in (("<?xml", "\ufeff <?xml"), ("</OME>", "</OME><!-- end -->"), ("OME", "ome:OME")):
            self.write_ome(lambda xml: xml.replace("DATA", "").replace(old, new).replace("xmlns", "xmlns:ome").encode())
            self.check(pages[[0, 3, 1, 4, 2, 5]].reshape(1, 3, 2, 9, 7))
        for data in ("", "<TiffData/>", '<TiffData><UUID FileName="other.tif">urn:uuid:1</UUID></TiffData>'):
            self.write_ome(lambda xml: xml.replace("DATA", data))
            self.check(pages[[0, 3, 1, 4, 2, 5]].reshape(1, 3, 2, 9, 7))
        for data, cause in {
                part.format(0, 0, 0, ""): "no plane for page 2",
                part.format(0, 0, 0, "") * 2: "page 0 (from 0) twice",
                "".join(part.format(i, i % 2, 0, "") for i in range(6)): "twice",
                part.format(6, 0, 0, ""): "page 6",
                part.format(0, 3, 0, ""): "z 3, c 0, t 0 outside",
                part.format(0, 0, 0, ' PlaneCount="7"'): "7 planes",
                part.format(0, 0, 0, ' PlaneCount="99999999999999999999"'): "PlaneCount='9999",
                part.format("-1", 0, 0, ""): "IFD='-1'",
                '<TiffData><UUID FileName="b.tif">urn:uuid:2</UUID></TiffData>': "another file, 'b.tif'"}.items():
            with self.subTest(cause=cause):
                self.write_ome(lambda xml: xml.replace("DATA", data))
                self.check_refused("OME-XML", cause)
        for old, new, cause in (
                ('SizeZ="3"', 'SizeZ="4"', "4 (z) x 2 (c) x 1 (t) pages, but the file has 6"),
                ('SizeZ="3"', 'SizeZ="9223372036854775808"', "but the file has 6"),
                ('SizeX="7"', 'SizeX="8"', "planes of 8 x 9"),
                ("XYZCT", "XYZZT", "DimensionOrder='XYZZT'"),
                ("</OME>", '<Image ID="Image:1"/></OME>', "2 images"),
                ("<Image", '<BinaryOnly MetadataFile="all.ome"/><Image', "'all.ome'"),
                ("</Pixels>", "", "damaged")):
            with self.subTest(cause=cause):
                self.write_ome(lambda xml: xml.replace(old, new))
                self.check_refused("OME-XML", cause)

    def test_layouts_of_tifffile(self):
        image = make((5, 40, 50))
        planes = image[np.newaxis, :, np.newaxis]
        for options in ({"bigtiff": True}, {"byteorder": ">"}, {"compression": "zlib"}, {"compression": "zlib", "predictor": True},
                        {"tile": (16, 16)}, {"rowsperstrip": 7}, {"bigtiff": True, "byteorder": ">", "tile": (32, 16)}):
            with self.subTest(options=options):
                tifffile.imwrite("in.tif", image, photometric="minisblack", **options)
                self.check(planes)
        for sample_type in TYPES:
            image = make((2, 9, 7), sample_type)
            tifffile.imwrite("in.tif", image, photometric="minisblack")
            self.check(image[np.newaxis, :, np.newaxis])
        with tifffile.TiffWriter("in.tif") as tiff:  # a pyramid in the chain of pages
            tiff.write(image[0], metadata=None)
            tiff.write(image[0, ::2, ::2], subfiletype=1, metadata=None)
        self.check(image[:1, np.newaxis, np.newaxis])

    def test_layouts_of_libtiff(self):
        rgb = make((2, 40, 50, 3), "uint8")
        tifffile.imwrite("rgb.tif", rgb, photometric="rgb")
        tifffile.imwrite("grey.tif", make((2, 40, 50)), photometric="minisblack")
        options = [["-p", "separate"], ["-p", "contig"], ["-t", "-w", "16", "-l", "32"], ["-t", "-w", "16", "-l", "32", "-p", "separate"],
                   ["-B"], ["-8"], ["-r", "1"], ["-f", "lsb2msb"]]
        options += [["-c", codec] for codec in ("none", "packbits", "lzw", "lzw:2", "zip", "zip:2", "lzma", "zstd", "lerc")]
        options += [["-c", codec, "-t", "-w", "16", "-l", "16", "-B"] for codec in ("lzw:2", "zstd", "lzma")]
        for option in options:
            with self.subTest(option=option):
                if "separate" not in option:
                    done("tiffcp", *option, "grey.tif", "in.tif")
                    self.check(make((2, 40, 50))[np.newaxis, :, np.newaxis])
                done("tiffcp", *option, "rgb.tif", "in.tif")
                self.check(np.moveaxis(rgb, -1, 1)[np.newaxis])

    def test_constant_images_are_plausible(self):
        image = np.full((3000, 4000), 7, "uint8")
        tifffile.imwrite("grey.tif", image)
        for codec in ("packbits", "lzw", "zip", "lzma", "zstd", "lerc", "jpeg"):
            for layout in (["-s", "-r", "3000"], ["-t", "-w", "512", "-l", "512"]):
                with self.subTest(codec=codec, layout=layout):
                    done("tiffcp", "-c", codec, *layout, "grey.tif", "in.tif")
                    self.assertEqual([7, 7], [self.info("in.tif")[key] for key in ("minimum", "maximum")])

    def test_refusals(self):
        image = make((9, 8))
        for sample_type, *parts in (("float16", "16-bit floating point", "convert them to 32-bit floating point"),
                                    ("float64", "64-bit floating point", "convert them to 32-bit floating point"),
                                    ("int64", "64-bit signed", "32 bits"), ("complex64", "complex", "real and the imaginary"),
                                    ("bool", "1-bit", "convert them to 8 bits")):
            with self.subTest(sample_type=sample_type):
                tifffile.imwrite("in.tif", image.astype(sample_type))
                self.check_refused(*parts)
        for bits in (2, 4, 12):
            tifffile.imwrite("in.tif", image.astype("uint8" if bits < 8 else "uint16"))
            done("tiffset", "-s", "258", str(bits), "in.tif")
            self.check_refused(f"{bits}-bit unsigned", f"convert them to {8 if bits < 8 else 16} bits")
        tifffile.imwrite("in.tif", make((16, 16, 16)), volumetric=True, tile=(16, 16, 16), photometric="minisblack")
        self.check_refused("ImageDepth 16", "each slice as a page")
        tifffile.imwrite("in.tif", make((3, 9, 8)), truncate=True, photometric="minisblack")
        self.check_refused("truncated", "a page for each")
        for other in (make((9, 9)), make((9, 8), "uint8"), make((9, 8, 3))):
            with tifffile.TiffWriter("in.tif") as tiff:
                for page in (image, image, other):
                    tiff.write(page, metadata=None, photometric="rgb" if page.ndim == 3 else "minisblack")
            self.check_refused("page 3", "differs from the first", "files of their own")
        tifffile.imwrite("in.tif", make((3, 9, 8)), imagej=True, truncate=True, metadata={"axes": "ZYX"})
        with tifffile.TiffFile("in.tif") as tiff:
            end = tiff.series[0].dataoffset + 3 * 9 * 8 * 2
        os.truncate("in.tif", end - 1)
        self.check_refused("3 pages", "only 2")
        tifffile.imwrite("in.tif", make((4, 9, 8)), photometric="minisblack")
        size = str(4 * 9 * 8 * 2 - 1)
        answer = call(vexo, "info", "in.tif", "--max-image-bytes", size)
        self.assertEqual(1, answer.returncode)
        self.assertTrue(re.search(f"in.tif.*takes 576 bytes, more than the limit of {size} ", answer.stderr), answer.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=1)
