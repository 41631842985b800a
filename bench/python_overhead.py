"""What the Python layer costs over the module's own processing, for a few stereo effects.

- Per call at 64-frame blocks: one Python call per block (effect(block, out=block)) against the same
  blocks driven by the extension's C++ loop inside one call (effect.process(long, block_size=64)), which
  is the module's in-process rate at that block size; the difference is the cost of one call.
- Long arrays: one call over 10 s of audio in 1024-frame blocks, in place (out=: the C++ loop's rate plus
  one call) and returning a new array (a copy is made first).

Run from the build: PYTHONPATH=build/python /usr/bin/python3 bench/python_overhead.py [--repeat N]
Figures are medians of N runs (default 7), wall clock; not a test.
"""
import argparse
import os
import statistics
import sys
import time

import numpy as np

import audiofilters as af

RATE = 48000
EFFECTS = [("volume", {"level": -3.0}), ("highpass", {"cutoff": 200.0}), ("parametric-eq", {"boost": 4.0}),
           ("delay", {"delay": 0.25, "feedback": 35.0})]


def median_seconds(run, repeat):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        run()
        times.append(time.perf_counter() - start)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--repeat", type=int, default=7)
    arguments = parser.parse_args()
    noise = np.random.default_rng(1).uniform(-0.5, 0.5, (2, 10 * RATE)).astype(np.float32)
    blocks = 4000
    block = noise[:, :64].copy()
    series = noise[:, :64 * blocks].copy()

    print(f"audiofilters {af.__file__}; Python {sys.version.split()[0]}; NumPy {np.__version__}")
    print(f"load average {' '.join(f'{value:.1f}' for value in os.getloadavg())} on {os.cpu_count()} cores")
    print("| Effect (stereo) | C++ loop, per 64-frame block | Python call per 64-frame block | overhead per call "
          "| 10 s in one call, in place | 10 s in one call, new array |")
    print("|---|---|---|---|---|---|")
    for name, parameters in EFFECTS:
        effect = af.Effect(name, 2, RATE, **parameters)
        inner = median_seconds(lambda: effect.process(series, 64, out=series), arguments.repeat) / blocks

        def one_call_per_block():
            for _ in range(blocks):
                effect(block, 64, out=block)

        outer = median_seconds(one_call_per_block, arguments.repeat) / blocks
        frames = noise.shape[1]
        long_in_place = noise.copy()
        loop = median_seconds(lambda: effect.process(long_in_place, out=long_in_place), arguments.repeat)
        copied = median_seconds(lambda: effect(noise), arguments.repeat)
        megasamples = lambda seconds: f"{2 * frames / seconds / 1e6:,.0f} MS/s"
        print(f"| {effect.identifier} | {inner * 1e6:.2f} µs | {outer * 1e6:.2f} µs | "
              f"{(outer - inner) * 1e6:.2f} µs | {megasamples(loop)} | {megasamples(copied)} |")


if __name__ == "__main__":
    main()
