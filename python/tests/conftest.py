"""Shared fixtures: the reference host afx beside the build's module, and test signals."""
import os
import subprocess

import numpy as np
import pytest
import soundfile

HERE = os.path.dirname(os.path.abspath(__file__))
BIN = os.environ.get("AF_BIN", os.path.join(HERE, "..", "..", "build", "bin"))


@pytest.fixture(scope="session")
def afx():
    """Runs `afx ARGS...`; fails the test with afx's message when it exits non-zero."""
    program = os.path.join(BIN, "afx")
    if not os.path.exists(program):
        pytest.fail(f"afx is not built at {program}; build the project first (AF_BIN names another folder)")

    def run(*arguments):
        done = subprocess.run([program, *map(str, arguments)], capture_output=True, text=True)
        assert done.returncode == 0, f"afx {' '.join(map(str, arguments))}: {done.stderr}"
        return done

    return run


def noise(channels, frames, seed, level=0.5):
    """Deterministic white noise, float32, shape (channels, frames)."""
    generator = np.random.default_rng(seed)
    return (generator.uniform(-level, level, size=(channels, frames))).astype(np.float32)


def write_float_wav(path, rows, sample_rate):
    soundfile.write(path, rows.T, sample_rate, subtype="FLOAT")


def read_rows(path):
    frames, _ = soundfile.read(path, dtype="float32", always_2d=True)
    return np.ascontiguousarray(frames.T)


def assert_same_bits(actual, expected):
    """Exact floats compare as bit patterns: NaN payloads and signed zeros count."""
    assert actual.shape == expected.shape
    differing = np.flatnonzero(actual.view(np.uint32) != expected.view(np.uint32))
    assert differing.size == 0, (f"{differing.size} of {actual.size} samples differ, first at flat index "
                                 f"{differing[0]}: {actual.flat[differing[0]]!r} != {expected.flat[differing[0]]!r}")
