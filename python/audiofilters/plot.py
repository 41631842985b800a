"""Magnitude and phase of an effect or a chain, drawn with matplotlib."""
from __future__ import annotations

from typing import Union

import numpy as np

from ._effect import Chain, Effect


def plot_response(effect: Union[Effect, Chain], n: int = 8192, *, channel: int = 0, axes=None, title: str | None = None):
    """Draws the magnitude (dB over log frequency) and phase (degrees) of `effect` from its impulse
    response (see :meth:`Effect.response`). Draws into `axes` (two matplotlib Axes) when given, else into a
    new figure; returns the figure."""
    import matplotlib.pyplot as plt

    frequencies, response = effect.response(n)
    if not 0 <= channel < response.shape[0]:
        raise ValueError(f"channel {channel} is outside 0..{response.shape[0] - 1}")
    bins = slice(1, None)  # 0 Hz has no place on a log axis
    magnitude = 20.0 * np.log10(np.maximum(np.abs(response[channel, bins]), 1e-12))
    phase = np.degrees(np.angle(response[channel, bins]))
    if axes is None:
        figure, axes = plt.subplots(2, 1, sharex=True, figsize=(7, 5), constrained_layout=True)
    else:
        figure = axes[0].figure
    top, bottom = axes
    top.semilogx(frequencies[bins], magnitude)
    top.set_ylabel("magnitude (dB)")
    top.grid(True, which="both", alpha=0.3)
    bottom.semilogx(frequencies[bins], phase)
    bottom.set_ylabel("phase (degrees)")
    bottom.set_xlabel("frequency (Hz)")
    bottom.set_ylim(-190, 190)
    bottom.grid(True, which="both", alpha=0.3)
    if title is None:
        effects = list(effect) if isinstance(effect, Chain) else [effect]
        title = " -> ".join(e.identifier for e in effects)
    top.set_title(title, fontsize=10)
    return figure
