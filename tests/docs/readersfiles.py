"""Pictures that hold more than grey or RGB of 8 bits, as the documents' readers have them; written byte by byte."""
import struct

WIDTH, HEIGHT = 64, 48


def write_frame(path):
    """A FITS frame of 32-bit floats, 9000 and more."""
    cards = ['SIMPLE  = %20s' % 'T', 'BITPIX  = %20d' % -32, 'NAXIS   = %20d' % 2, 'NAXIS1  = %20d' % WIDTH,
             'NAXIS2  = %20d' % HEIGHT, 'END']
    header = ''.join(card.ljust(80) for card in cards)
    samples = struct.pack('>%df' % (WIDTH * HEIGHT), *(9000 + 5.5 * at for at in range(WIDTH * HEIGHT)))
    with open(path, 'wb') as file:
        file.write(padded(header.encode(), b' ') + padded(samples, b'\0'))


def padded(block, filling):
    return block + filling * (-len(block) % 2880)


def write_annotations(path):
    """A shape, as a program that outlines cells writes it."""
    with open(path, 'w', encoding='utf-8') as file:
        file.write('{"type":"FeatureCollection","features":[{"type":"Feature","geometry":{"type":"Polygon",'
                   '"coordinates":[[[100,100],[300,120],[200,400],[100,100]]]},'
                   '"properties":{"classification":{"name":"Tumor","color":[200,0,0]}}}]}\n')


def write_stack(path):
    """Pages of three channels, 13 slices and four times."""
    write_tiff(path, 3 * 13 * 4, 1, b'ImageJ=1.53t\nchannels=3\nslices=13\nframes=4\n\0')


def write_tiff(path, pages, bands, description=b''):
    """A TIFF of 8 bits, not compressed; of more than one band the first three are red, green and blue."""
    with open(path, 'wb') as file:
        file.write(struct.pack('<2sHI', b'II', 42, 8))
        for page in range(pages):
            file.write(directory(file.tell(), page, page + 1 < pages, bands, b'' if page else description))


def directory(start, page, goes_on, bands, description):
    """A directory with the values and samples that it points to."""
    colours = 3 if bands >= 3 else 1
    description += b'\0' * (len(description) % 2)
    shorts = {258: [8] * bands, 338: [0] * (bands - colours)}
    if description:
        shorts[270] = struct.unpack('<%dH' % (len(description) // 2), description)
    numbers = {256: WIDTH, 257: HEIGHT, 259: 1, 262: 2 if colours == 3 else 1, 273: 0, 277: bands, 278: HEIGHT,
               279: WIDTH * HEIGHT * bands}
    tags = sorted(list(numbers) + [tag for tag, values in shorts.items() if values])
    place = start + 2 + 12 * len(tags) + 4
    entries, tail = b'', b''
    for tag in tags:
        if tag in numbers:
            entries += struct.pack('<HHII', tag, 4, 1, numbers[tag] if tag != 273 else place + sum(
                2 * len(values) for values in shorts.values() if len(values) > 2))
            continue
        values = struct.pack('<%dH' % len(shorts[tag]), *shorts[tag])
        if len(values) > 4:
            letters = tag == 270
            entries += struct.pack('<HHII', tag, 2 if letters else 3, len(values) if letters else len(shorts[tag]), place + len(tail))
            tail += values
        else:
            entries += struct.pack('<HHI', tag, 3, len(shorts[tag])) + values.ljust(4, b'\0')
    samples = bytes((7 * page + at) % 256 for at in range(WIDTH * HEIGHT * bands))
    following = start + 2 + len(entries) + 4 + len(tail) + len(samples)
    return struct.pack('<H', len(tags)) + entries + struct.pack('<I', following if goes_on else 0) + tail + samples
