#!/usr/bin/env python3
"""The synthetic sky a second time, to judge the first: Python's numbers are those of IEEE 754 too.

    tests/catalogue/synthetic_sky.py STARS SEED [--brightest M] [--faintest M] [--distances] [-o FILE]

prints the FNV-1a hash of the database that `lumivar catalog synth` must write with the same arguments. synthetic_sky_test.cpp
holds such hashes. It is some hundred times slower.
"""
import argparse
import math
import struct
import sys

WORD = (1 << 64) - 1
GOLDEN = 0x9E3779B97F4A7C15


def scramble(x):
    x = (x + GOLDEN) & WORD
    x = ((x ^ (x >> 30)) * 0xBF58476D1CE4E5B9) & WORD
    x = ((x ^ (x >> 27)) * 0x94D049BB133111EB) & WORD
    return x ^ (x >> 31)


def fraction(word):
    return (word >> 11) / 9007199254740992.0  # 2^53


def uniforms(seed, number):
    """Endless random numbers from 0 to 1."""
    state = scramble(scramble(seed) ^ number)
    while True:
        yield fraction(scramble(state))
        state = (state + GOLDEN) & WORD


def blend(low, high, share):
    return low + (high - low) * share


def look_up(xs, value):
    """Row and share of a value between the rows of a rising column."""
    if not value > xs[0]:
        return 0, 0.0
    for row in range(len(xs) - 1):
        if value < xs[row + 1]:
            return row, (value - xs[row]) / (xs[row + 1] - xs[row])
    return len(xs) - 2, 1.0


def table(xs, ys, value):
    row, share = look_up(xs, value)
    return blend(ys[row], ys[row + 1], share)


# Stars of the whole sky brighter than magnitude -2, -1 ... 21.
COUNTS = [0.3, 1.2, 4, 15, 49, 172, 515, 1606, 4992, 15397, 41058, 117e3, 324e3, 870e3, 2.27e6, 5.7e6, 13.8e6, 32e6, 71e6,
          150e6, 296e6, 560e6, 1000e6, 1700e6]
DIMMER = 0.39810717055349726  # 10^-0.4


def curves():
    counts, lights = [], []
    light = 6.3095734448019325  # 10^0.8
    for low, high in zip(COUNTS, COUNTS[1:]):
        for column, first, last in ((counts, low, high), (lights, light, light * DIMMER)):
            ratio = last / first
            for _ in range(4):
                ratio = math.sqrt(ratio)
            value = first
            for _ in range(16):
                column.append(value)
                value = value * ratio
        light = light * DIMMER
    return counts + [COUNTS[-1]], lights + [light]


def count_to(counts, magnitude):
    steps = (magnitude + 2.0) * 16
    row = min(max(math.floor(steps), 0), len(counts) - 2)
    return blend(counts[row], counts[row + 1], steps - row)


TO_CENTRE = (-0.0548755604, -0.8734370902, -0.4838350155)
ALONG = (0.4941094279, -0.4448296300, 0.7469822445)
TO_POLE = (-0.8676661490, -0.1980763734, 0.4559837762)
MODEL_AT = (5, 9, 12, 16, 20)


def disc_point(draw):
    while True:
        x = 2.0 * next(draw) - 1.0
        y = 2.0 * next(draw) - 1.0
        square = x * x + y * y
        if 0.0 < square < 1.0:
            return x, y, square


def student(chance):
    return chance * math.sqrt(2.0 / (1.0 - chance * chance))


def noise(at, seed):
    low = [math.floor(x) for x in at]
    share = []
    for x, cell in zip(at, low):
        t = x - cell
        share.append(t * t * (3.0 - 2.0 * t))

    def corner(x, y, z):
        return fraction(scramble(seed ^ ((low[0] + x + 512) << 40 | (low[1] + y + 512) << 20 | (low[2] + z + 512))))

    planes = []
    for z in (0, 1):
        rows = [blend(corner(0, y, z), corner(1, y, z), share[0]) for y in (0, 1)]
        planes.append(blend(rows[0], rows[1], share[1]))
    return blend(planes[0], planes[1], share[2])


def seen(v, dust, seed):
    slope = v[2] / 0.07
    lane = 1.0 / (1.0 + slope * slope)
    if lane * dust < 0.01:
        return 1.0
    thickness = 0.65 + 0.35 * v[0]
    clouds = [noise((f * v[0], f * v[1], 2.0 * f * v[2]), (seed + i) & WORD) for i, f in enumerate((4.5, 11.0, 27.0))]
    cloud = 0.5 * clouds[0] + 0.3 * clouds[1] + 0.2 * clouds[2]
    patch = min(max(3.5 * (cloud - 0.36), 0.0), 1.0)
    return 1.0 - dust * lane * thickness * patch


def direction(magnitude, draw, seed):
    bulge = table(MODEL_AT, (0.0, 0.02, 0.06, 0.15, 0.24), magnitude)
    disc = bulge + table(MODEL_AT, (0.45, 0.52, 0.56, 0.56, 0.52), magnitude)
    dust = table(MODEL_AT, (0.0, 0.6, 0.9, 0.95, 0.95), magnitude)
    while True:
        part = next(draw)
        if part < bulge:
            y = 0.20 * student(0.97 * (2.0 * next(draw) - 1.0))
            z = 0.11 * student(0.97 * (2.0 * next(draw) - 1.0))
            length = math.sqrt(1.0 * 1.0 + y * y + z * z)
            v = (1.0 / length, y / length, z / length)
        elif part < disc:
            height = table(MODEL_AT, (0.30, 0.25, 0.19, 0.14, 0.10), magnitude)
            centre = table(MODEL_AT, (0.05, 0.15, 0.3, 0.4, 0.5), magnitude)
            scaled = 1.0 / height
            most = scaled / math.sqrt(2.0 + scaled * scaled)
            z = height * student(most * (2.0 * next(draw) - 1.0))
            across = math.sqrt(max(0.0, 1.0 - z * z))
            while True:
                x, y, square = disc_point(draw)
                root = math.sqrt(square)
                cosine = x / root
                if next(draw) * (1.0 + centre) < 1.0 + centre * cosine:
                    break
            v = (across * cosine, across * (y / root), z)
        else:
            x, y, square = disc_point(draw)
            root = 2.0 * math.sqrt(1.0 - square)
            v = (x * root, y * root, 1.0 - 2.0 * square)
        if next(draw) < seen(v, dust, seed):
            return [v[0] * a + v[1] * b + v[2] * c for a, b, c in zip(TO_CENTRE, ALONG, TO_POLE)]


# math.atan is not fixed to the last bit: the arcs of sixteenths are rounded from 17 digits, and the rest is a series.
ARCS = [0.0, 0.062418809995957350, 0.12435499454676144, 0.18534794999569477, 0.24497866312686414, 0.30288486837497142,
        0.35877067027057225, 0.41241044159738732, 0.46364760900080609, 0.51238946031073773, 0.55859931534356244,
        0.60228734613496418, 0.64350110879328437, 0.68231655487474807, 0.71882999962162453, 0.75315128096219441,
        0.78539816339744828]


def arc(tangent):
    nearest = math.floor(16.0 * tangent + 0.5)
    middle = nearest / 16.0
    t = (tangent - middle) / (1.0 + tangent * middle)
    s = t * t
    series = 1.0 / 11.0
    for odd in (9.0, 7.0, 5.0, 3.0, 1.0):
        series = 1.0 / odd - s * series
    return ARCS[nearest] + t * series


def degrees(y, x):
    across, along = abs(y), abs(x)
    if across <= along:
        angle = 57.295779513082323 * arc(across / along)
    else:
        angle = 90.0 - 57.295779513082323 * arc(along / across)
    if x < 0.0:
        angle = 180.0 - angle
    if y < 0.0:
        angle = 360.0 - angle
    return angle if angle < 360.0 else 0.0


MIX_AT = (4.0, 7.2, 8.5, 13.0, 18.0)
MIXES = (
    (-0.26, -0.16, -0.11, -0.07, 0.00, 0.07, 0.17, 0.32, 0.47, 0.71, 0.93, 1.00, 1.09, 1.20, 1.40, 1.57, 1.80),
    (-0.25, -0.03, 0.04, 0.12, 0.22, 0.33, 0.41, 0.49, 0.58, 0.80, 0.96, 1.03, 1.11, 1.22, 1.39, 1.56, 1.85),
    (-0.20, 0.04, 0.14, 0.26, 0.36, 0.43, 0.49, 0.54, 0.61, 0.73, 0.93, 1.01, 1.08, 1.17, 1.30, 1.50, 1.85),
    (-0.10, 0.16, 0.32, 0.42, 0.48, 0.53, 0.58, 0.63, 0.68, 0.74, 0.81, 0.89, 0.98, 1.06, 1.16, 1.32, 1.75),
    (0.20, 0.42, 0.50, 0.56, 0.62, 0.68, 0.74, 0.80, 0.87, 0.95, 1.04, 1.14, 1.25, 1.35, 1.43, 1.50, 1.85))


def colour_index(magnitude, draw):
    row, share = look_up(MIX_AT, magnitude)
    along = next(draw) * 16
    low = math.floor(along)
    first, second = (blend(MIXES[r][low], MIXES[r][low + 1], along - low) for r in (row, row + 1))
    return blend(first, second, share)


# Codes of black bodies for B-V -0.4, -0.3 ... 2.0.
CODES = [(169, 192, 255), (177, 198, 255), (186, 204, 255), (195, 210, 255), (204, 217, 255), (214, 223, 255), (224, 230, 255),
         (235, 237, 255), (247, 244, 255), (255, 248, 251), (255, 243, 240), (255, 239, 229), (255, 235, 218), (255, 230, 208),
         (255, 226, 198), (255, 222, 189), (255, 219, 180), (255, 215, 171), (255, 211, 163), (255, 207, 155), (255, 204, 148),
         (255, 200, 140), (255, 197, 133), (255, 194, 127), (255, 190, 120)]


def code(bv):
    along = min(max((bv + 0.4) * 10.0, 0.0), 24.0)
    row = min(math.floor(along), 23)
    return [int(blend(float(a), float(b), along - row) + 0.5) for a, b in zip(CODES[row], CODES[row + 1])]


BV = (-0.4, -0.2, 0.0, 0.2, 0.4, 0.6, 0.8, 1.0, 1.2, 1.4, 1.6, 1.8, 2.0)


def light_of_halves(halves):
    light = 1.0
    for _ in range(abs(halves)):
        light = light * 0.63095734448019325 if halves > 0 else light / 0.63095734448019325
    return light


DWARFS = [light_of_halves(h) for h in (-9, -3, 1, 4, 6, 9, 12, 13, 15, 17, 22, 25, 28)]
GIANTS = [light_of_halves(h) for h in (-9, -3, 1, 4, 5, 4, 2, 2, 1, -1, -2, -2, -2)]


def intrinsic(magnitude, bv, draw):
    share = min(max((bv - 0.6) / 0.3, 0.0), 1.0) * table((5.0, 8.0, 13.0, 18.0), (0.95, 0.90, 0.55, 0.10), magnitude)
    typical = table(BV, GIANTS if next(draw) < share else DWARFS, bv)
    deviation = 0.4 + 0.6 * (next(draw) + next(draw))
    return typical * (deviation * deviation)


def records(options):
    counts, lights = curves()
    first = count_to(counts, options.brightest)
    ranks = options.stars if options.faintest is None else count_to(counts, options.faintest) - first
    step = float(ranks) / options.stars
    row = 0
    for number in range(options.stars):
        draw = uniforms(options.seed, number)
        rank = first + (float(number) + next(draw)) * step
        while row + 2 < len(counts) and rank >= counts[row + 1]:
            row += 1
        share = (rank - counts[row]) / (counts[row + 1] - counts[row])
        light = blend(lights[row], lights[row + 1], share)
        magnitude = -2.0 + (row + share) / 16
        x, y, z = direction(magnitude, draw, options.seed)
        bv = colour_index(magnitude, draw)
        lat = degrees(z, math.sqrt(x * x + y * y))
        distance = 10.0 * math.sqrt(intrinsic(magnitude, bv, draw) / light) if options.distances else -1.0
        yield struct.pack("<ddf3Bxd", degrees(y, x), lat - 360.0 if lat > 180.0 else lat, light, *code(bv), distance)


def main():
    parser = argparse.ArgumentParser(description="Hash of the synthetic sky")
    parser.add_argument("stars", type=int)
    parser.add_argument("seed", type=int)
    parser.add_argument("--brightest", type=float, default=-1.5)
    parser.add_argument("--faintest", type=float)
    parser.add_argument("--distances", action="store_true")
    parser.add_argument("-o", "--output")
    options = parser.parse_args()
    database = b"LUMIVAR2" + bytes(24) + b"".join(records(options))
    hashed = 0xCBF29CE484222325
    for byte in database:
        hashed = ((hashed ^ byte) * 0x100000001B3) & WORD
    print(f"{hashed:016x}")
    if options.output:
        with open(options.output, "wb") as file:
            file.write(database)


if __name__ == "__main__":
    sys.exit(main())
