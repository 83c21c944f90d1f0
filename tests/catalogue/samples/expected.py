"""What the sample rows say of their stars, worked out without this project's code: astropy moves the stars and reads angles,
the rest is the published relations in a few lines. Prints expected.csv."""
import csv
import gzip
import math
import warnings

import astropy.units as u
import numpy as np
from astropy.coordinates import Angle, Distance, SkyCoord
from astropy.table import Table
from astropy.time import Time

warnings.simplefilter("ignore")  # of astropy: distances that it has to assume

WAVES = np.arange(380, 781, 5) * 1.0


def lobe(peak, low, high):
    return np.exp(-0.5 * ((WAVES - peak) / np.where(WAVES < peak, low, high)) ** 2)


# Wyman, Sloan and Shirley 2013
OBSERVER = np.array([
    1.056 * lobe(599.8, 37.9, 31.0) + 0.362 * lobe(442.0, 16.0, 26.7) - 0.065 * lobe(501.1, 20.4, 26.2),
    0.821 * lobe(568.8, 46.9, 40.5) + 0.286 * lobe(530.9, 16.3, 31.1),
    1.217 * lobe(437.0, 11.8, 36.0) + 0.681 * lobe(459.0, 26.0, 13.8)])
TO_SRGB = np.array([[3.2404542, -1.5371385, -0.4985314], [-0.9692660, 1.8760108, 0.0415560],
                    [0.0556434, -0.2040259, 1.0572252]])


def codes(kelvin):
    metres = WAVES * 1e-9
    planck = metres ** -5 / (np.exp(0.014387769 / (metres * kelvin)) - 1)
    linear = np.clip(TO_SRGB @ (OBSERVER @ planck), 0, None)
    linear /= linear.max()
    encoded = np.where(linear <= 0.0031308, 12.92 * linear, 1.055 * linear ** (1 / 2.4) - 0.055)
    return [int(math.floor(255 * c + 0.5)) for c in encoded]


def kelvin_of_bv(bv):  # Ballesteros 2012
    bv = min(max(bv, -0.4), 2.0)
    return 4600 * (1 / (0.92 * bv + 1.7) + 1 / (0.92 * bv + 0.62))


def kelvin_of_bp_rp(c):  # Mucciarelli, Bellazzini and Massari 2021, dwarfs of solar metallicity
    return 5040 / (0.4929 + 0.5092 * c - 0.0353 * c * c)


def tycho(bt, vt):
    return vt - 0.090 * (bt - vt), 0.850 * (bt - vt)


def at_2000(ra, dec, epoch, pm_ra, pm_dec, parallax=None, rv=None):
    if pm_ra is None or epoch == 2000:
        return ra, dec
    extra = {}
    if parallax and parallax > 0 and rv:
        extra = {"distance": Distance(parallax=parallax * u.mas), "radial_velocity": rv * u.km / u.s}
    star = SkyCoord(ra=ra * u.deg, dec=dec * u.deg, pm_ra_cosdec=pm_ra * u.mas / u.yr, pm_dec=pm_dec * u.mas / u.yr,
                    obstime=Time(epoch, format="jyear", scale="tcb"), frame="icrs", **extra)
    moved = star.apply_space_motion(Time(2000.0, format="jyear", scale="tcb"))
    return moved.ra.deg, moved.dec.deg


def number(text):
    text = str(text).strip()
    return None if text in ("", "--", "null", "nan") else float(text)


STARS = []


def star(file, ra, dec, v, kelvin, parsecs):
    STARS.append([file, repr(float(ra)), repr(float(dec)), repr(float(v)), *codes(kelvin),
                  repr(float(parsecs)) if parsecs else "-1"])


NEUTRAL = kelvin_of_bv(0.6)


def bv_or_neutral(bv):
    return NEUTRAL if bv is None else kelvin_of_bv(bv)


for line in open("hip_main.dat"):
    f = line.split("|")
    ra, dec, plx = number(f[8]), number(f[9]), number(f[11])
    if ra is None:
        continue
    ra, dec = at_2000(ra, dec, 1991.25, number(f[12]), number(f[13]))
    star("hip_main.dat", ra, dec, number(f[5]), bv_or_neutral(number(f[37])), 1000 / plx if plx and plx > 0 else None)

for line in open("tyc2.dat"):
    f = line.split("|")
    ra, dec = (f[2], f[3]) if f[2].strip() else (f[24], f[25])
    bt, vt = number(f[17]), number(f[19])
    v, bv = tycho(bt, vt) if bt is not None and vt is not None else (vt if vt is not None else bt, None)
    star("tyc2.dat", float(ra), float(dec), v, bv_or_neutral(bv), None)

for line in open("tyc2-suppl_1.dat"):
    f = line.split("|")
    bt, vt = number(f[11]), number(f[13])
    v, bv = tycho(bt, vt) if bt is not None and vt is not None else (vt if vt is not None else bt, None)
    ra, dec = at_2000(float(f[2]), float(f[3]), 1991.25, number(f[4]), number(f[5]))
    star("tyc2-suppl_1.dat", ra, dec, v, bv_or_neutral(bv), None)

for line in open("bsc5-catalog.dat"):
    if not line[75:77].strip():
        continue
    ra = Angle(f"{line[75:77]}h{line[77:79]}m{line[79:83]}s").deg
    dec = Angle(f"{line[83]}{line[84:86]}d{line[86:88]}m{line[88:90]}s").deg
    plx = number(line[161:166])
    star("bsc5-catalog.dat", ra, dec, number(line[102:107]), bv_or_neutral(number(line[109:114])),
         1 / plx if plx and plx > 0 else None)

for name in ("hyg_v3.csv", "hyg_v41.csv"):
    for row in csv.DictReader(open(name)):
        if row["proper"] != "Sol":
            star(name, 15 * float(row["ra"]), float(row["dec"]), float(row["mag"]), bv_or_neutral(number(row["ci"])),
                 float(row["dist"]) if float(row["dist"]) < 100000 else None)

for row in csv.DictReader(open("athyg_v40.csv")):
    if row["proper"] != "Sol":
        v, ci = float(row["mag"]), number(row["ci"])
        if row["mag_src"] == "T":
            v, ci = tycho(v + ci, v)
        star("athyg_v40.csv", 15 * float(row["ra"]), float(row["dec"]), v, bv_or_neutral(ci), number(row["dist"]))


def gaia(name, table):
    for row in table:
        g, x, plx = float(row["phot_g_mean_mag"]), float(row["bp_rp"]), number(row["parallax"])
        v = g - (-0.02704 + 0.01424 * x - 0.2156 * x ** 2 + 0.01426 * x ** 3)
        ra, dec = float(row["ra"]), float(row["dec"])
        if number(row.get("pmra", "")) is not None:
            rv = number(row["radial_velocity"])
            ra, dec = at_2000(ra, dec, float(row["ref_epoch"]), float(row["pmra"]), float(row["pmdec"]), plx, rv)
        star(name, ra, dec, v, kelvin_of_bp_rp(x), 1000 / plx if plx and plx > 0 else None)


def rows_of(lines):
    # As texts: the table's own reader would round magnitudes to single precision.
    return list(csv.DictReader(line for line in lines if not line.startswith("#")))


for name in ("gaia_dr3_tap_full.ecsv", "gaia_dr3_subset.csv", "gaia_dr3_subset.ecsv"):
    gaia(name, rows_of(open(name)))
gaia("gaia_dr3_subset.fits", [dict(zip(row.colnames, row)) for row in Table.read("gaia_dr3_subset.fits")])
gaia("gaia_dr3_subset_null.ecsv.gz", rows_of(gzip.open("gaia_dr3_subset_null.ecsv.gz", "rt")))

for name, separator in (("vizier_hip_main_semicolon.tsv", ";"), ("vizier_hip_main_tab.tsv", "\t")):
    rows = [l.rstrip("\n") for l in open(name) if l.strip() and not l.startswith("#")]
    names = rows[0].split(separator)
    for line in rows[3:]:
        row = dict(zip(names, line.split(separator)))
        star(name, float(row["_RAJ2000"]), float(row["_DEJ2000"]), float(row["Vmag"]),
             bv_or_neutral(number(row["B-V"])), None)

print("file,ra_deg,dec_deg,vmag,r,g,b,distance_pc")
for row in STARS:
    print(",".join(str(value) for value in row))
