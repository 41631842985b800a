"""Effects and chains of effects over NumPy arrays."""
from __future__ import annotations

import html
from dataclasses import dataclass
from functools import lru_cache
from typing import Iterable, Iterator, Sequence, Union

import numpy as np

from . import _audiofilters
from ._audio import as_rows, prepare

ParameterKey = Union[int, str]

# What afx shows by default; any rate may be asked for.
DEFAULT_SAMPLE_RATE = 48000.0
DEFAULT_BLOCK_SIZE = 1024


@dataclass(frozen=True)
class ParameterInfo:
    """One parameter as a host sees it: ranges in display units at the rate asked."""
    index: int
    name: str
    label: str
    type: str
    minimum: float
    maximum: float
    step: float
    default: float
    default_normalised: float
    default_text: str


@dataclass(frozen=True)
class EffectInfo:
    """One registered effect."""
    identifier: str
    name: str
    family: str
    channels: int
    parameters: tuple[ParameterInfo, ...]


def _parameter_info(core: _audiofilters.EffectCore, index: int) -> ParameterInfo:
    ranged = core.converts_display_values(index)
    return ParameterInfo(
        index=index, name=core.name(index), label=core.label(index), type=core.type(index),
        minimum=core.minimum(index) if ranged else 0.0, maximum=core.maximum(index) if ranged else 1.0,
        step=core.step(index) if ranged else 0.0,
        default=core.display_value(index) if ranged else core.normalised(index),
        default_normalised=core.normalised(index), default_text=core.text(index))


@lru_cache(maxsize=None)
def _effects_at(sample_rate: float) -> tuple[EffectInfo, ...]:
    listed = []
    for identifier, name, family in _audiofilters.registrations():
        core = _audiofilters.EffectCore(identifier, 0, sample_rate, DEFAULT_BLOCK_SIZE)
        listed.append(EffectInfo(identifier, name, family, core.channels,
                                 tuple(_parameter_info(core, i) for i in range(core.parameter_count))))
    return tuple(listed)


def effects(sample_rate: float = DEFAULT_SAMPLE_RATE) -> list[EffectInfo]:
    """Every registered effect in registration order, with its parameters at `sample_rate`."""
    return list(_effects_at(float(sample_rate)))


def families() -> list[str]:
    """The family names an Effect may be created by ("highpass", "parametric-eq", ...)."""
    return list(_audiofilters.family_names())


def _key_text(key: str) -> str:
    return " ".join(key.replace("_", " ").split()).lower()


class Effect:
    """One effect instance over float32 audio of shape (channels, frames), or (frames,) for mono.

    ``Effect("highpass", channels=2, sample_rate=48000, cutoff=200.0)`` takes an identifier from
    :func:`effects` (any case) or a family name, which picks the variant for `channels` (1, 2, 6 or 16;
    None takes the stereo variant or the family's only one). Keyword parameters are display values in the
    parameter's units (Hz, dB, seconds, %), set in the order given, exactly as ``afx render -p``: a
    parameter name matches ignoring case, with ``_`` for a blank (``left_surround=-3``).

    Processing keeps state between calls (filters, echoes), as a host's stream does; :meth:`reset` starts
    again. Audio is processed without holding the interpreter lock, so effects run in parallel threads;
    one effect object serves one thread at a time (a second thread that overlaps gets a RuntimeError).
    """

    def __init__(self, name: str, channels: int | None = None, sample_rate: float = DEFAULT_SAMPLE_RATE, *,
                 block_size: int = DEFAULT_BLOCK_SIZE, **parameters: float) -> None:
        if channels is not None and (not isinstance(channels, (int, np.integer)) or channels < 1):
            raise ValueError(f"channels must be a positive whole number, not {channels!r}")
        self._name = name
        self._core = _audiofilters.EffectCore(name, int(channels or 0), float(sample_rate), int(block_size))
        self._block_size = int(block_size)
        self._settings: list[tuple[str, int, float]] = []
        for key, value in parameters.items():
            self.set(key, value)

    # -- identity --------------------------------------------------------------------------------------
    @property
    def identifier(self) -> str:
        """The registered identifier, e.g. 'Internal Highpass Stereo'."""
        return self._core.identifier

    @property
    def channels(self) -> int:
        return self._core.channels

    @property
    def sample_rate(self) -> float:
        return self._core.sample_rate

    @property
    def block_size(self) -> int:
        """Frames per processing call unless a call asks for another size."""
        return self._block_size

    @property
    def latency(self) -> int:
        """Frames of delay the effect reports to hosts (0 for every effect of this module)."""
        return self._core.latency

    @property
    def tail(self) -> int | None:
        """Frames the effect keeps sounding after its input stops, when the effect says; else None."""
        frames = self._core.tail
        return frames if frames > 0 else None

    # -- parameters ------------------------------------------------------------------------------------
    def index(self, parameter: ParameterKey) -> int:
        """The index of a parameter given by index or by name; ValueError naming the parameters if none."""
        count = self._core.parameter_count
        if isinstance(parameter, (int, np.integer)) and not isinstance(parameter, bool):
            if 0 <= parameter < count:
                return int(parameter)
            raise ValueError(f"'{self.identifier}' has no parameter {parameter}; {self._parameter_list()}")
        if not isinstance(parameter, str):
            raise TypeError(f"a parameter is named by its index or its name, not {parameter!r}")
        wanted = _key_text(parameter)
        matches = [i for i in range(count) if _key_text(self._core.name(i)) == wanted]
        if len(matches) == 1:
            return matches[0]
        if matches:
            raise ValueError(f"'{self.identifier}' has several parameters named '{parameter}' "
                             f"(indices {matches}); give the index instead")
        raise ValueError(f"'{self.identifier}' has no parameter '{parameter}'; {self._parameter_list()}")

    def _parameter_list(self) -> str:
        names = [f"{i} '{self._core.name(i)}'" for i in range(self._core.parameter_count)]
        return "its parameters are " + ", ".join(names) if names else "it has no parameters"

    @property
    def parameter_names(self) -> list[str]:
        return [self._core.name(i) for i in range(self._core.parameter_count)]

    @property
    def parameters(self) -> list[ParameterInfo]:
        """Every parameter with its range at this sample rate; `default` fields hold the current values."""
        return [_parameter_info(self._core, i) for i in range(self._core.parameter_count)]

    def set(self, parameter: ParameterKey, value: float) -> float:
        """Sets a display value (the parameter's units) through the effect's own conversion, as afx -p.

        Values outside the parameter's range, NaN and infinities raise ValueError. Returns the normalised
        value that was set.
        """
        index = self.index(parameter)
        normalised = self._core.set_display_value(index, float(value))
        self._settings.append(("display", index, float(value)))
        return normalised

    def set_normalised(self, parameter: ParameterKey, value: float) -> None:
        """Sets the normalised value (0..1 for every parameter of this module) bit for bit as given."""
        index = self.index(parameter)
        normalised = float(np.float32(value))
        self._core.set_normalised(index, normalised)
        self._settings.append(("normalised", index, normalised))

    def get(self, parameter: ParameterKey) -> float:
        """The current display value in the parameter's units."""
        return self._core.display_value(self.index(parameter))

    def get_normalised(self, parameter: ParameterKey) -> float:
        return self._core.normalised(self.index(parameter))

    def text(self, parameter: ParameterKey) -> str:
        """The text the effect displays for the parameter (without its label)."""
        return self._core.text(self.index(parameter))

    def label(self, parameter: ParameterKey) -> str:
        return self._core.label(self.index(parameter))

    def reset(self) -> None:
        """Clears the effect's history (filter state, echoes), keeping the parameters."""
        self._core.reset()

    # -- audio -----------------------------------------------------------------------------------------
    def process(self, audio: np.ndarray, block_size: int | None = None, *, out: np.ndarray | None = None
                ) -> np.ndarray:
        """Processes `audio` (channels, frames) or (frames,) and returns the result.

        The effect is called on consecutive blocks of `block_size` frames (the effect's own by default),
        the last one shorter. Without `out` a new float32 array is returned; with `out` (a float32 array
        of the same shape, which may be `audio` itself) the result is written there and `out` returned.
        Other dtypes are converted: see ``audiofilters.DTYPE_RULE``.
        """
        target = prepare(audio, out, self._core.channels, f"'{self.identifier}'")
        self._core.process(as_rows(target), self._block_size if block_size is None else int(block_size))
        return target

    __call__ = process

    # -- copies ----------------------------------------------------------------------------------------
    def configured(self, channels: int | None = None, sample_rate: float | None = None,
                   block_size: int | None = None) -> "Effect":
        """A fresh instance made the same way (same name, same parameter settings in the same order),
        for another channel count or sample rate if asked; its history is empty."""
        return _rebuild(self._name, self.channels if channels is None else channels,
                        self.sample_rate if sample_rate is None else sample_rate,
                        self._block_size if block_size is None else block_size, self._settings)

    def __reduce__(self):
        return (_rebuild, (self._name, self.channels, self.sample_rate, self._block_size, list(self._settings)))

    def response(self, n: int = 8192) -> tuple[np.ndarray, np.ndarray]:
        """Frequencies (Hz) and complex frequency response from an `n`-frame impulse response.

        A fresh copy of the effect gets a unit impulse on every channel at once; the result has shape
        (channels, n // 2 + 1). This effect's own history is untouched.
        """
        return _response([self.configured()], n)

    # -- presentation ----------------------------------------------------------------------------------
    def __repr__(self) -> str:
        values = ", ".join(f"{_key_text(p.name).replace(' ', '_')}={p.default_text}"
                           + (f" {p.label}" if p.label else "") for p in self.parameters)
        return (f"<audiofilters.Effect '{self.identifier}' {self.channels} ch at {self.sample_rate:g} Hz"
                + (f": {values}>" if values else ">"))

    def _repr_html_(self) -> str:
        rows = "".join(
            f"<tr><td>{p.index}</td><td>{html.escape(p.name)}</td><td>{html.escape(p.default_text)}</td>"
            f"<td>{html.escape(p.label)}</td><td>{p.default_normalised:.7g}</td>"
            f"<td>{p.minimum:.7g} .. {p.maximum:.7g}</td></tr>" for p in self.parameters)
        return (f"<p><b>{html.escape(self.identifier)}</b>: {self.channels} channel(s) at "
                f"{self.sample_rate:g} Hz</p><table><thead><tr><th>#</th><th>parameter</th><th>value</th>"
                f"<th>unit</th><th>normalised</th><th>range</th></tr></thead><tbody>{rows}</tbody></table>")


def _rebuild(name: str, channels: int, sample_rate: float, block_size: int,
             settings: Sequence[tuple[str, int, float]]) -> Effect:
    effect = Effect(name, channels, sample_rate, block_size=block_size)
    for kind, index, value in settings:
        if kind == "display":
            effect.set(index, value)
        else:
            effect.set_normalised(index, value)
    return effect


class Chain:
    """Effects applied one after the other, block by block, like an afx render's -e list.

    Every effect needs the same channel count and sample rate. A chain processes, resets, copies, plots
    and renders files like a single :class:`Effect`; it is used by one thread at a time.
    """

    def __init__(self, effects: Iterable[Effect]) -> None:
        self._effects = list(effects)
        if not self._effects:
            raise ValueError("a chain needs at least one effect")
        for effect in self._effects:
            if not isinstance(effect, Effect):
                raise TypeError(f"a chain holds Effect objects, not {effect!r}")
        first = self._effects[0]
        for effect in self._effects[1:]:
            if effect.channels != first.channels or effect.sample_rate != first.sample_rate:
                raise ValueError(f"'{effect.identifier}' runs {effect.channels} channel(s) at "
                                 f"{effect.sample_rate:g} Hz but '{first.identifier}' runs "
                                 f"{first.channels} at {first.sample_rate:g} Hz")

    def __len__(self) -> int:
        return len(self._effects)

    def __iter__(self) -> Iterator[Effect]:
        return iter(self._effects)

    def __getitem__(self, position: int) -> Effect:
        return self._effects[position]

    @property
    def channels(self) -> int:
        return self._effects[0].channels

    @property
    def sample_rate(self) -> float:
        return self._effects[0].sample_rate

    @property
    def block_size(self) -> int:
        return self._effects[0].block_size

    def process(self, audio: np.ndarray, block_size: int | None = None, *, out: np.ndarray | None = None
                ) -> np.ndarray:
        """As :meth:`Effect.process`, through every effect of the chain in order."""
        target = prepare(audio, out, self.channels, "the chain")
        _audiofilters.process_chain([effect._core for effect in self._effects], as_rows(target),
                                    self.block_size if block_size is None else int(block_size))
        return target

    __call__ = process

    def reset(self) -> None:
        for effect in self._effects:
            effect.reset()

    def configured(self, channels: int | None = None, sample_rate: float | None = None,
                   block_size: int | None = None) -> "Chain":
        """Fresh copies of every effect (see :meth:`Effect.configured`)."""
        return Chain(effect.configured(channels, sample_rate, block_size) for effect in self._effects)

    def response(self, n: int = 8192) -> tuple[np.ndarray, np.ndarray]:
        """As :meth:`Effect.response`, through the whole chain."""
        return _response(self.configured()._effects, n)

    def __repr__(self) -> str:
        return "<audiofilters.Chain " + " -> ".join(repr(effect) for effect in self._effects) + ">"

    def _repr_html_(self) -> str:
        return "".join(effect._repr_html_() for effect in self._effects)


def _response(fresh: list[Effect], n: int) -> tuple[np.ndarray, np.ndarray]:
    if int(n) < 2:
        raise ValueError(f"a response needs at least 2 frames, not {n}")
    impulse = np.zeros((fresh[0].channels, int(n)), dtype=np.float32)
    impulse[:, 0] = 1.0
    Chain(fresh).process(impulse, out=impulse)
    frequencies = np.fft.rfftfreq(int(n), 1.0 / fresh[0].sample_rate)
    return frequencies, np.fft.rfft(impulse.astype(np.float64), axis=-1)
