#!/usr/bin/python3
"""Every LV2 and LADSPA plug-in of the bridges in Ardour 7, headless.

    bridges.py --afx PATH [--only REGEX] [--keep] [--work DIR]

LV2_PATH and LADSPA_PATH name the bundle and the plug-in folder as Ardour
reads them. Each plug-in goes on a track with every control set through
Ardour's API to a value in the control's own unit other than its default
(1000 Hz for a frequency, -12 dB for a level, +6 dB for a boost, 0.25 s for a
time, 25 % for a share; the 16-channel delays keep their default times, see
below), and the float export must equal afx rendering the registered effect
with the same display values (run.py), bit for bit. The high-pass, low-pass
and volume tracks are also measured against their input, without afx.
"""
import argparse
import json
import math
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import run  # noqa: E402

# A value in the control's unit for each kind of parameter, exact in binary
# and in short decimal text; when it is the default, the second one is used.
VALUES_BY_KIND = {
    "hertz": (1000.0, 2000.0),
    "time": (0.25, 0.5),
}
VALUES_BY_LABEL = {
    "dB": (6.0, -6.0),  # a boost, -24..24 dB
    "%": (25.0, 75.0),
}


def afx_info(afx, identifier):
    result = subprocess.run([afx, "info", identifier, "--rate", str(run.SAMPLE_RATE), "--json"],
                            capture_output=True, text=True, check=True)
    return json.loads(result.stdout)


def identifiers(afx):
    """Every registered identifier, in afx's order (the first column of 'afx list')."""
    result = subprocess.run([afx, "list"], capture_output=True, text=True, check=True)
    return [re.split(r" {2,}", line)[0] for line in result.stdout.splitlines() if line.startswith("Internal ")]


def value_for(parameter):
    label = parameter["label"].strip()
    if parameter["type"] == "decibels":
        candidates = (-12.0, -6.0)
    else:
        candidates = VALUES_BY_KIND.get(parameter["type"]) or VALUES_BY_LABEL.get(label)
    if candidates is None:
        low, high = parameter["min"], parameter["max"]
        candidates = (1.0, 0.0) if (low, high) == (0.0, 1.0) else (round((low + 3 * high) / 4 * 4) / 4, low)
    try:
        default = float(parameter.get("defaultDisplay", ""))
    except ValueError:
        default = None
    return next((v for v in candidates if default is None or abs(v - default) > 1e-6), candidates[0])


def expected_drops(identifier, params):
    """What the values set do to the input, in run.py's "drops": for the
    high-pass at 1000 Hz, 100 Hz down by at least 70 dB (about 80) and 500 Hz
    by 24.3 to 25.0 dB (the default 1495 Hz would give 38); for the low-pass at
    1000 Hz, 10 kHz down by at least 70 dB and 2000 Hz by 24.7 to 24.8 dB (the
    default, 12.5). Two second-order Butterworth sections by the bilinear
    transform: 20 log10(1 + r^4) dB, r the ratio of the prewarped frequencies.
    The volume at -12 dB takes everything down by 12 dB."""
    family = identifier.split()[1]
    if family == "Highpass" and params.get("0") == 1000.0:
        return [[90.0, 110.0, 70.0, math.inf], [495.0, 505.0, 23.5, 26.0]]
    if family == "Lowpass" and params.get("0") == 1000.0:
        return [[9000.0, 11000.0, 70.0, math.inf], [1995.0, 2005.0, 23.5, 26.0]]
    if family == "Volume" and params.get("0") == -12.0:
        return [[20.0, 20000.0, 11.99, 12.01]]
    return None


def ladspa_ids():
    """LADSPA label -> unique id (as text), as listplugins reads the bridge."""
    result = subprocess.run(["listplugins"], capture_output=True, text=True, check=True)
    return {label: uid for uid, label in re.findall(r"\((\d+)/(af_[a-z0-9_]+)\)", result.stdout)}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--afx", required=True)
    parser.add_argument("--only", help="only the identifiers this regular expression finds")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--work")
    args = parser.parse_args()

    uids = ladspa_ids()
    plan = []
    for number, identifier in enumerate(identifiers(args.afx), start=1):
        if args.only and not re.search(args.only, identifier):
            continue
        info = afx_info(args.afx, identifier)
        slug = re.sub(r"[^a-z0-9]+", "-", identifier[len("Internal "):].lower()).strip("-")
        label = "af_" + slug.replace("-", "_")
        params, settings = {}, []
        for parameter in info["parameters"]:
            if "Delay 16 Channel" in identifier and parameter["type"] == "time":
                # The 16-channel delays take a new delay time only when their line
                # is next reset (suspend, a new rate); Ardour runs a plug-in before
                # the script sets it, so the times stay at their defaults here.
                continue
            value = value_for(parameter)
            params[str(parameter["index"])] = value
            settings += ["-p", f"{parameter['index']}={value!r}"]
        afx_args = ["-e", identifier] + settings
        drops = expected_drops(identifier, params)
        checks = {"drops": drops} if drops else {}
        plan.append({"name": f"lv{number:02d}", "type": "LV2", "plugin": f"urn:audiofilters:{slug}",
                     "channels": info["inputs"], "params": params, "afx": afx_args, **checks})
        if label not in uids:
            print(f"FAIL: listplugins shows no LADSPA plug-in {label}", file=sys.stderr)
            return 1
        plan.append({"name": f"la{number:02d}", "type": "LADSPA", "plugin": uids[label],
                     "channels": info["inputs"], "params": params, "afx": afx_args, **checks})
    try:
        mismatches = run.run(plan, args.afx, work=args.work, keep=args.keep)
    except run.Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    for track in plan:
        print(f"  {track['name']} = {track['type']} {track['plugin']}: {track['params']}")
    return 1 if mismatches else 0


if __name__ == "__main__":
    sys.exit(main())
