#!/usr/bin/python3
"""Writes the small files that fuzzing begins with: make_corpus.py [FOLDER]. Files found by fuzzing that lie in the
folder stay. Needs python3-tifffile and tiffcp of libtiff-tools."""

import json
import os
import random
import struct
import subprocess
import sys
import tempfile
import zlib

import numpy as np
import tifffile

folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), 'corpus')


def save(kind, name, data):
    if len(data) > 2048:
        print(f'{kind}/{name} is left out: {len(data)} bytes')
        return
    os.makedirs(os.path.join(folder, kind), exist_ok=True)
    with open(os.path.join(folder, kind, name), 'wb') as file:
        file.write(data)


# ---- TIFF as programs write it


def ramp(shape, dtype):
    return (np.arange(np.prod(shape)) * 7).astype(dtype).reshape(shape)


def tifffile_bytes(image, **options):
    with tempfile.TemporaryDirectory() as place:
        path = os.path.join(place, 'a.tif')
        tifffile.imwrite(path, image, **{'software': '', 'metadata': None, **options})
        return open(path, 'rb').read()


def converted(data, *words):
    """What tiffcp makes of a file; it comes without the description of the other program."""
    with tempfile.TemporaryDirectory() as place:
        one, other = os.path.join(place, 'a.tif'), os.path.join(place, 'b.tif')
        open(one, 'wb').write(data)
        done = subprocess.run(['tiffcp', *words, one, other], stderr=subprocess.PIPE)
        if done.returncode:
            print('tiffcp', *words, done.stderr)
            return b''
        return open(other, 'rb').read()


def make_tiff():
    for dtype in ('uint8', 'int8', 'uint16', 'int16', 'uint32', 'int32', 'float32', 'float64'):
        save('tiff', f'{dtype}.tif', tifffile_bytes(ramp((5, 7), dtype), rowsperstrip=2))
    grey = ramp((6, 9), 'uint16')
    save('tiff', 'one_pixel.tif', tifffile_bytes(ramp((1, 1), 'uint8')))
    save('tiff', 'bigtiff.tif', tifffile_bytes(grey, bigtiff=True))
    save('tiff', 'big_endian.tif', tifffile_bytes(grey, byteorder='>'))
    save('tiff', 'big_endian_bigtiff.tif', tifffile_bytes(ramp((2, 5, 5), 'float32'), byteorder='>', bigtiff=True))
    save('tiff', 'tiles.tif', tifffile_bytes(ramp((20, 19), 'uint8'), tile=(16, 16), compression='zlib'))
    save('tiff', 'planar.tif', tifffile_bytes(ramp((3, 5, 4), 'uint8'), photometric='rgb', planarconfig='separate'))
    rgb = tifffile_bytes(ramp((8, 6, 3), 'uint8'), photometric='rgb')
    save('tiff', 'rgb.tif', rgb)
    save('tiff', 'rgba16.tif', tifffile_bytes(ramp((3, 4, 4), 'uint16'), photometric='rgb', extrasamples=['unassalpha']))
    save('tiff', 'rgb_tiles_planar.tif', tifffile_bytes(ramp((3, 17, 5), 'uint8'), photometric='rgb',
                                                        planarconfig='separate', tile=(16, 16), compression='zlib'))
    save('tiff', 'pages.tif', tifffile_bytes(ramp((5, 3, 4), 'uint8'), photometric='minisblack'))
    save('tiff', 'miniswhite.tif', converted(tifffile_bytes(ramp((3, 4), 'uint8'), photometric='miniswhite')))
    save('tiff', 'palette.tif', tifffile_bytes(ramp((3, 4), 'uint8'), photometric='palette',
                                               colormap=ramp((3, 256), 'uint16')))
    save('tiff', 'imagej.tif', tifffile_bytes(ramp((2, 2, 2, 4, 5), 'uint8'), imagej=True, metadata={'axes': 'TZCYX'}))
    save('tiff', 'ome.tif', tifffile_bytes(ramp((2, 3, 5), 'uint8'), ome=True, metadata={'axes': 'ZYX', 'UUID': ''}))
    save('tiff', 'shaped.tif', tifffile_bytes(ramp((2, 3, 5), 'uint8'), metadata={'axes': 'ZYX'}))
    save('tiff', 'predictor.tif', tifffile_bytes(grey, compression='zlib', predictor=False))
    plain = tifffile_bytes(grey, rowsperstrip=4)
    for name in ('lzw', 'lzw:2', 'zip', 'zip:2', 'packbits', 'lzma', 'zstd'):
        save('tiff', f'{name.replace(":", "_")}.tif', converted(plain, '-c', name))
    real = tifffile_bytes(ramp((6, 5), 'float32'))
    save('tiff', 'float_predictor.tif', converted(real, '-c', 'zip:3'))
    save('tiff', 'jpeg.tif', converted(tifffile_bytes(ramp((8, 8), 'uint8')), '-c', 'jpeg'))
    save('tiff', 'jpeg_rgb.tif', converted(rgb, '-c', 'jpeg:r'))
    save('tiff', 'jpeg_ycbcr.tif', converted(rgb, '-c', 'jpeg'))
    save('tiff', 'webp.tif', converted(rgb, '-c', 'webp'))
    save('tiff', 'lsb_first.tif', converted(plain, '-f', 'lsb2msb'))
    save('tiff', 'cut.tif', plain[:-20])


# ---- TIFF as nobody should write it

SHORT, LONG, LONG8 = 3, 4, 16
WIDTH, HEIGHT, BITS, COMPRESSION, PHOTOMETRIC, DESCRIPTION = 256, 257, 258, 259, 262, 270
OFFSETS, SAMPLES, ROWS, COUNTS, PLANAR, FORMAT, DEPTH = 273, 277, 278, 279, 284, 339, 32997


def tiff(pages, data=b'', order='<'):
    """Pages as {tag: number, list of numbers or bytes}; the data follows the header, at 8. Values that do not fit
    their entry are put behind the directories."""
    directories = [8 + len(data) + (len(data) & 1)]
    for page in pages:
        directories.append(directories[-1] + 2 + 12 * len(page) + 4)
    head = (b'II*\0' if order == '<' else b'MM\0*') + struct.pack(order + 'I', directories[0])
    out, extra = head + data + b'\0' * (len(data) & 1), b''
    for i, page in enumerate(pages):
        out += struct.pack(order + 'H', len(page))
        for tag, value in sorted(page.items()):
            if isinstance(value, bytes):
                kind, count, raw = 2, len(value), value
            else:
                numbers = value if isinstance(value, list) else [value]
                kind = SHORT if tag in (BITS, COMPRESSION, PHOTOMETRIC, SAMPLES, PLANAR, FORMAT) else LONG
                raw = struct.pack(order + str(len(numbers)) + ('H' if kind == SHORT else 'I'), *numbers)
                count = len(numbers)
            if len(raw) > 4:
                raw, extra = struct.pack(order + 'I', directories[-1] + len(extra)), extra + raw
            out += struct.pack(order + 'HHI', tag, kind, count) + raw.ljust(4, b'\0')
        out += struct.pack(order + 'I', directories[i + 1] if i + 1 < len(pages) else 0)
    return out + extra


def page(width, height, **others):
    base = {WIDTH: width, HEIGHT: height, BITS: 8, COMPRESSION: 1, PHOTOMETRIC: 1, OFFSETS: 8, SAMPLES: 1,
            ROWS: height, COUNTS: width * height & 0xffffffff}
    names = globals()
    base.update({names[name]: value for name, value in others.items()})
    return {tag: value for tag, value in base.items() if value is not None}


def make_hostile_tiff():
    few = bytes(range(1, 41))
    for name, code in (('jpeg', 7), ('zstd', 50000), ('lzma', 34925), ('webp', 50001), ('ccitt_g4', 4), ('ccitt_g3', 3),
                       ('deflate', 8), ('lzw', 5), ('packbits', 32773), ('logluv', 34676), ('old_jpeg', 6)):
        bits = 1 if name.startswith('ccitt') else 8
        save('tiff', f'huge_{name}.tif', tiff([page(60000, 60000, COMPRESSION=code, COUNTS=40, BITS=bits)], few))
    save('tiff', 'huge_ccitt_8_bits.tif', tiff([page(60000, 60000, COMPRESSION=4, COUNTS=40)], few))
    save('tiff', 'huge_zstd_rows.tif',
         tiff([page(60000, 8, COMPRESSION=50000, ROWS=1, OFFSETS=[8] * 8, COUNTS=[40] * 8)], few))
    save('tiff', 'widest.tif', tiff([page(0xffffffff, 1, COUNTS=40)], few))
    save('tiff', 'largest.tif', tiff([page(0xffffffff, 0xffffffff, ROWS=1, COUNTS=40)], few))
    save('tiff', 'many_samples.tif', tiff([page(1, 1, SAMPLES=65535, COUNTS=40, BITS=None)], few))
    shared = [page(6, 6, COUNTS=36) for _ in range(14)]
    save('tiff', 'pages_share_strip.tif', tiff(shared, few))
    save('tiff', 'zstd_pages_share_strip.tif', tiff([page(6000, 6000, COMPRESSION=50000, COUNTS=40)] * 14, few))
    save('tiff', 'rows_share_strip.tif', tiff([page(6, 16, ROWS=1, OFFSETS=[8] * 16, COUNTS=[6] * 16)], few))
    save('tiff', 'three_of_sixteen_strips.tif',
         tiff([page(2, 16, ROWS=1, OFFSETS=[8, 10, 12], COUNTS=[2, 2, 2])], few))
    save('tiff', 'no_counts.tif', tiff([page(4, 4, COUNTS=None)], few))
    save('tiff', 'empty_strip.tif', tiff([page(4, 4, COUNTS=0)], few))
    save('tiff', 'strips_in_header.tif', tiff([page(4, 2, OFFSETS=0)], few))
    save('tiff', 'strips_in_directory.tif', tiff([page(4, 4, OFFSETS=60)], few))
    save('tiff', 'strip_behind_end.tif', tiff([page(4, 4, OFFSETS=0xfffffff0)], few))
    save('tiff', 'image_depth.tif', tiff([page(3, 3, DEPTH=3, COUNTS=27)], few))
    save('tiff', 'image_depth_huge.tif', tiff([page(3, 3, DEPTH=0x40000000)], few))
    save('tiff', 'no_rows_per_strip.tif', tiff([page(4, 4, ROWS=None)], few))
    save('tiff', 'zero_rows_per_strip.tif', tiff([page(4, 4, ROWS=0)], few))
    save('tiff', 'zero_width.tif', tiff([page(0, 4)], few))
    save('tiff', 'pages_differ.tif', tiff([page(4, 4), page(4, 5)], few))
    ring = bytearray(tiff([page(4, 4)], few))
    ring[-4:] = struct.pack('<I', 48)
    save('tiff', 'ring_of_pages.tif', bytes(ring))
    for i, text in enumerate(('images=4000000000\nslices=4000000000', 'channels=2\nslices=0\nframes=3', 'images=6',
                              'channels=18446744073709551615\nframes=18446744073709551615', 'slices=-3')):
        description = f'ImageJ=1.11a\n{text}\n'.encode() + b'\0'
        save('tiff', f'imagej_metadata_{i}.tif', tiff([page(2, 2, DESCRIPTION=description)] + [page(2, 2)] * 5, few))
    save('tiff', 'header_only.tif', b'II*\0')
    save('tiff', 'png_inside.tif', b'II*\0\x89PNG\r\n\x1a\n')


# ---- PNG


def chunk(name, data):
    return struct.pack('>I', len(data)) + name + data + struct.pack('>I', zlib.crc32(name + data))


def png(width, height, depth, colour, rows, interlace=0, before=b'', level=0):
    header = struct.pack('>IIBBBBB', width, height, depth, colour, 0, 0, interlace)
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) + before + chunk(b'IDAT', zlib.compress(rows, level)) +
            chunk(b'IEND', b''))


def filtered_rows(width, height, bits):
    """Rows of a ramp, with each of the five filters."""
    size = (width * bits + 7) // 8
    return b''.join(bytes([y % 5]) + bytes((x * 7 + y * 31) % 256 for x in range(size)) for y in range(height))


def interlaced_rows(width, height, bits):
    passes = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
    return b''.join(filtered_rows((width - x + dx - 1) // dx, (height - y + dy - 1) // dy, bits)
                    for x, y, dx, dy in passes if x < width and y < height)


def make_png():
    palette = chunk(b'PLTE', bytes(range(48)))
    transparent = chunk(b'tRNS', bytes(range(16)))
    channels = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}
    for colour, depths in ((0, (1, 2, 4, 8, 16)), (2, (8, 16)), (3, (1, 2, 4, 8)), (4, (8, 16)), (6, (8, 16))):
        before = palette + transparent if colour == 3 else b''
        for depth in depths:
            bits = depth * channels[colour]
            save('png', f'colour{colour}_{depth}.png', png(5, 6, depth, colour, filtered_rows(5, 6, bits), 0, before))
            save('png', f'colour{colour}_{depth}_interlaced.png',
                 png(9, 7, depth, colour, interlaced_rows(9, 7, bits), 1, before))
    save('png', 'grey_transparent.png', png(4, 3, 8, 0, filtered_rows(4, 3, 8), 0, chunk(b'tRNS', b'\0\7')))
    save('png', 'grey4_transparent.png', png(4, 3, 4, 0, filtered_rows(4, 3, 4), 0, chunk(b'tRNS', b'\0\7')))
    save('png', 'rgb_transparent.png', png(4, 3, 8, 2, filtered_rows(4, 3, 24), 0, chunk(b'tRNS', bytes(6))))
    save('png', 'palette_short.png', png(4, 3, 8, 3, filtered_rows(4, 3, 8), 0, chunk(b'PLTE', bytes(6))))
    save('png', 'no_palette.png', png(4, 3, 8, 3, filtered_rows(4, 3, 8)))
    extra = (chunk(b'gAMA', struct.pack('>I', 45455)) + chunk(b'sBIT', b'\5') + chunk(b'tEXt', b'Title\0text') +
             chunk(b'zTXt', b'Title\0\0' + zlib.compress(b'text' * 20)) + chunk(b'bKGD', b'\0\1') +
             chunk(b'pHYs', bytes(9)) + chunk(b'tIME', bytes(7)))
    save('png', 'chunks.png', png(4, 3, 8, 0, filtered_rows(4, 3, 8), 0, extra))
    save('png', 'profile.png', png(4, 3, 8, 0, filtered_rows(4, 3, 8), 0,
                                   chunk(b'iCCP', b'name\0\0' + zlib.compress(bytes(200)))))
    few = filtered_rows(4, 3, 8)
    save('png', 'huge_wide.png', png(1 << 30, 1, 8, 0, few))
    save('png', 'huge_wide_rgba16.png', png(1 << 28, 1, 16, 6, few))
    save('png', 'huge_high.png', png(1, 1 << 30, 8, 0, few))
    save('png', 'huge_interlaced.png', png(60000, 60000, 8, 2, few, 1))
    save('png', 'largest.png', png(0x7fffffff, 0x7fffffff, 16, 6, few))
    save('png', 'bomb.png', png(400, 400, 8, 0, bytes(401 * 400), level=9))
    save('png', 'zero.png', png(0, 4, 8, 0, few))
    save('png', 'rows_missing.png', png(4, 9, 8, 0, few))
    save('png', 'rows_too_many.png', png(4, 1, 8, 0, few))
    save('png', 'bad_filter.png', png(4, 1, 8, 0, b'\x09abcd'))
    save('png', 'bad_depth.png', png(4, 3, 3, 0, few))
    save('png', 'cut.png', png(4, 3, 8, 0, few)[:-16])
    save('png', 'signature.png', b'\x89PNG\r\n\x1a\n')


# ---- JSON archive


def make_archive():
    space = 'vexo::imaproc::filter::'
    image = {'type': 'uint8', 'x': 2, 'y': 2, 'z': 1, 'c': 1, 't': 1, 'samples': 'AQIDBA=='}
    processors = {
        'MeanSmoothing2dImgLvl1': {'InImg': image, 'InHalfKnlSizeX': 2, 'InHalfKnlSizeY': 1, 'OutImg': image},
        'Convolution2dImgLvl1': {'InKnlXY': '0,0,1;-1,2,0.5;3,-4,-1e-3', 'InNormalize': True,
                                 'InOptConvolBorder2d': 'constant=-2.5'},
        'Convolution3dImgLvl1': {'InKnlXYZ': '0,0,1,1;1,1,1,nan', 'InNormalize': False, 'InOptConvolBorder3d': 'circular'},
        'GaussianSmoothing2dImgLvl1': {'InStdDevX': 1.5, 'InStdDevY': 'inf',
                                       'InOptSmoothingGaussianCoverage': 'coverage=0.9,maxHalfKnlSize=3'},
        'HistoO1Median2dImgLvl1': {'InHalfKnlSizeX': 4294967295, 'InInputRange': 'minimum=-1,maximum=255'},
        'Median2dImgLvl1': {'InHalfKnlSizeX': 1, 'InHalfKnlSizeY': 32767, 'InOutOptAllow8bitsCompression': True},
        'Bilateral2dImgLvl1': {'InSpaceSigma': 1e300, 'InRangeSigma': 'nan', 'InOptHalfKnlSize': 3},
        'DespeckleFilter2dImgLvl1': {'InFactor': -0.0},
    }
    for name, attributes in processors.items():
        save('archive', name + '.json', json.dumps({space + name: {'version': 1, **attributes}}).encode())
    save('archive', 'newer_version.json', json.dumps({space + 'Median2dImgLvl1': {'version': 99}}).encode())
    lying = {**image, 'x': 1 << 40, 'y': 1 << 40}
    save('archive', 'lying_image.json',
         json.dumps({space + 'MeanSmoothing2dImgLvl1': {'version': 1, 'InImg': lying}}).encode())
    save('archive', 'items.json', json.dumps({
        'Range': {'version': 1, 'minimum': '0', 'maximum': '1e3'},
        'GaussianCoverage': {'version': 1, 'coverage': '0.5', 'maxHalfKnlSize': '7'},
        'StatsResult': {'version': 1, 'minimum': '0', 'maximum': 'nan', 'mean': '1', 'standardDeviation': 'inf',
                        'sum': '2', 'count': '3'}}).encode())
    texts = {
        'kinds': '{"a":true,"b":1,"c":-1,"d":1.5,"e":"text","f":"nan","g":"-inf","h":"AQID","i":{},"j":null}',
        'numbers': '{"a":4294967295,"b":4294967296,"c":-2147483648,"d":-2147483649,"e":18446744073709551615,'
                   '"f":18446744073709551616,"g":-9223372036854775808,"h":-9223372036854775809,"i":1e308,"j":1e309,'
                   '"k":-0,"l":-0.0,"m":1e-400,"n":3.4028235e38,"o":3.4028236e38,"p":0.1,"q":1e39}',
        'digits': '{"a":' + '9' * 400 + '}',
        'nested': '{"a":' * 60 + '1' + '}' * 60,
        'too_nested': '{"a":' * 300 + '1' + '}' * 300,
        'open': '{"a":' * 300,
        'arrays': '[' * 900,
        'array': '{"a":[1]}',
        'twice': '{"a":1,"a":2}',
        'escapes': r'{"\u0000":"\ud83d\ude00","\n\"":"\\u00e9 é","":""}',
        'half_pair': r'{"a":"\ud83d"}',
        'single': '1',
        'bytes': '{"a":"AAAA","b":"AAA=","c":"AA==","d":"A===","e":"AAB=","f":"AB==","g":"===="}',
    }
    for name, text in texts.items():
        save('archive', name + '.json', text.encode())
    save('archive', 'latin1.json', b'{"a":"\xe9"}')


# ---- Calls of processors: any bytes are one


def make_calls():
    for kind in ('processor', 'guard'):
        dice = random.Random(kind)
        for i in range(27):
            save(kind, f'call{i:02}', bytes([i]) + dice.randbytes(90))
        save(kind, 'empty', b'')


make_tiff()
make_hostile_tiff()
make_png()
make_archive()
make_calls()
