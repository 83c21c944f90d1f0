"""Renders a strip of pictures for each control that acts on the picture, for docs/controls.md.

usage: draw-controls.py LUMIVAR FOLDER

Each strip is FOLDER/NAME.png: one view under four values of one control, all others alike, each cell with its value below.
LUMIVAR is the command line, with the shipped catalogue beside its plug-in.
"""
import copy
import json
import pathlib
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw, ImageFont

CELL = (300, 200)
LABEL = 22
GAP = 4
FONT = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 13)

# A cell is small: its spots are larger than a full frame's would be, so that they are seen.
ORION = {
    "composition": {"width": CELL[0], "height": CELL[1], "frame_rate": 24, "duration": 1},
    "camera": {"look_at": {"ra": 84, "dec": 0.5}, "vertical_fov": 20},
    "controls": {"Star Brightness": 6, "Maximum Luminance": 4, "Star Spot Size": 8, "Star Saturation": 1},
    "picture": {"view": "photo", "exposure": 1},
}


def with_controls(scene, **controls):
    made = copy.deepcopy(scene)
    made["controls"].update({name.replace("_", " "): value for name, value in controls.items()})
    return made


def spinning():
    scene = copy.deepcopy(ORION)
    scene["composition"].update(motion_blur=True, shutter_angle=360, shutter_phase=0)
    scene["camera"]["look_at"]["roll"] = {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 1440}]}
    return with_controls(scene, Star_Brightness=60, Luminance_Threshold=0.001)


def wide():
    scene = with_controls(ORION, Star_Spot_Size=6, Star_Brightness=3)
    scene["camera"] = {"look_at": {"ra": 84, "dec": 0.5}, "vertical_fov": 100}
    return scene


def on_the_way():
    scene = with_controls(ORION, Star_Brightness=6)
    # 60 parsecs from the Sun toward 6 h on the equator, and looking there.
    scene["camera"] = {"position": [0, 0, 60], "vertical_fov": 40}
    return scene


def values(*numbers):
    return [(f"{number:g}", number) for number in numbers]


STRIPS = [
    ("star-brightness", ORION, "Star Brightness", values(1, 5, 20, 80)),
    ("brightness-bias", with_controls(ORION, Star_Brightness=3), "Brightness Bias", values(0.7, 1, 1.5, 2.5)),
    ("star-saturation", ORION, "Star Saturation", values(0, 0.4, 1, 2)),
    ("tint-strength", with_controls(ORION, Tint_Color="#ffa040"), "Tint Strength", values(0, 0.3, 0.6, 1)),
    ("tint-color", with_controls(ORION, Tint_Strength=0.6), "Tint Color",
     [("64, 128, 255", "#4080ff"), ("64, 255, 128", "#40ff80"), ("255, 160, 64", "#ffa040"), ("255, 64, 64", "#ff4040")]),
    ("maximum-luminance", ORION, "Maximum Luminance", values(0.003, 0.03, 0.5, 4)),
    ("luminance-threshold", with_controls(ORION, Star_Brightness=30), "Luminance Threshold",
     [("0.0001: magnitude 10", 0.0001), ("0.001: magnitude 7.5", 0.001), ("0.01: magnitude 5", 0.01),
      ("0.1: magnitude 2.5", 0.1)]),
    ("star-spot-size", ORION, "Star Spot Size", values(2, 5, 10, 25)),
    ("star-aspect-ratio", with_controls(ORION, Star_Spot_Size=14, Luminance_Threshold=0.002), "Star Aspect Ratio", values(0.4, 1, 2, 4)),
    ("motion-blur-segments", spinning(), "Motion Blur Segments", values(1, 2, 4, 24)),
    ("projection", wide(), "Projection", [("Persp, 100 degrees high", "Persp"), ("HemiSph", "HemiSph"), ("AzEqu", "AzEqu")]),
    ("parallax-crush", on_the_way(), "Parallax Crush", values(0, 0.5, 2, 100)),
]


def render(lumivar, scene, path):
    subprocess.run([lumivar, "render", "-", "-o", path, "--quiet"], input=json.dumps(scene), text=True, check=True,
                   stdout=subprocess.DEVNULL)
    return Image.open(path).convert("RGB")


def draw(lumivar, folder, name, scene, control, cells):
    strip = Image.new("RGB", (len(cells) * (CELL[0] + GAP) - GAP, CELL[1] + LABEL), (255, 255, 255))
    pen = ImageDraw.Draw(strip)
    with tempfile.TemporaryDirectory() as scratch:
        for i, (label, value) in enumerate(cells):
            made = copy.deepcopy(scene)
            made["controls"][control] = value
            left = i * (CELL[0] + GAP)
            strip.paste(render(lumivar, made, f"{scratch}/cell.png"), (left, 0))
            pen.text((left + 4, CELL[1] + 4), label, font=FONT, fill=(0, 0, 0))
    # With a palette: stars take four times as many bytes without. Other methods give a nearly black picture no colours.
    strip.quantize(256, method=Image.Quantize.FASTOCTREE).save(folder / f"{name}.png", optimize=True)


def main():
    lumivar, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for name, scene, control, cells in STRIPS:
        print(f"{folder / name}.png")
        draw(lumivar, folder, name, scene, control, cells)


main()
