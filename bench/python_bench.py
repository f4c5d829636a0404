#!/usr/bin/env python3
"""Speed of the Python bindings' bulk values against the C++ calls they wrap, measured in one run.

A data file of N values (N/10 entities of ten doubles, one chronology, as bench/csv_bench.cpp) is read
into numpy arrays (DataFile.read) and compared with the C++ read-and-apply of the same file
(DataFile.apply: one call into CSVDataFileParser::parseFile), and written from the arrays
(DataFile.write with the values) and compared with the C++ write (DataFile.write alone, one call into
CSVDataFileParser::saveAs). The four are interleaved round by round so that the machine's load affects
them alike; the median and the fastest round of each are reported.

    PYTHONPATH=build/default/python /usr/bin/python3 bench/python_bench.py [--values 100000] [--rounds 21]
"""

from __future__ import annotations

import argparse
import os
import statistics
import tempfile
import time

import ombrix


def definition(path: str, values: int) -> None:
    rows = [
        "<<,START,CSV,VER04,>>",
        "EntityID,EntityType,EntityName,Access,AttributePath,Type,InitialValue,Unit",
    ]
    for e in range(values // 10):
        rows.append(f"{e}-17,Cell,C{e},ReadWrite,,Entity,,")
        rows.extend(f"{e}-17,Cell,C{e},ReadWrite,Value{a},Double,{e * 0.001 + a:f},Pa" for a in range(10))
    rows.append("<<,END,CSV,VER04,>>")
    with open(path, "w") as file:
        file.write("\n".join(rows) + "\n")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--values", type=int, default=100000)
    parser.add_argument("--rounds", type=int, default=21)
    args = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="ombrix_python_bench_") as directory:
        def_file, data_file, out_file = (
            os.path.join(directory, n) for n in ("def.csv", "data.csv", "out.csv")
        )
        definition(def_file, args.values)
        model = ombrix.Model.read_definition(def_file)
        data = ombrix.DataFile(model, {ombrix.Chronology.Initial}, check_access=False)
        data.write(data_file)

        started = time.perf_counter()
        values = data.read(data_file)
        first_read = time.perf_counter() - started
        assert len(values.double) == args.values, len(values.double)

        times: dict[str, list[float]] = {"apply": [], "read": [], "write": [], "write_arrays": []}
        operations = {
            "apply": lambda: data.apply(data_file),
            "read": lambda: data.read(data_file),
            "write": lambda: data.write(out_file),
            "write_arrays": lambda: data.write(out_file, values),
        }
        for _ in range(args.rounds):
            for name, operation in operations.items():
                started = time.perf_counter()
                operation()
                times[name].append(time.perf_counter() - started)

    med = {name: statistics.median(t) * 1000 for name, t in times.items()}
    low = {name: min(t) * 1000 for name, t in times.items()}
    print(f"{args.values} values, {args.rounds} rounds, ms (median / fastest round)")
    for name, label, base in [
        ("apply", "C++ read-and-apply     ", None),
        ("read", "read into numpy arrays ", "apply"),
        ("write", "C++ write              ", None),
        ("write_arrays", "write from numpy arrays", "write"),
    ]:
        ratio = f"   ratio {med[name] / med[base]:.3f} / {low[name] / low[base]:.3f}" if base else ""
        print(f"  {label}  {med[name]:8.2f} / {low[name]:8.2f}{ratio}")
    print(f"  first read (makes the index of places) {first_read * 1000:.2f}")


if __name__ == "__main__":
    main()
