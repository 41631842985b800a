"""Every registered effect through Python gives afx render's output bit for bit, for the same input,
parameter settings and block size."""
import numpy as np
import pytest

import audiofilters as af
from conftest import assert_same_bits, noise, read_rows, write_float_wav

RATE = 44100
FRAMES = 9000  # eight full blocks of 1024 frames and a shorter one


def settings_for(info):
    """A spread of non-default settings: even parameters as display values a fraction into their range
    (afx -p), odd ones as normalised values (afx --set)."""
    chosen = []
    for parameter in info.parameters:
        fraction = 0.2 + 0.15 * (parameter.index % 5)
        if parameter.index % 2 == 0 and parameter.maximum > parameter.minimum and parameter.type != "none":
            value = parameter.minimum + fraction * (parameter.maximum - parameter.minimum)
            chosen.append(("display", parameter.index, float(np.float32(value))))
        else:
            chosen.append(("normalised", parameter.index, float(np.float32(fraction))))
    return chosen


def afx_arguments(settings):
    words = []
    for kind, index, value in settings:
        words += ["-p", f"{index}={value!r}"] if kind == "display" else ["--set", f"{index}={value!r}"]
    return words


def apply(effect, settings):
    for kind, index, value in settings:
        if kind == "display":
            effect.set(index, value)
        else:
            effect.set_normalised(index, value)


@pytest.mark.parametrize("info", af.effects(RATE), ids=lambda info: info.identifier)
def test_effect_equals_afx_render(info, afx, tmp_path):
    rows = noise(info.channels, FRAMES, seed=len(info.identifier))
    source, rendered = tmp_path / "in.wav", tmp_path / "out.wav"
    write_float_wav(source, rows, RATE)
    settings = settings_for(info)
    # The Python effect processes exactly the frames it is given: no tail from afx either.
    afx("render", source, rendered, "-e", info.identifier, *afx_arguments(settings), "--float", "--quiet",
        "--tail", "0")

    effect = af.Effect(info.identifier, info.channels, RATE)
    apply(effect, settings)
    assert_same_bits(effect(rows), read_rows(rendered))


@pytest.mark.parametrize("block", [1, 64, 1000])
def test_chain_and_block_size_equal_afx(block, afx, tmp_path):
    rows = noise(2, 5000, seed=block)
    source, rendered = tmp_path / "in.wav", tmp_path / "out.wav"
    write_float_wav(source, rows, RATE)
    afx("render", source, rendered, "-e", "highpass", "-p", "cutoff=80", "-e", "parametric-eq", "-p",
        "center=2500", "-p", "boost=4", "-e", "delay", "-p", "delay=0.01", "-p", "feedback=35", "-e", "volume",
        "-p", "level=2", "--block", block, "--float", "--quiet", "--tail", "0")
    chain = af.Chain([af.Effect("highpass", 2, RATE, cutoff=80), af.Effect("parametric-eq", 2, RATE, center=2500, boost=4),
                      af.Effect("delay", 2, RATE, delay=0.01, feedback=35), af.Effect("volume", 2, RATE, level=2)])
    expected = read_rows(rendered)
    assert_same_bits(chain(rows, block_size=block), expected)
    # The same chain again from a fresh start, in place in the caller's array, one effect after another.
    chain.reset()
    chain.configured()  # copies leave the original alone
    fresh = [effect.configured() for effect in chain]
    in_place = rows.copy()
    for effect in fresh:
        effect.process(in_place, block_size=block, out=in_place)
    assert_same_bits(in_place, expected)


@pytest.mark.parametrize("subtype, float_output", [("PCM_16", False), ("PCM_16", True), ("PCM_24", False),
                                                   ("FLOAT", False)])
def test_render_file_equals_afx_render(subtype, float_output, afx, tmp_path):
    import soundfile
    rows = noise(2, 7000, seed=7, level=0.9)
    source = tmp_path / "in.wav"
    soundfile.write(source, rows.T, RATE, subtype=subtype)
    by_afx, by_python = tmp_path / "afx.wav", tmp_path / "python.wav"
    # +6 dB drives some samples past full scale, so the integer outputs clip.
    afx("render", source, by_afx, "-e", "volume", "-p", "level=6", "-e", "lowpass", "-p", "cutoff=5000",
        *(["--float"] if float_output else []), "--quiet")
    report = af.render_file(str(source), str(by_python), [("volume", {"level": 6}), ("lowpass", {"cutoff": 5000})],
                            float_output=float_output)
    assert report["subtype"] == ("FLOAT" if float_output else subtype)
    assert soundfile.info(str(by_python)).subtype == soundfile.info(str(by_afx)).subtype
    dtype = "float32" if float_output or subtype == "FLOAT" else "int32"
    expected, _ = soundfile.read(str(by_afx), dtype=dtype)
    actual, _ = soundfile.read(str(by_python), dtype=dtype)
    assert np.array_equal(actual.view(np.uint32), expected.view(np.uint32))
    if dtype == "int32":
        assert report["clipped"] > 0
