"""The protocol's files from Python: state files and their waits, alive files, file names, options."""

import threading
import time

import pytest

import ombrix
from ombrix import FileMode, SolveState as S


def test_state_file_write_read_and_wait(tmp_path):
    path = str(tmp_path / "out.state")
    state = ombrix.StateFile(path)
    assert state.read(tries=0) == S.NoFile
    assert state.write(S.CFDSolver_NewDataReady)
    assert open(path).read() == "21003\tCFDSolver_NewDataReady\t<END>"
    assert ombrix.StateFile(path).wait_for({S.CFDSolver_NewDataReady, S.Finished}) == S.CFDSolver_NewDataReady
    started = time.monotonic()
    assert state.wait_for({S.Finished}, timeout_ms=150) == S.CFDSolver_NewDataReady  # timed out
    assert state.wait_for({S.Finished}, stop=lambda: True) == S.CFDSolver_NewDataReady
    assert time.monotonic() - started < 2
    with pytest.raises(ombrix.ArgumentError, match="Not implemented"):
        state.write(S.Unknown)


def test_a_wait_releases_the_gil_and_passes_on_errors_of_its_stop(tmp_path):
    state = ombrix.StateFile(str(tmp_path / "in.state"))
    counted = []
    worker = threading.Thread(target=lambda: counted.extend(range(100000)) or counted.append("done"))
    worker.start()
    state.wait_for({S.Finished}, timeout_ms=300)
    worker.join()
    assert counted[-1] == "done"

    def stop():
        raise RuntimeError("stop from Python")

    with pytest.raises(RuntimeError, match="stop from Python"):
        state.wait_for({S.Finished}, stop=stop)


def test_heartbeat_writer_and_checker(tmp_path):
    path = str(tmp_path / "in.alive")
    writer = ombrix.AliveFile(path, interval=1)
    checker = ombrix.AliveFile(path, grace_period=30)
    writer.start()
    assert writer.running and checker.wait_for_alive(timeout_ms=2000) and checker.is_alive
    # The writer's thread never needs the GIL: it goes on while Python computes without pause.
    first = open(path).read()
    deadline = time.monotonic() + 6
    while open(path).read() in ("", first) and time.monotonic() < deadline:
        sum(range(10000))
    assert open(path).read() not in ("", first)
    with pytest.raises(ValueError, match="cannot change while the writer runs"):
        writer.interval = 5
    writer.stop()
    assert not writer.running


def test_exchange_file_names():
    files = ombrix.ExchangeFiles("/exchange/", FileMode.Sequential)
    files.advance(3)
    names = (files.in_file, files.out_file, files.def_file, files.in_state_file, files.out_alive_file)
    assert names == tuple("/exchange/" + n for n in "in3.csv out3.csv def.csv in.state out.alive".split())
    files.reset()
    assert files.in_file == "/exchange/in0.csv"
    assert ombrix.ExchangeFiles("/", FileMode.Fixed).out_file == "/out.csv"


def test_names_and_options():
    assert (ombrix.ExchangeFiles.in_name(), ombrix.ExchangeFiles.out_name(7)) == ("in.csv", "out7.csv")
    a, b = ombrix.Options(), ombrix.Options()
    b.use_full_entity_names = True
    assert a == b  # the names' form is not part of the comparison
    b.solver_heartbeat_interval = 1
    assert a != b
