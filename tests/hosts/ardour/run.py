#!/usr/bin/python3
"""Renders plug-ins in Ardour 7, headless, and compares each track's export
with afx rendering the same recorded input, bit for bit.

    run.py PLAN.json [--afx PATH] [--seconds S] [--work DIR] [--keep]

PLAN.json is a list of tracks:
    {"name": "hp2", "type": "LXVST" | "LV2" | "LADSPA", "plugin": "<name or URI>",
     "channels": 2, "params": {"0": 0.3125}, "afx": ["-e", "Internal Highpass Stereo", "--set", "0=0.3125"]}
"params" are the values given to Ardour's plug-in controls (index: value);
"afx" are the arguments that make afx render the same thing. An optional
"drops": [[low Hz, high Hz, least dB, most dB], ...] asks, besides, that
between each two frequencies the export hold that many dB less than the
input: a check of the values set that does not depend on afx.

A session holds many tracks (ardour7-lua with the Dummy backend records its
noise on each track, then adds the plug-ins; a plan with more channels than
one master carries is split over several sessions), ardour7-export writes the
master as 32-bit float with every track on channels of its own, and each track's
channels must equal afx's output exactly. A pass-through track with no plug-in
proves that the gain stages in between are unity. When an Ardour tool crashes
or hangs, the session is thrown away and made again from scratch (a new
recording, new plug-ins, a new export), at most SESSION_ATTEMPTS times, the
exports under valgrind once plain ones have aborted a few times; a mismatch
is never retried.
The plug-in folders come from the environment as Ardour reads them
(LV2_PATH, LADSPA_PATH) and, for VST 2, from configure(vst2_folder=...).
"""
import argparse
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import wavfloat  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
SESSION_SCRIPT = os.path.join(HERE, "session.lua")
SCANNER = "/usr/lib/ardour7/ardour-vst-scanner"
ARDOUR_LIBRARIES = "/usr/lib/ardour7"
SESSION_NAME = "render"
SAMPLE_RATE = 48000
# ardour7-export aborts with a corrupted heap in about one export in three
# here, whatever the session holds: a session of one pass-through track and
# no plug-in aborted 4 times in 12 and 6 in 16 (ardour7-lua now and then dies
# of a segmentation fault too). The abort shows as the export's channels are
# freed. Exporting a session that aborted again aborts as often (6 times in
# 10), so a crashed attempt starts over from a new session; on a loaded
# machine up to two attempts in three crashed, hence the serial exports below.
SESSION_ATTEMPTS = 10
# Under valgrind's core alone (no checking tool), which runs a program's
# threads one at a time, the export of a session that aborted 1 to 6 times in
# 12 or 16 plainly aborted 0 times in 12, at ten times the time. Once plain
# exports have crashed this often in one session, the next go that way.
SERIAL_AFTER_EXPORT_CRASHES = 3
SERIAL_RUNNER = ["valgrind", "-q", "--tool=none", "--trace-children=yes"]
# A tool that runs this long has hung (an export takes seconds, under
# valgrind a minute or two).
TOOL_TIMEOUT_SECONDS = 900
# Silence before the recordings: Ardour fades an export in over its first
# 4352 frames here, so the fade meets only this silence, which afx gets too.
# What the effects make of silence is their anti-denormal offsets (about
# 1e-25), and the fade changes those bits; from the first recorded frame on
# the comparison is exact, and the lead-in must stay at that level.
LEAD_IN = 8192
LEAD_IN_FLOOR = 1e-20
UNITY_TRACK = "unity"
# The most channels one session's master carries (see sessions_for).
MASTER_CHANNELS = 72


class Failure(Exception):
    pass


def crashed(returncode):
    # Killed by a signal (abort, segmentation fault), directly or as a shell reports it.
    return returncode < 0 or returncode >= 128


def ardour_environment(work, vst2_folder=None):
    """A private configuration (Dummy backend visible, VST 2 folder) and cache."""
    config = os.path.join(work, "config", "ardour7")
    os.makedirs(config, exist_ok=True)
    options = ['    <Option name="hide-dummy-backend" value="0"/>']
    if vst2_folder:
        options.append(f'    <Option name="plugin-path-lxvst" value="{vst2_folder}"/>')
    with open(os.path.join(config, "config"), "w") as handle:
        handle.write('<?xml version="1.0" encoding="UTF-8"?>\n<Ardour>\n  <Config>\n' + "\n".join(options) +
                     "\n  </Config>\n</Ardour>\n")
    env = dict(os.environ)
    env["XDG_CONFIG_HOME"] = os.path.join(work, "config")
    env["XDG_CACHE_HOME"] = os.path.join(work, "cache")
    return env


def scan_vst2(files, env):
    """Runs Ardour's VST 2 scanner on every file; returns the cache entries
    [(file, id, name, category)]. Ardour lists a VST 2 plug-in only once scanned."""
    env = dict(env, LD_LIBRARY_PATH=ARDOUR_LIBRARIES)
    cache = os.path.join(env["XDG_CACHE_HOME"], "ardour7", "vst")
    shutil.rmtree(cache, ignore_errors=True)  # every file scanned afresh
    found = []
    for path in files:
        before = set(os.listdir(cache)) if os.path.isdir(cache) else set()
        result = subprocess.run([SCANNER, "-f", path], env=env, capture_output=True, text=True)
        if result.returncode != 0:
            raise Failure(f"ardour-vst-scanner refuses {path}:\n{result.stdout}{result.stderr}")
        new = sorted(set(os.listdir(cache)) - before)
        if len(new) != 1:
            raise Failure(f"ardour-vst-scanner wrote {len(new)} cache files for {path}")
        with open(os.path.join(cache, new[0])) as handle:
            text = handle.read()
        entries = parse_vst2_cache(text)
        if len(entries) != 1:
            raise Failure(f"{path}: the scanner found {len(entries)} plug-ins, not 1")
        found.append((path,) + entries[0])
    return found


def parse_vst2_cache(text):
    import xml.etree.ElementTree as ElementTree
    root = ElementTree.fromstring(text)
    return [(int(info.get("id")), info.get("name"), info.get("category"), int(info.get("n_inputs")),
             int(info.get("n_outputs"))) for info in root.iter("VST2Info")]


class Crash(Exception):
    """An Ardour tool died of a signal or hung: worth a new session."""


def run_ardour(command, env, done_marker, what, log):
    """Runs an Ardour tool once; returns its output. Raises Crash when it dies
    of a signal or hangs, Failure when it fails otherwise."""
    try:
        result = subprocess.run(command, env=env, capture_output=True, text=True, timeout=TOOL_TIMEOUT_SECONDS)
    except subprocess.TimeoutExpired as expired:
        output = (expired.stdout or b"").decode(errors="replace") + (expired.stderr or b"").decode(errors="replace")
        with open(log, "a") as handle:
            handle.write(f"==== {what}: hung, stopped after {TOOL_TIMEOUT_SECONDS} s\n{output}\n")
        raise Crash(f"{what} hung for {TOOL_TIMEOUT_SECONDS} s") from None
    output = result.stdout + result.stderr
    with open(log, "a") as handle:
        handle.write(f"==== {what}: exit {result.returncode}\n{output}\n")
    if result.returncode == 0 and done_marker in output:
        return output
    last_line = output.strip().splitlines()[-1] if output.strip() else ""
    if crashed(result.returncode):
        raise Crash(f"{what} crashed inside Ardour (exit {result.returncode}: {last_line})")
    raise Failure(f"{what} failed (exit {result.returncode}):\n{output[-3000:]}")


def build_session(plan, work, env, seconds, log):
    """Records and sets up a new session; returns its folder and
    {track name: (first, channels, offset, length, files)}."""
    lines = [f"{UNITY_TRACK}\tnone\t-\t2\t"]
    for track in plan:
        params = ",".join(f"{index}={value!r}" for index, value in track.get("params", {}).items())
        lines.append(f"{track['name']}\t{track['type']}\t{track['plugin']}\t{track['channels']}\t{params}")
    plan_file = os.path.join(work, "plan.tsv")
    with open(plan_file, "w") as handle:
        handle.write("\n".join(lines) + "\n")
    session_dir = os.path.join(work, "session")
    shutil.rmtree(session_dir, ignore_errors=True)
    output = run_ardour(["ardour7-lua", SESSION_SCRIPT, plan_file, session_dir, SESSION_NAME, str(seconds),
                         str(LEAD_IN)],
                        env, "SESSION SAVED", "ardour7-lua", log)
    tracks = {}
    for line in output.splitlines():
        if line.startswith("TRACK "):
            fields = line.split(" ", 6)
            name, first, channels, start, length = fields[1], *map(int, fields[2:6])
            files = fields[6].split(" ") if len(fields) > 6 else []
            tracks[name] = (first, channels, start, length, files)
    if len(tracks) != len(plan) + 1:
        raise Failure(f"ardour7-lua reported {len(tracks)} tracks, not {len(plan) + 1}")
    return session_dir, tracks


def export(session_dir, work, env, log, serial):
    out = os.path.join(work, "export.wav")
    if os.path.exists(out):
        os.remove(out)
    command = ["ardour7-export", "-b", "float", "-o", out, session_dir, SESSION_NAME]
    run_ardour(SERIAL_RUNNER + command if serial else command, env, "* Done.",
               "ardour7-export under valgrind" if serial else "ardour7-export", log)
    return out


def recorded_input(files, offset, length):
    """What the track plays: its region's part of the recorded files, after the lead-in."""
    columns = []
    for path in files:
        samples, rate = wavfloat.read(path)
        if samples.shape[1] != 1 or rate != SAMPLE_RATE or samples.shape[0] < offset + length:
            raise Failure(f"{path}: expected a mono recording at {SAMPLE_RATE} Hz of {offset + length} frames or more")
        columns.append(samples[offset:offset + length, 0])
    recording = np.stack(columns, axis=1)
    return np.concatenate([np.zeros((LEAD_IN, recording.shape[1]), dtype=np.float32), recording])


def first_difference(expected, actual, offset=0):
    bits_e, bits_a = expected.view(np.uint32), actual.view(np.uint32)
    frame, channel = np.argwhere(bits_e != bits_a)[0]
    return (f"frame {frame + offset} channel {channel}: afx {expected[frame, channel]!r} "
            f"({bits_e[frame, channel]:#010x}), Ardour {actual[frame, channel]!r} ({bits_a[frame, channel]:#010x})")


def band_power(samples, low_hz, high_hz):
    """The power of each channel between two frequencies (Hann window)."""
    window = np.hanning(samples.shape[0])[:, None]
    spectrum = np.fft.rfft(samples.astype(np.float64) * window, axis=0)
    hz = np.fft.rfftfreq(samples.shape[0], 1.0 / SAMPLE_RATE)
    band = (hz >= low_hz) & (hz <= high_hz)
    return (np.abs(spectrum[band]) ** 2).sum(axis=0)


# Frames of the region left out of the band measure: the effect's response
# to the recording's abrupt start.
DROP_SETTLING = 4800


def drop_verdict(track, source, heard):
    """A text on how far each band dropped, starting MISMATCH when one is outside its range."""
    start = LEAD_IN + DROP_SETTLING
    texts, wrong = [], False
    for low_hz, high_hz, least_db, most_db in track["drops"]:
        before = band_power(source[start:], low_hz, high_hz)
        after = band_power(heard[start:], low_hz, high_hz)
        drop_db = 10.0 * np.log10(before / np.maximum(after, 1e-300))
        texts.append(f"{low_hz:g}-{high_hz:g} Hz down {drop_db.min():.2f} to {drop_db.max():.2f} dB")
        if drop_db.min() < least_db or drop_db.max() > most_db:
            wrong = True
            texts[-1] += f", not {least_db:g} to {most_db:g}"
    return ("MISMATCH: " if wrong else "") + ", ".join(texts)


def compare(plan, tracks, exported, afx, work):
    """Returns a list of (track, verdict) and the number of mismatches."""
    verdicts, mismatches = [], 0
    for name in [UNITY_TRACK] + [track["name"] for track in plan]:
        first, channels, offset, length, files = tracks[name]
        source = recorded_input(files, offset, length)
        heard = exported[:, first:first + channels]
        if name == UNITY_TRACK:
            expected = source
        else:
            track = next(t for t in plan if t["name"] == name)
            source_file = os.path.join(work, f"{name}-in.wav")
            rendered_file = os.path.join(work, f"{name}-afx.wav")
            wavfloat.write(source_file, source, SAMPLE_RATE)
            # No tail after the input: the export ends with the region.
            command = [afx, "render", source_file, rendered_file, "--float", "-y", "--quiet", "--tail", "0"] + track["afx"]
            result = subprocess.run(command, capture_output=True, text=True)
            if result.returncode != 0:
                raise Failure(f"{' '.join(command)} failed:\n{result.stderr}")
            expected, _ = wavfloat.read(rendered_file)
        exact_from = 0 if name == UNITY_TRACK else LEAD_IN
        lead_in_peak = float(max(np.abs(heard[:exact_from]).max(initial=0), np.abs(expected[:exact_from]).max(initial=0)))
        if heard.shape != expected.shape:
            verdict = f"MISMATCH: Ardour exported {heard.shape} frames x channels, afx {expected.shape}"
        elif not np.array_equal(heard[exact_from:].view(np.uint32), expected[exact_from:].view(np.uint32)):
            verdict = "MISMATCH at " + first_difference(expected[exact_from:], heard[exact_from:], exact_from)
        elif lead_in_peak > LEAD_IN_FLOOR:
            verdict = f"MISMATCH: the silent lead-in reaches {lead_in_peak!r}"
        else:
            verdict = (f"equal bit for bit ({expected.shape[0] - exact_from} frames x {channels} channels"
                       + (f", lead-in below {LEAD_IN_FLOOR:g})" if exact_from else ")"))
            if name != UNITY_TRACK and "drops" in track:
                dropped = drop_verdict(track, source, heard)
                verdict = dropped if dropped.startswith("MISMATCH") else f"{verdict}; {dropped}"
        if verdict.startswith("MISMATCH"):
            mismatches += 1
        verdicts.append((name, verdict))
    return verdicts, mismatches


def sessions_for(plan, budget):
    """Splits the plan into sessions whose master carries at most `budget` channels
    (the unity track's two included): Ardour here stops making ports at a few
    hundred, so sixteen-channel tracks cannot all share one master."""
    groups, current, used = [], [], 2
    for track in plan:
        if current and used + track["channels"] > budget:
            groups.append(current)
            current, used = [], 2
        current.append(track)
        used += track["channels"]
    if current:
        groups.append(current)
    return groups


def run_session(plan, afx, seconds, work, env):
    log = os.path.join(work, "ardour.log")
    crashes = []
    while True:
        try:
            session_dir, tracks = build_session(plan, work, env, seconds, log)
            export_crashes = sum(crash.startswith("ardour7-export") for crash in crashes)
            serial = export_crashes >= SERIAL_AFTER_EXPORT_CRASHES
            exported_file = export(session_dir, work, env, log, serial)
            break
        except Crash as crash:
            crashes.append(str(crash))
            if len(crashes) == SESSION_ATTEMPTS:
                raise Failure(f"Ardour crashed in all {SESSION_ATTEMPTS} attempts at this session (log: {log})")
            print(f"  {crash} (attempt {len(crashes)} of {SESSION_ATTEMPTS}); the session is made anew", flush=True)
    exported, rate = wavfloat.read(exported_file)
    total = sum(t["channels"] for t in plan) + 2
    if rate != SAMPLE_RATE or exported.shape[1] != total:
        raise Failure(f"the export has {exported.shape[1]} channels at {rate} Hz, not {total} at {SAMPLE_RATE}")
    verdicts, mismatches = compare(plan, tracks, exported, afx, work)
    for name, verdict in verdicts:
        print(f"  {name:<28} {verdict}")
    print(f"  session of {len(plan)} plug-in tracks and the unity track: {mismatches} mismatching; "
          f"{len(crashes)} crashed attempts before it" + ("; exported under valgrind" if serial else ""), flush=True)
    return mismatches, len(crashes)


def run(plan, afx, seconds=2, work=None, keep=False, vst2_folder=None, before_session=None):
    """The whole check; returns the number of mismatching tracks. Raises Failure
    when Ardour cannot do what the plan asks."""
    work = work or tempfile.mkdtemp(prefix="af-ardour-")
    os.makedirs(work, exist_ok=True)
    started = time.monotonic()
    try:
        env = ardour_environment(work, vst2_folder)
        if before_session:
            before_session(env)
        groups = sessions_for(plan, MASTER_CHANNELS)
        mismatches, crashes = 0, 0
        for number, group in enumerate(groups, start=1):
            folder = os.path.join(work, f"session{number}")
            os.makedirs(folder, exist_ok=True)
            session_mismatches, session_crashes = run_session(group, afx, seconds, folder, env)
            mismatches += session_mismatches
            crashes += session_crashes
        print(f"Ardour: {len(plan)} plug-in tracks in {len(groups)} sessions, {mismatches} mismatching; "
              f"{crashes} crashed attempts made again; {time.monotonic() - started:.1f} s", flush=True)
        return mismatches
    finally:
        if keep:
            print(f"  work folder kept: {work}")
        else:
            shutil.rmtree(work, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("plan")
    parser.add_argument("--afx", required=True, help="the afx program")
    parser.add_argument("--seconds", type=float, default=2)
    parser.add_argument("--work", help="work folder (default: a fresh temporary one)")
    parser.add_argument("--keep", action="store_true", help="keep the work folder")
    parser.add_argument("--vst2-folder", help="the folder of VST 2 plug-in files (scanned first)")
    args = parser.parse_args()
    with open(args.plan) as handle:
        plan = json.load(handle)
    before = None
    if args.vst2_folder:
        files = sorted(os.path.join(args.vst2_folder, f) for f in os.listdir(args.vst2_folder) if f.endswith(".so"))
        before = lambda env: scan_vst2(files, env)  # noqa: E731
    try:
        mismatches = run(plan, args.afx, args.seconds, args.work, args.keep, args.vst2_folder, before)
    except Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    return 1 if mismatches else 0


if __name__ == "__main__":
    sys.exit(main())
