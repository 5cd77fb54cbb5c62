#!/usr/bin/env python3
"""Draws the icons that are compiled in from the line art in svg/. Needs rsvg-convert and qrencode (Debian: librsvg2-bin,
qrencode).

    resources/make-icons.py

writes icons/app.ico, icons/hicolor/ (the sizes that a Linux desktop looks for, as they are installed) and images/*.png
beside itself. Run it after a change of a drawing and commit the outcome.
"""
import pathlib
import struct
import subprocess
import zlib

HERE = pathlib.Path(__file__).resolve().parent
APP_SIZES = (16, 20, 24, 32, 40, 48, 64, 128, 256)
# The program's id under freedesktop.org names its icon; these are the sizes that desktops ask for.
APP_ID = "example.larkspire.larkspire"
DESKTOP_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
# The popup shows its icon at 24; four times that is sharp at every usual scaling and for the tray.
IMAGE_SIZE = 96
IMAGES = ("keyword", "alert")
# The picture on the user card is clipped to a circle of 60.
AVATAR_SIZE = 240
# What the code on the customer service dialog leads to, and the pixels per module: large enough for a phone's camera.
SUPPORT_LINK, MODULE_SIZE = "https://www.larkspire.example/support/chat", 12
# The tick of a checked box on the dark skin: drawn for one and for two device pixels per pixel.
TICK_SIZES = {"tick.png": 13, "tick@2x.png": 26}
# At the smallest sizes a stroke of the grid's 1.75 is little more than one pixel and fades; a wider one holds.
SMALL_SIZE = 20
STROKE, SMALL_STROKE = b'stroke-width="1.75"', b'stroke-width="2.25"'
# Readers of old expect bitmaps for the small sizes; bitmaps of the large ones would only be big.
LARGEST_BITMAP = 64


def render(drawing: bytes, size: int) -> bytes:
    """The drawing as a PNG file, `size` pixels wide and high."""
    return subprocess.run(["rsvg-convert", "--width", str(size), "--height", str(size), "--format", "png"],
                          input=drawing, stdout=subprocess.PIPE, check=True).stdout


def pixel_rows(png: bytes) -> list:
    """Rows of RGBA bytes of a PNG file with eight bits per channel, without interlacing."""
    width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", png[16:29])
    if (depth, colour, interlace) != (8, 6, 0):
        raise ValueError("expected an RGBA image without interlacing")
    packed, place = b"", 8
    while place < len(png):
        length, kind = struct.unpack(">I4s", png[place:place + 8])
        if kind == b"IDAT":
            packed += png[place + 8:place + 8 + length]
        place += 12 + length
    data, stride, rows = zlib.decompress(packed), width * 4, []
    above = bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        kind, row = data[start], bytearray(data[start + 1:start + 1 + stride])
        for i in range(stride):
            left = row[i - 4] if i >= 4 else 0
            corner = above[i - 4] if i >= 4 else 0
            if kind == 1:
                guess = left
            elif kind == 2:
                guess = above[i]
            elif kind == 3:
                guess = (left + above[i]) // 2
            elif kind == 4:
                estimate = left + above[i] - corner
                guess = min((left, above[i], corner), key=lambda value: abs(estimate - value))
            else:
                guess = 0
            row[i] = (row[i] + guess) & 0xFF
        rows.append(row)
        above = row
    return rows


def bitmap(png: bytes, size: int) -> bytes:
    """The image as an icon's 32-bit bitmap: header, colours from the bottom row up, and the mask of old."""
    colours, mask = bytearray(), bytearray()
    for row in reversed(pixel_rows(png)):
        bits = 0
        for x in range(size):
            red, green, blue, alpha = row[4 * x:4 * x + 4]
            colours += bytes((blue, green, red, alpha))
            bits = bits << 1 | (alpha < 128)
        padded = (size + 31) // 32 * 32
        mask += (bits << (padded - size)).to_bytes(padded // 8, "big")
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, len(colours) + len(mask), 0, 0, 0, 0)
    return header + bytes(colours) + bytes(mask)


def icon(images: list) -> bytes:
    """An .ico file of (size, data) pairs."""
    directory, body = struct.pack("<HHH", 0, 1, len(images)), b""
    start = 6 + 16 * len(images)
    for size, data in images:
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), start + len(body))
        body += data
    return directory + body


def main() -> None:
    lark = (HERE / "svg/lark.svg").read_bytes()
    if STROKE not in lark:
        raise ValueError("svg/lark.svg has lost the stroke width that the small sizes replace")

    def lark_at(size: int) -> bytes:
        return render(lark.replace(STROKE, SMALL_STROKE) if size <= SMALL_SIZE else lark, size)

    images = []
    for size in APP_SIZES:
        png = lark_at(size)
        images.append((size, bitmap(png, size) if size <= LARGEST_BITMAP else png))
    (HERE / "icons/app.ico").write_bytes(icon(images))
    for size in DESKTOP_SIZES:
        folder = HERE / f"icons/hicolor/{size}x{size}/apps"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{APP_ID}.png").write_bytes(lark_at(size))
    for name in IMAGES:
        (HERE / f"images/{name}.png").write_bytes(render((HERE / f"svg/{name}.svg").read_bytes(), IMAGE_SIZE))
    (HERE / "images/user_pro.png").write_bytes(render((HERE / "svg/user_pro.svg").read_bytes(), AVATAR_SIZE))
    subprocess.run(["qrencode", "--level", "M", "--size", str(MODULE_SIZE), "--margin", "2",
                    "--output", str(HERE / "images/wxqrcode.png"), SUPPORT_LINK], check=True)
    tick = (HERE / "svg/tick.svg").read_bytes()
    for name, size in TICK_SIZES.items():
        (HERE / f"images/{name}").write_bytes(render(tick, size))


if __name__ == "__main__":
    main()
