"""Measure NumPy's concatenate and repeat, and set joins_benchmarks beside them.

    joins_benchmarks --benchmark_out=joins.json --benchmark_out_format=json
    /usr/bin/python3 JoinsPeers.py joins.json

Without a file only NumPy's times are printed. All times are in microseconds; of several runs of one benchmark
(--benchmark_repetitions) the fastest counts, as it does here.
"""

import json
import sys
import time

import numpy as np

SHAPES = ((100, 10_000), (1_000, 1_000), (10_000, 100), (100_000, 10))
UNITS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}

# The ratios to reach, by operation and shape, and the benchmark that belongs to each operation.
LIMITS = {
    "concatenate": {(10_000, 100): 1.5, (100_000, 10): 1.5},
    "repeat": {(100, 10_000): 0.5, (1_000, 1_000): 0.5},
}
BENCHMARKS = {"concatenate": "BM_ConcatGetData", "repeat": "BM_SweptGetData"}


def fastest(action, seconds=1.0):
    """The shortest of the runs that fit into `seconds`, in microseconds; three at least."""
    times = []
    until = time.perf_counter() + seconds
    while len(times) < 3 or time.perf_counter() < until:
        begin = time.perf_counter()
        action()
        times.append(time.perf_counter() - begin)
    return min(times) * 1e6


def numpy_times():
    times = {}
    for members, length in SHAPES:
        pieces = [np.arange(i * length, (i + 1) * length, dtype=float) for i in range(members)]
        times["concatenate", (members, length)] = fastest(lambda: np.concatenate(pieces))
        parameter = np.arange(members, dtype=float)
        lengths = np.full(members, length)
        times["repeat", (members, length)] = fastest(lambda: np.repeat(parameter, lengths))
    return times


def library_times(path):
    times = {}
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("run_type") == "aggregate":
                continue
            value = run["real_time"] * UNITS[run["time_unit"]]
            times[run["run_name"]] = min(value, times.get(run["run_name"], value))
    return times


def main():
    ours = library_times(sys.argv[1]) if len(sys.argv) > 1 else {}
    for (operation, (members, length)), numpy_time in numpy_times().items():
        line = f"{operation:12} {members:7} x {length:6}   NumPy {numpy_time:9.1f}"
        time_of_ours = ours.get(f"{BENCHMARKS[operation]}/members:{members}/length:{length}")
        if time_of_ours is not None:
            limit = LIMITS[operation].get((members, length))
            line += f"   ours {time_of_ours:9.1f}   ratio {time_of_ours / numpy_time:5.2f}"
            line += f" (at most {limit})" if limit else ""
        print(line)


if __name__ == "__main__":
    main()
