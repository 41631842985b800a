"""How arrays become the float32 (channels, frames) rows the effects process."""
from __future__ import annotations

import numpy as np

DTYPE_RULE = (
    "float32 is used as is; other floating types are rounded to the nearest float32; signed integers are "
    "PCM samples divided by 2**(bits - 1) (int16 32767 -> 0.99997); uint8 is 8-bit PCM centred on 128"
)


def to_float32(audio: np.ndarray) -> np.ndarray:
    """Returns `audio` as float32 by the package's dtype rule (the same object when it already is)."""
    kind = audio.dtype.kind
    if audio.dtype == np.float32:
        return audio
    if kind == "f":
        return audio.astype(np.float32)
    if kind == "i":
        scale = float(2 ** (8 * audio.dtype.itemsize - 1))
        return (audio.astype(np.float64) / scale).astype(np.float32)
    if audio.dtype == np.uint8:
        return ((audio.astype(np.float64) - 128.0) / 128.0).astype(np.float32)
    raise TypeError(f"cannot process audio of dtype {audio.dtype}: {DTYPE_RULE}")


def check_shape(shape: tuple, channels: int, what: str) -> None:
    """Raises ValueError unless `shape` is (channels, frames), or (frames,) for one channel."""
    if len(shape) == 1 and channels == 1:
        return
    if len(shape) == 2 and shape[0] == channels:
        return
    expected = f"({channels}, frames)" + (" or (frames,)" if channels == 1 else "")
    hint = ""
    if len(shape) == 2 and shape[1] == channels:
        hint = "; it looks like (frames, channels), as soundfile reads: pass its transpose (audio.T)"
    raise ValueError(f"{what} takes {channels} channel(s): expected an array of shape {expected}, "
                     f"got shape {tuple(shape)}{hint}")


def as_rows(array: np.ndarray) -> np.ndarray:
    """A (channels, frames) view of a (channels, frames) or (frames,) array."""
    return array[np.newaxis, :] if array.ndim == 1 else array


def prepare(audio, out, channels: int, what: str) -> np.ndarray:
    """The array to process in place: a new float32 copy of `audio`, or `out` holding it."""
    source = audio if isinstance(audio, np.ndarray) else np.asarray(audio)
    check_shape(source.shape, channels, what)
    if out is None:
        converted = to_float32(source)
        if converted is source or not converted.flags.c_contiguous:
            converted = np.array(converted, dtype=np.float32, order="C", copy=True)
        return converted
    if not isinstance(out, np.ndarray) or out.dtype != np.float32:
        raise TypeError("out must be a float32 NumPy array")
    if out.shape != source.shape:
        raise ValueError(f"out has shape {out.shape} but the audio has shape {source.shape}")
    if not out.flags.writeable:
        raise ValueError("out is read-only")
    if out.shape[-1] > 1 and out.strides[-1] != out.itemsize:
        raise ValueError("out needs contiguous frames (stride of one float32 along its last axis)")
    if out is not source:
        np.copyto(out, to_float32(source))
    return out
