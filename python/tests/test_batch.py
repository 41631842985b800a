"""Batches of files on a local dask.distributed cluster: every output equals a single render, and a
worker killed mid-run costs neither a file nor leaves a partial one."""
import os
import signal

import numpy as np
import pytest
import soundfile

import audiofilters as af
from audiofilters.batch import render_files

distributed = pytest.importorskip("distributed")

FILES = 200
CHAIN = [("highpass", {"cutoff": 120.0}), ("delay", {"delay": 0.005, "feedback": 30.0}), ("volume", {"level": -3.0})]


def make_inputs(folder):
    os.makedirs(folder)
    paths = []
    generator = np.random.default_rng(2024)
    for index in range(FILES):
        channels = (1, 2, 6)[index % 3]
        frames = 2000 + 37 * index
        path = os.path.join(folder, f"clip{index:03d}.wav")
        soundfile.write(path, generator.uniform(-0.7, 0.7, (frames, channels)).astype(np.float32), 22050 + 50 * index,
                        subtype="PCM_16" if index % 2 else "FLOAT")
        paths.append(path)
    return paths


def assert_outputs_equal_single_renders(paths, outputs, reference_folder):
    assert sorted(os.listdir(os.path.dirname(outputs[0]))) == sorted(os.path.basename(p) for p in outputs), \
        "the output folder holds exactly the outputs: no hidden or partial files"
    os.makedirs(reference_folder)
    for path, output in zip(paths, outputs):
        single = os.path.join(reference_folder, os.path.basename(path))
        af.render_file(path, single, CHAIN, sync=False)
        # Float WAV headers carry a time stamp, so the samples and the format are compared.
        assert _format(output) == _format(single), output
        assert np.array_equal(_samples(output), _samples(single)), output


def _format(path):
    info = soundfile.info(path)
    return info.samplerate, info.channels, info.frames, info.format, info.subtype


def _samples(path):
    dtype = "float32" if soundfile.info(path).subtype == "FLOAT" else "int32"
    return soundfile.read(path, dtype=dtype)[0].view(np.uint32)


@pytest.fixture
def cluster():
    from distributed import Client, LocalCluster
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as local:
        with Client(local) as client:
            yield client


def test_two_workers_render_like_single_renders(cluster, tmp_path):
    paths = make_inputs(str(tmp_path / "in"))
    outputs = render_files(paths, CHAIN, str(tmp_path / "out"), client=cluster)
    assert outputs == [str(tmp_path / "out" / os.path.basename(p)) for p in paths]
    assert_outputs_equal_single_renders(paths, outputs, str(tmp_path / "single"))
    with pytest.raises(FileExistsError):
        render_files(paths[:3], CHAIN, str(tmp_path / "out"), client=cluster)


class KillMidWrite(distributed.WorkerPlugin):
    """Kills its worker process with SIGKILL while the worker holds a half-written hidden output open,
    once its `after`-th task has started; the first worker to get there claims the kill with a marker
    file and writes the hidden file's name into it."""

    def __init__(self, marker, after):
        self.marker, self.after, self.started = marker, after, 0

    def transition(self, key, start, finish, **kwargs):
        if finish != "executing":
            return
        self.started += 1
        if self.started != self.after:
            return
        try:
            claim = os.open(self.marker, os.O_CREAT | os.O_EXCL | os.O_WRONLY)
        except FileExistsError:
            return
        import threading
        threading.Thread(target=self._kill_while_writing, args=(claim,), daemon=True).start()

    @staticmethod
    def _kill_while_writing(claim):
        import time
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            for descriptor in os.listdir("/proc/self/fd"):
                try:
                    target = os.readlink(f"/proc/self/fd/{descriptor}")
                except OSError:
                    continue
                if ".afx-" in os.path.basename(target):
                    os.write(claim, target.encode())
                    os.fsync(claim)
                    os.kill(os.getpid(), signal.SIGKILL)
            time.sleep(0.0002)


def test_a_worker_killed_mid_write_loses_no_file(cluster, tmp_path):
    paths = make_inputs(str(tmp_path / "in"))
    marker = str(tmp_path / "killed")
    workers_before = set(cluster.scheduler_info()["workers"])
    cluster.register_worker_plugin(KillMidWrite(marker, after=40), name="kill-mid-write")
    outputs = render_files(paths, CHAIN, str(tmp_path / "out"), client=cluster)
    with open(marker) as killed:
        half_written = killed.read()
    assert half_written.startswith(str(tmp_path / "out" / ".clip")), "no worker was killed while writing"
    assert not os.path.exists(half_written)
    assert set(cluster.scheduler_info()["workers"]) != workers_before, "the killed worker was not replaced"
    assert_outputs_equal_single_renders(paths, outputs, str(tmp_path / "single"))


def test_without_a_client_a_local_cluster_is_started_for_the_batch(tmp_path):
    paths = make_inputs(str(tmp_path / "in"))[:6]
    outputs = render_files(paths, CHAIN, str(tmp_path / "out"))
    assert_outputs_equal_single_renders(paths, outputs, str(tmp_path / "single"))
