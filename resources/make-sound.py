#!/usr/bin/env python3
"""Synthesises the reminder that is compiled in: two bell tones, a rising fourth, 16-bit stereo at 44.1 kHz.

    resources/make-sound.py [FILE]

writes media/tip.wav beside itself, or FILE. The same bytes come out at every run.
"""
import array
import math
import pathlib
import sys
import wave

RATE = 44100
SECONDS = 1.97
PEAK = 0.5
# Start in seconds, pitch in hertz, loudness: A5, then D6 while the first still rings.
TONES = ((0.00, 880.00, 1.0), (0.22, 1174.66, 0.9))
# Multiple of the pitch, loudness, seconds to fall to 1/e: a soft bell. The higher a partial, the sooner it goes.
PARTIALS = ((1.0, 1.00, 0.42), (2.0, 0.32, 0.24), (3.0, 0.10, 0.14), (4.2, 0.05, 0.07))
ATTACK = 0.006
FADE = 0.25
# The right channel hears each tone this much later, which gives the chime some room.
SPREAD = 0.0006


def sample(time: float) -> float:
    total = 0.0
    for start, pitch, loudness in TONES:
        age = time - start
        if age < 0.0:
            continue
        attack = 0.5 - 0.5 * math.cos(math.pi * min(age / ATTACK, 1.0))
        for multiple, strength, decay in PARTIALS:
            total += (loudness * attack * strength * math.exp(-age / decay)
                      * math.sin(2.0 * math.pi * pitch * multiple * age))
    return total * min((SECONDS - time) / FADE, 1.0)


def main() -> None:
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent / "media/tip.wav"
    frames = round(RATE * SECONDS)
    sides = [[sample(i / RATE - delay) for i in range(frames)] for delay in (0.0, SPREAD)]
    scale = PEAK * 32767.0 / max(abs(value) for side in sides for value in side)
    data = array.array("h", (round(value * scale) for frame in zip(*sides) for value in frame))
    if sys.byteorder == "big":
        data.byteswap()
    with wave.open(str(target), "wb") as file:
        file.setnchannels(2)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(data.tobytes())


if __name__ == "__main__":
    main()
