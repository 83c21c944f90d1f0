"""Writes a line of text into the lower left corner of a picture: label-picture.py IN.png OUT.png TEXT.

The picture is saved with a palette: thousands of stars take four times as many bytes without.
"""
import sys

from PIL import Image, ImageDraw, ImageFont

source, target, text = sys.argv[1:]
picture = Image.open(source).convert("RGB")
draw = ImageDraw.Draw(picture)
font = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 16)
left, top, right, bottom = draw.textbbox((12, picture.height - 30), text, font=font)
draw.rectangle((left - 6, top - 5, right + 6, bottom + 5), fill=(0, 0, 0))
draw.text((12, picture.height - 30), text, font=font, fill=(255, 255, 255))
# Other methods give a picture that is nearly all black no colours.
picture.quantize(256, method=Image.Quantize.FASTOCTREE).save(target, optimize=True)
