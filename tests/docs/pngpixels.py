"""The pixels of a PNG file of 8 bits, without interlacing."""
import struct
import zlib

COMPONENTS = {0: 1, 2: 3, 4: 2, 6: 4}


def chunks(content):
    at = 8
    while at < len(content):
        length, kind = struct.unpack('>I4s', content[at:at + 8])
        yield kind, content[at + 8:at + 8 + length]
        at += length + 12


def paeth(left, above, corner):
    estimate = left + above - corner
    return min((abs(estimate - value), order, value) for order, value in enumerate((left, above, corner)))[2]


def unfiltered(kind, line, above, step):
    for at in range(len(line)):
        left, corner = (line[at - step], above[at - step]) if at >= step else (0, 0)
        predicted = (0, left, above[at], (left + above[at]) // 2, paeth(left, above[at], corner) if kind == 4 else 0)[kind]
        line[at] = (line[at] + predicted) & 255
    return line


def read(path):
    """Size of a pixel in bytes, and the rows as bytes."""
    with open(path, 'rb') as file:
        parts = list(chunks(file.read()))
    width, _, bits, colour, _, _, interlaced = struct.unpack('>IIBBBBB', dict(parts)[b'IHDR'])
    if bits != 8 or interlaced:
        raise ValueError(path + ' is not of 8 bits, or is interlaced')
    step = COMPONENTS[colour]
    samples = zlib.decompress(b''.join(data for kind, data in parts if kind == b'IDAT'))
    rows, above, length = [], bytes(width * step), width * step
    for at in range(0, len(samples), length + 1):
        above = unfiltered(samples[at], bytearray(samples[at + 1:at + 1 + length]), above, step)
        rows.append(bytes(above))
    return step, rows
