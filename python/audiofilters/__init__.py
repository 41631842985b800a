"""AudioFilters effects over NumPy arrays, audio files and Dask clusters.

    >>> import numpy as np, audiofilters as af
    >>> hp = af.Effect("highpass", channels=2, sample_rate=48000, cutoff=200.0)
    >>> y = hp(np.zeros((2, 4800), dtype=np.float32))

The effects come from the AudioFilters module shipped inside this package, loaded the way every host
loads it. See :class:`Effect`, :class:`Chain`, :func:`render_file` and :mod:`audiofilters.batch`.
"""
from ._audio import DTYPE_RULE
from ._effect import Chain, Effect, EffectInfo, ParameterInfo, effects, families
from .files import render_file
from .plot import plot_response

__all__ = ["Chain", "DTYPE_RULE", "Effect", "EffectInfo", "ParameterInfo", "effects", "families",
           "plot_response", "render_file"]
