#!/usr/bin/python3
"""Every VST 2 plug-in file of a folder in Ardour 7, headless.

    vst2.py FOLDER --afx PATH --table bridges/vst2/Variants.cmake [--keep]

Scans every file with ardour-vst-scanner (each must be accepted, as one effect,
with a distinct id and a distinct name, and the table's id and name), then puts
each on a track of one session with its channel count and a value other than
the default for every parameter, and compares the float export with afx
rendering the registered effect with the same normalised values (run.py).
"""
import argparse
import json
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import run  # noqa: E402

# Values exact in binary and in short decimal text, so that they survive any
# host's way of storing them; the first one that differs from the default is used.
CANDIDATE_VALUES = (0.3125, 0.6875, 0.5625, 0.1875)
FILE_PREFIX = "AudioFilters "


def read_table(path):
    """[(identifier, plug-in name, unique id as an integer)] from the variant table."""
    rows = []
    with open(path) as handle:
        for identifier, name, code in re.findall(r'"([^"|]+)\|([^"|]+)\|([^"|]{4})"', handle.read()):
            rows.append((identifier, name, int.from_bytes(code.encode("ascii"), "big")))
    return rows


def parameters(afx, identifier):
    result = subprocess.run([afx, "info", identifier, "--rate", str(run.SAMPLE_RATE), "--json"],
                            capture_output=True, text=True, check=True)
    return json.loads(result.stdout)


def check_scan(entries, table, files):
    by_file = {os.path.basename(path): (uid, name, category, ins, outs) for path, uid, name, category, ins, outs in entries}
    if len(entries) != len(table) or len(files) != len(table):
        raise run.Failure(f"{len(files)} files and {len(entries)} scanned plug-ins for {len(table)} table rows")
    ids = [e[1] for e in entries]
    names = [e[2] for e in entries]
    if len(set(ids)) != len(ids) or len(set(names)) != len(names):
        raise run.Failure("the scanned plug-ins share ids or names")
    for _, name, uid in table:
        scanned = by_file.get(f"{FILE_PREFIX}{name}.so")
        if scanned is None:
            raise run.Failure(f"no plug-in file for '{name}'")
        if scanned[0] != uid or scanned[1] != name or scanned[2] != "Effect":
            raise run.Failure(f"'{name}' scanned as id {scanned[0]}, name '{scanned[1]}', category {scanned[2]}")
    print(f"ardour-vst-scanner: {len(entries)} files accepted, {len(set(ids))} distinct ids, "
          f"{len(set(names))} distinct names, every one an effect", flush=True)
    return by_file


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--afx", required=True)
    parser.add_argument("--table", required=True)
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--work")
    args = parser.parse_args()

    folder = os.path.abspath(args.folder)
    table = read_table(args.table)
    files = sorted(os.path.join(folder, f) for f in os.listdir(folder) if f.endswith(".so"))
    scanned = {}

    def scan(env):
        scanned.update(check_scan(run.scan_vst2(files, env), table, files))

    plan = []
    for number, (identifier, name, _) in enumerate(table, start=1):
        info = parameters(args.afx, identifier)
        params, settings = {}, []
        for parameter in info["parameters"]:
            value = next(v for v in CANDIDATE_VALUES if v != parameter["default"])
            params[str(parameter["index"])] = value
            settings += ["--set", f"{parameter['index']}={value!r}"]
        plan.append({"name": f"t{number:02d}", "type": "LXVST", "plugin": name, "channels": info["inputs"],
                     "params": params, "afx": ["-e", identifier] + settings})
    try:
        mismatches = run.run(plan, args.afx, work=args.work, keep=args.keep, vst2_folder=folder, before_session=scan)
    except run.Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    for track, (identifier, name, _) in zip(plan, table):
        print(f"  {track['name']} = {name} ({identifier}), {len(track['params'])} parameters set")
    return 1 if mismatches else 0


if __name__ == "__main__":
    sys.exit(main())
