"""Frequency responses from impulse responses, and the plot the README shows."""
import os

import numpy as np
import pytest

import audiofilters as af


def test_response_of_level_effects_is_their_gain():
    frequencies, response = af.Effect("invert", channels=1, sample_rate=48000).response(1024)
    assert frequencies[0] == 0.0 and frequencies[-1] == 24000.0 and response.shape == (1, 513)
    assert np.array_equal(response, -np.ones((1, 513)))
    _, response = af.Effect("volume", channels=2, level=-6.0).response(256)
    assert np.allclose(np.abs(response), 10 ** (-6.0 / 20), rtol=1e-5)


def test_highpass_response_has_its_landmarks():
    frequencies, response = af.Effect("highpass", channels=1, sample_rate=48000, cutoff=1000.0).response(16384)
    decibels = 20 * np.log10(np.abs(response[0]))
    at = lambda hertz: decibels[np.argmin(np.abs(frequencies - hertz))]
    assert at(250.0) < -40.0                 # two sections: 24 dB per octave below the corner
    assert -6.5 < at(1000.0) < -5.5          # 6 dB down at the corner
    assert abs(at(12000.0)) < 0.5            # pass band
    effect = af.Effect("highpass", channels=1, sample_rate=48000, cutoff=1000.0)
    effect(np.ones(100, dtype=np.float32))
    assert np.array_equal(effect.response(16384)[1], response)  # the effect's own history is not used


def test_chain_response_is_the_product():
    low = af.Effect("lowpass", channels=1, cutoff=3000.0)
    bass = af.Effect("bass", channels=1, boost=6.0)
    _, chained = af.Chain([low, bass]).response(4096)
    _, alone_low = low.response(4096)
    _, alone_bass = bass.response(4096)
    assert np.allclose(chained, alone_low * alone_bass, atol=1e-4)


def test_plot_response_draws_magnitude_and_phase(tmp_path):
    pytest.importorskip("matplotlib")
    import matplotlib
    matplotlib.use("Agg")
    chain = af.Chain([af.Effect("highpass", 2, 44100, cutoff=80.0),
                      af.Effect("parametric-eq", 2, 44100, center=2500.0, q=1.0, boost=6.0),
                      af.Effect("treble", 2, 44100, boost=-6.0)])
    figure = af.plot_response(chain, title="highpass 80 Hz -> parametric EQ +6 dB at 2.5 kHz (Q 1) -> treble -6 dB")
    top, bottom = figure.axes
    frequencies, magnitude = top.lines[0].get_data()
    expected_frequencies, response = chain.response()
    assert np.array_equal(frequencies, expected_frequencies[1:])
    assert np.allclose(magnitude, 20 * np.log10(np.abs(response[0, 1:])))
    assert magnitude[np.argmin(np.abs(frequencies - 20.0))] < -40.0  # two octaves under the 80 Hz corner
    assert bottom.get_ylabel() == "phase (degrees)"
    target = os.environ.get("AF_PLOT_OUTPUT") or str(tmp_path / "response.png")
    os.makedirs(os.path.dirname(target), exist_ok=True)
    figure.savefig(target, dpi=90)
    assert os.path.getsize(target) > 10_000
