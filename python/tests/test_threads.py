"""Effects in parallel threads give the bits they give one after the other."""
import threading

import numpy as np

import audiofilters as af
from conftest import assert_same_bits, noise


def make_pair():
    return (af.Chain([af.Effect("highpass", 2, 48000, cutoff=150.0), af.Effect("delay", 2, 48000, delay=0.02, feedback=30)]),
            af.Effect("parametric-eq", 6, 48000, center=800.0, boost=-5.0))


def test_two_effects_in_two_threads_equal_sequential_runs():
    first_input, second_input = noise(2, 400_000, seed=11), noise(6, 200_000, seed=12)
    first, second = make_pair()
    expected = (first(first_input, block_size=256), second(second_input, block_size=300))

    first, second = make_pair()
    results = [None, None]
    start = threading.Barrier(2)

    def run(slot, effect, audio, block):
        start.wait()
        results[slot] = effect(audio, block_size=block)

    threads = [threading.Thread(target=run, args=(0, first, first_input, 256)),
               threading.Thread(target=run, args=(1, second, second_input, 300))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert_same_bits(results[0], expected[0])
    assert_same_bits(results[1], expected[1])
