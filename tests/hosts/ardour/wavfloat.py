"""32-bit float WAV files as NumPy arrays (frames x channels), read and written
exactly: the samples' bits are never converted."""
import struct

import numpy as np

FORMAT_FLOAT = 3
FORMAT_EXTENSIBLE = 0xFFFE
# The first two bytes of the extensible format's sub-format GUID name the format.
SUBFORMAT_OFFSET = 24


def read(path):
    """Returns (samples as float32 frames x channels, sample rate)."""
    with open(path, "rb") as handle:
        data = handle.read()
    if data[0:4] != b"RIFF" or data[8:12] != b"WAVE":
        raise ValueError(f"{path}: not a WAV file")
    position, channels, rate, samples = 12, None, None, None
    while position + 8 <= len(data):
        chunk, size = data[position:position + 4], struct.unpack_from("<I", data, position + 4)[0]
        body = data[position + 8:position + 8 + size]
        if chunk == b"fmt ":
            tag, channels, rate = struct.unpack_from("<HHI", body, 0)
            bits = struct.unpack_from("<H", body, 14)[0]
            if tag == FORMAT_EXTENSIBLE:
                tag = struct.unpack_from("<H", body, SUBFORMAT_OFFSET)[0]
            if tag != FORMAT_FLOAT or bits != 32:
                raise ValueError(f"{path}: not 32-bit float samples (format {tag}, {bits} bits)")
        elif chunk == b"data":
            if channels is None:
                raise ValueError(f"{path}: data before format")
            samples = np.frombuffer(body, dtype="<f4").reshape(-1, channels)
        position += 8 + size + (size & 1)
    if samples is None:
        raise ValueError(f"{path}: no samples")
    return samples, rate


def write(path, samples, rate):
    """Writes float32 frames x channels as a WAV file of 32-bit floats."""
    samples = np.ascontiguousarray(samples, dtype="<f4")
    channels = samples.shape[1]
    body = samples.tobytes()
    fmt = struct.pack("<HHIIHH", FORMAT_FLOAT, channels, rate, rate * channels * 4, channels * 4, 32)
    with open(path, "wb") as handle:
        handle.write(b"RIFF" + struct.pack("<I", 4 + 8 + len(fmt) + 8 + len(body)) + b"WAVE")
        handle.write(b"fmt " + struct.pack("<I", len(fmt)) + fmt)
        handle.write(b"data" + struct.pack("<I", len(body)) + body)
