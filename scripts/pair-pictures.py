"""Puts two pictures of one frame side by side, 720 pixels wide each: pair-pictures.py LEFT RIGHT OUT.jpg."""
import sys

from PIL import Image

left, right, target = sys.argv[1:]
WIDTH, GAP = 720, 8
pictures = [Image.open(path).convert("RGB") for path in (left, right)]
height = WIDTH * pictures[0].height // pictures[0].width
pair = Image.new("RGB", (2 * WIDTH + GAP, height), (255, 255, 255))
for i, picture in enumerate(pictures):
    pair.paste(picture.resize((WIDTH, height), Image.Resampling.LANCZOS), (i * (WIDTH + GAP), 0))
# Without subsampling: a star's colour is as sharp as its light.
pair.save(target, quality=88, subsampling=0, optimize=True)
