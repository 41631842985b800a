"""Audio files through effects, written the way afx writes them: into a hidden file beside the output,
flushed to the disk and renamed only when complete, so no reader ever sees a partial output."""
from __future__ import annotations

import os
import tempfile
from typing import Sequence, Union

import numpy as np
import soundfile

from ._effect import DEFAULT_BLOCK_SIZE, Chain, Effect

# Frames read, processed and written at a time: whole blocks of about 256 KB of samples.
_CHUNK_SAMPLES = 65536

# The integer sample formats whose samples are rounded to the nearest step and clipped here.
_INTEGER_BITS = {"PCM_S8": 8, "PCM_U8": 8, "PCM_16": 16, "PCM_24": 24, "PCM_32": 32}

EffectLike = Union[str, tuple, Effect]
ChainLike = Union[Effect, Chain, str, Sequence[EffectLike]]


def chain_for(chain: ChainLike, channels: int, sample_rate: float, block_size: int = DEFAULT_BLOCK_SIZE) -> Chain:
    """A fresh chain for audio of `channels` at `sample_rate`.

    `chain` is an Effect, a Chain, a name ("highpass"), or a list of names, (name, {parameter: display
    value}) pairs and Effects. Effects are remade the way they were made (a family name picks the variant
    for `channels`; parameters are set again in display units, so frequencies keep their Hz).
    """
    if isinstance(chain, (Effect, str, tuple)):
        chain = [chain]
    if isinstance(chain, Chain):
        chain = list(chain)
    links = []
    for item in chain:
        if isinstance(item, Effect):
            links.append(item.configured(channels, sample_rate, block_size))
        elif isinstance(item, str):
            links.append(Effect(item, channels, sample_rate, block_size=block_size))
        elif isinstance(item, tuple) and len(item) == 2 and isinstance(item[0], str) and isinstance(item[1], dict):
            effect = Effect(item[0], channels, sample_rate, block_size=block_size)
            for key, value in item[1].items():
                effect.set(key, value)
            links.append(effect)
        else:
            raise TypeError(f"an effect is given as an Effect, a name or (name, {{parameter: value}}), "
                            f"not {item!r}")
    return Chain(links)


def output_subtype(output: str, input_subtype: str, float_output: bool) -> str:
    """The sample format of the output: the input's, or 32-bit float when asked; Vorbis for .ogg."""
    container = _container(output)
    subtype = "FLOAT" if float_output else input_subtype
    if container == "OGG" and subtype not in ("VORBIS", "OPUS"):
        subtype = "VORBIS"
    if not soundfile.check_format(container, subtype):
        raise ValueError(f"cannot write {subtype} samples to a {container} file '{output}': choose another "
                         f"extension (e.g. .wav)" + ("" if float_output else " or float_output=True"))
    return subtype


def _container(path: str) -> str:
    extension = os.path.splitext(path)[1][1:].upper()
    formats = soundfile.available_formats()
    if extension in formats:
        return extension
    if extension == "OGA":
        return "OGG"
    if extension in ("AIF",):
        return "AIFF"
    raise ValueError(f"cannot tell the file type of '{path}' from its extension; use e.g. .wav or .flac")


def _quantise(rows: np.ndarray, bits: int) -> tuple[np.ndarray, int]:
    """Rounds to the file's step (ties to even) and clips at full scale, in the top bits of int32."""
    scale = float(2 ** (bits - 1))
    steps = np.rint(rows.astype(np.float64) * scale)
    steps[np.isnan(steps)] = 0.0
    clipped = int(np.count_nonzero((steps > scale - 1.0) | (steps < -scale)))
    np.clip(steps, -scale, scale - 1.0, out=steps)
    return (steps.astype(np.int64) << (32 - bits)).astype(np.int32), clipped


class AtomicOutput:
    """A hidden temporary file beside `path` that replaces `path` only in :meth:`commit`."""

    def __init__(self, path: str, overwrite: bool) -> None:
        self.path = os.path.abspath(path)
        if os.path.isdir(self.path):
            raise IsADirectoryError(f"output '{path}' is a folder; name a file")
        if not overwrite and os.path.exists(self.path):
            raise FileExistsError(f"output '{path}' exists; pass overwrite=True to replace it")
        folder, base = os.path.split(self.path)
        descriptor, self.temporary = tempfile.mkstemp(prefix=f".{base}.afx-", dir=folder)
        os.close(descriptor)
        # mkstemp makes the file private; give it the permissions a new file gets.
        mask = os.umask(0)
        os.umask(mask)
        os.chmod(self.temporary, 0o666 & ~mask)
        self.committed = False

    def commit(self, sync: bool) -> None:
        if sync:
            descriptor = os.open(self.temporary, os.O_RDONLY)
            try:
                os.fsync(descriptor)
            finally:
                os.close(descriptor)
        os.replace(self.temporary, self.path)
        self.committed = True

    def discard(self) -> None:
        if not self.committed and os.path.exists(self.temporary):
            os.unlink(self.temporary)


def temporary_pattern(path: str) -> str:
    """The names AtomicOutput's hidden files take for `path` (a glob pattern in its folder)."""
    folder, base = os.path.split(os.path.abspath(path))
    return os.path.join(folder, f".{base}.afx-*")


def render_file(input: str, output: str, chain: ChainLike, *, block_size: int = DEFAULT_BLOCK_SIZE,
                float_output: bool = False, overwrite: bool = False, sync: bool = True) -> dict:
    """Renders the audio file `input` through `chain` into `output`, as ``afx render`` does.

    The chain is made for the file's channel count and sample rate (see :func:`chain_for`) and driven in
    blocks of `block_size` frames. The output keeps the input's sample format unless `float_output`
    (32-bit float); integer samples are rounded to the nearest step and clipped at full scale. The output
    is written to a hidden file beside it, flushed to the disk unless `sync` is False, and renamed when
    complete: an error or an interruption leaves no partial file and never damages an existing output,
    which is replaced only with `overwrite`. Returns frames, channels, sample rate and clipped samples.
    """
    if block_size < 1:
        raise ValueError("block_size must be at least 1 frame")
    if os.path.exists(output) and os.path.samefile(input, output):
        raise ValueError(f"input and output are the same file '{output}'; write to another file")
    with soundfile.SoundFile(input) as source:
        channels, rate = source.channels, source.samplerate
        effects = chain_for(chain, channels, rate, block_size)
        subtype = output_subtype(output, source.subtype, float_output)
        bits = _INTEGER_BITS.get(subtype)
        chunk = max(1, _CHUNK_SAMPLES // (channels * block_size)) * block_size
        target = AtomicOutput(output, overwrite)
        clipped = 0
        try:
            with soundfile.SoundFile(target.temporary, "w", rate, channels, subtype, format=_container(output)) \
                    as sink:
                for frames in source.blocks(blocksize=chunk, dtype="float32", always_2d=True):
                    rows = np.ascontiguousarray(frames.T)
                    effects.process(rows, out=rows)
                    if bits is None:
                        sink.write(rows.T)
                    else:
                        integers, over = _quantise(rows, bits)
                        clipped += over
                        sink.write(integers.T)
            target.commit(sync)
        finally:
            target.discard()
        return {"frames": source.frames, "channels": channels, "sample_rate": rate, "subtype": subtype,
                "clipped": clipped}
