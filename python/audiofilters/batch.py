"""Many files through one chain on a dask.distributed cluster, one task per file.

Every output is written atomically (see :func:`audiofilters.render_file`): a task that fails, or whose
worker dies, leaves at most a hidden temporary file, which the batch removes once every file is done;
the scheduler retries the task elsewhere, so the batch completes with every file whole.
"""
from __future__ import annotations

import glob
import os
from typing import Iterable

from .files import ChainLike, render_file, temporary_pattern


def _render_one(path: str, output: str, chain, options: dict) -> str:
    render_file(path, output, chain, overwrite=True, **options)
    return output


def render_files(paths: Iterable[str], chain: ChainLike, output_dir: str, client=None, *,
                 block_size: int = 1024, float_output: bool = False, overwrite: bool = False, sync: bool = True,
                 retries: int = 2) -> list[str]:
    """Renders every file of `paths` through `chain` into `output_dir` (same base names), one
    dask.distributed task per file, and returns the output paths in the order of `paths`.

    `client` is a ``dask.distributed.Client``; without one, a local cluster of one worker process per
    core is started for the batch and closed after it. `chain` is anything :func:`render_file` takes
    (Effects are sent to the workers as the way they were made). Existing outputs are refused unless
    `overwrite`. A task is retried `retries` times when it fails.
    """
    paths = [os.path.abspath(path) for path in paths]
    outputs = [os.path.join(os.path.abspath(output_dir), os.path.basename(path)) for path in paths]
    if len(set(outputs)) != len(outputs):
        raise ValueError("two inputs share a file name; their outputs would overwrite each other")
    if not overwrite:
        existing = [output for output in outputs if os.path.exists(output)]
        if existing:
            raise FileExistsError(f"{len(existing)} output(s) exist, e.g. '{existing[0]}'; pass overwrite=True")
    os.makedirs(output_dir, exist_ok=True)
    options = {"block_size": block_size, "float_output": float_output, "sync": sync}

    own_client = client is None
    if own_client:
        from dask.distributed import Client, LocalCluster
        cluster = LocalCluster(processes=True, threads_per_worker=1, dashboard_address=None)
        client = Client(cluster)
    try:
        futures = [client.submit(_render_one, path, output, chain, options, pure=False, retries=retries,
                                 key=f"audiofilters-render-{index}-{os.path.basename(path)}")
                   for index, (path, output) in enumerate(zip(paths, outputs))]
        try:
            done = client.gather(futures)
        except BaseException:
            client.cancel(futures)
            raise
    finally:
        if own_client:
            client.close()
            cluster.close()
        # Hidden files of attempts whose worker died mid-write.
        for output in outputs:
            for leftover in glob.glob(temporary_pattern(output)):
                try:
                    os.unlink(leftover)
                except FileNotFoundError:
                    pass
    return list(done)
