"""Parameters by name and index, in display units and normalised; the errors users meet."""
import math

import numpy as np
import pytest

import audiofilters as af


def test_listing_covers_every_family_and_layout():
    listed = af.effects()
    assert len(listed) == 55
    assert {info.family for info in listed} == set(af.families())
    stereo_only = {"balance", "swap-channels", "fill-left", "fill-right"}
    for info in listed:
        expected = {2} if info.family in stereo_only else {1, 2, 6, 16}
        assert info.channels in expected, info
    assert sum(1 for info in listed if info.family == "highpass") == 4


def test_names_and_figures_a_host_sees():
    eq = af.Effect("parametric-eq", channels=2, sample_rate=48000)
    assert eq.identifier == "Internal Parametric EQ Stereo"
    assert eq.parameter_names == ["Center", "Q", "Boost"]
    assert [eq.label(i) for i in range(3)] == ["Hz", "", "dB"]
    # The width converts linearly from the typed value while its display squares the normalised value.
    eq.set("q", 4)
    assert eq.text("Q") == "0.864321"
    highpass = af.Effect("Internal Highpass Stereo", sample_rate=44100)
    assert highpass.text("cutoff") == "1373.531"
    assert highpass.get_normalised(0) == np.float32(0.25)
    assert af.Effect("highpass", channels=6).identifier == "Internal Highpass 5.1"
    assert af.Effect("notch", channels=1).identifier == "Internal Bandreject Mono"


def test_normalised_values_round_trip_bit_for_bit():
    values = [0.0, 1.0, 0.1, 0.3333333, 0.75, np.nextafter(np.float32(0.5), np.float32(1))]
    for name in ["volume", "highpass", "parametric-eq", "delay", "multitap-delay", "balance"]:
        effect = af.Effect(name, channels=2)
        for index in range(len(effect.parameter_names)):
            for value in values:
                effect.set_normalised(index, value)
                assert np.float32(effect.get_normalised(index)).view(np.uint32) == \
                    np.float32(value).view(np.uint32), (name, index, value)


def test_display_values_round_trip():
    highpass = af.Effect("highpass", channels=2, sample_rate=48000)
    for hertz in [20.0, 200.0, 1000.0, 12000.0]:
        highpass.set("Cutoff", hertz)
        assert math.isclose(highpass.get("cutoff"), hertz, rel_tol=1e-5)
    volume = af.Effect("volume", channels=2)
    for decibels in [-40.0, -6.0, 0.0, 3.0]:
        volume.set("level", decibels)
        assert math.isclose(volume.get("level"), decibels, rel_tol=1e-5, abs_tol=1e-5)
    delay = af.Effect("delay", channels=2, delay=0.375, feedback=40, mix=35)
    assert [round(delay.get(name), 4) for name in ("delay", "feedback", "mix")] == [0.375, 40.0, 35.0]


def test_keyword_parameters_take_underscores_for_blanks():
    surround = af.Effect("channel-volume", channels=6, left_surround=-3.0)
    assert surround.get("Left Surround") == pytest.approx(-3.0, abs=1e-4)
    assert surround.index("left_surround") == surround.index("LEFT SURROUND")


def test_unknown_names_are_refused_with_the_choices():
    with pytest.raises(ValueError, match="unknown effect 'shimmer'"):
        af.Effect("shimmer")
    with pytest.raises(ValueError, match=r"no parameter 'resonance'.*'Cutoff'"):
        af.Effect("highpass", resonance=2.0)
    with pytest.raises(ValueError, match="no parameter 3"):
        af.Effect("highpass").set(3, 100.0)
    with pytest.raises(ValueError, match="several parameters named"):
        af.Effect("multitap-delay").set("Level 4", -6.0)
    with pytest.raises(ValueError, match="no variant for 6 channels"):
        af.Effect("balance", channels=6)
    with pytest.raises(ValueError, match="takes 2 channel"):
        af.Effect("Internal Highpass Stereo", channels=1)


@pytest.mark.parametrize("bad", [float("nan"), float("inf"), -float("inf")])
def test_non_finite_parameters_are_refused(bad):
    effect = af.Effect("highpass", cutoff=300.0)
    before = effect.get_normalised(0)
    with pytest.raises(ValueError, match="finite"):
        effect.set("cutoff", bad)
    with pytest.raises(ValueError, match="finite"):
        effect.set_normalised(0, bad)
    assert effect.get_normalised(0) == before


def test_values_outside_the_range_are_refused():
    with pytest.raises(ValueError, match="lies outside"):
        af.Effect("volume", level=7.0)
    with pytest.raises(ValueError, match="lies outside"):
        af.Effect("highpass", sample_rate=44100, cutoff=5.0)


def test_shapes_name_what_was_expected():
    stereo = af.Effect("invert", channels=2)
    with pytest.raises(ValueError, match=r"expected an array of shape \(2, frames\), got shape \(100,\)"):
        stereo(np.zeros(100, dtype=np.float32))
    with pytest.raises(ValueError, match=r"looks like \(frames, channels\)"):
        stereo(np.zeros((100, 2), dtype=np.float32))
    with pytest.raises(ValueError, match="got shape"):
        stereo(np.zeros((2, 2, 10), dtype=np.float32))
    with pytest.raises(ValueError, match="out has shape"):
        stereo(np.zeros((2, 10), dtype=np.float32), out=np.zeros((2, 11), dtype=np.float32))
    with pytest.raises(TypeError, match="out must be a float32"):
        stereo(np.zeros((2, 10), dtype=np.float32), out=np.zeros((2, 10)))
    with pytest.raises(ValueError, match="block_size"):
        stereo(np.zeros((2, 10), dtype=np.float32), block_size=0)


def test_dtypes_follow_the_stated_rule():
    invert = af.Effect("invert", channels=1)
    # Inversion is exact, so the results show the conversion alone.
    assert invert(np.array([16384, -32768], dtype=np.int16)).tolist() == [-0.5, 1.0]
    assert invert(np.array([2 ** 30], dtype=np.int32)).tolist() == [-0.5]
    assert invert(np.array([192, 128], dtype=np.uint8)).tolist() == [-0.5, 0.0]
    assert invert(np.array([0.1], dtype=np.float64))[0] == -np.float32(0.1)
    assert invert([0.25, 0.5]).dtype == np.float32
    for refused in (np.array([1 + 2j]), np.array([True]), np.array(["a"]), np.array([1], dtype=np.uint16)):
        with pytest.raises(TypeError, match="float32 is used as is"):
            invert(refused)


def test_in_place_and_new_arrays_agree_and_mono_keeps_its_shape():
    signal = np.random.default_rng(3).uniform(-1, 1, (2, 3000)).astype(np.float32)
    first = af.Effect("lowpass", channels=2, cutoff=900.0)
    second = first.configured()
    returned = first(signal)
    assert returned is not signal and not np.array_equal(returned, signal)
    in_place = signal.copy()
    assert second(in_place, out=in_place) is in_place
    assert np.array_equal(in_place.view(np.uint32), returned.view(np.uint32))
    # A transposed (frames, channels) array is taken through its transpose's copy.
    third = first.configured()
    assert np.array_equal(third(np.asfortranarray(signal)).view(np.uint32), returned.view(np.uint32))
    mono = af.Effect("lowpass", channels=1, cutoff=900.0)
    assert mono(signal[0]).shape == (3000,)


def test_reset_clears_the_history():
    echo = af.Effect("delay", channels=1, delay=0.01, feedback=50, mix=50)
    click = np.zeros(2000, dtype=np.float32)
    click[0] = 1.0
    first = echo(click)
    echo(np.zeros(2000, dtype=np.float32))
    echo.reset()
    assert np.array_equal(echo(click).view(np.uint32), first.view(np.uint32))


def test_pickles_as_the_way_it_was_made():
    import pickle
    effect = af.Effect("highpass", channels=2, sample_rate=44100, cutoff=120.0)
    effect.set_normalised(0, 0.4)
    copy = pickle.loads(pickle.dumps(effect))
    assert (copy.identifier, copy.sample_rate, copy.get_normalised(0)) == (effect.identifier, 44100, effect.get_normalised(0))


def test_notebook_table_lists_every_parameter():
    page = af.Effect("parametric-eq", center=3000.0)._repr_html_()
    assert page.count("<tr>") == 4 and "Center" in page and "3000.000" in page and "Boost" in page
