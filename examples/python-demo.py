"""The demo chain again, from Python: the bundled example through the same four effects as `afx demo`,
then a check that both renders hold the same samples, and the chain's frequency response.

Run by scripts/demo.sh after afx demo: python3 examples/python-demo.py INPUT AFX_OUTPUT
"""
import sys

import numpy as np
import soundfile

import audiofilters as af

source, by_afx = sys.argv[1], sys.argv[2]
chain = [("highpass", {"cutoff": 80}), ("parametric-eq", {"center": 2500, "boost": 4}),
         ("delay", {"delay": 0.25, "feedback": 35, "mix": 30}), ("volume", {"level": 2})]
report = af.render_file(source, "afx-demo-python.wav", chain, overwrite=True)
by_python = soundfile.read("afx-demo-python.wav", dtype="int32")[0]
by_host = soundfile.read(by_afx, dtype="int32")[0]
# afx lets the delay's echoes ring on past the end of the input (its default
# tail); the Python render keeps the input's length, so those frames compare.
same = np.array_equal(by_python, by_host[:len(by_python)])
print(f"python: afx-demo-python.wav: {report['frames']} frames, {report['channels']} channels through "
      f"{len(chain)} effects; samples {'identical to' if same else 'DIFFERENT from'} the first "
      f"{len(by_python)} frames of {by_afx} (afx adds {len(by_host) - len(by_python)} frames of tail)")

effects = af.Chain([af.Effect(name, 2, report["sample_rate"], **parameters) for name, parameters in chain[:2]])
frequencies, response = effects.response(8192)
gain = 20 * np.log10(np.abs(response[0]))
for hertz in (40, 80, 1000, 2500):
    print(f"python: high-pass and equaliser at {hertz:>4} Hz: {gain[np.argmin(np.abs(frequencies - hertz))]:+6.2f} dB")
sys.exit(0 if same else 1)
