"""The client loop against the C++ example solver, the Python example clients, and the slots of a step."""

import os
import subprocess
import sys

import numpy as np
import pytest

import ombrix
from conftest import example_program

EXAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "python", "examples")


def test_slots_are_found_by_key_path_pair_or_attribute(model):
    slots = ombrix.Slots(ombrix.View(model, ["Speed", ("S5", "Load"), ("S4", "Load")]))
    slots.refresh()
    assert [
        slots.index(k) for k in ["Speed", ("S5", "Load"), ("P1", "Speed"), model.attribute("S4", "Load")]
    ] == [0, 1, 0, 2]
    slots["Speed"] = 1.5
    assert np.asarray(slots).tolist() == [1.5, 5.0, 4.0] and dict(slots)["Speed"] == 1.5
    with pytest.raises(KeyError, match="2 slots have the path 'Load'"):
        slots["Load"]
    with pytest.raises(KeyError, match=r"no slot 'Nope'; the slots are 'Speed', \('S5', 'Load'\)"):
        slots["Nope"]


def options():
    result = ombrix.Options()
    result.read_failure_handling = ombrix.ReadFailureHandling.Retry
    result.solver_heartbeat_interval, result.client_heartbeat_grace_period = 1, 3
    return result


def solver(directory, *arguments):
    return subprocess.Popen(
        [example_program("solver"), "--dir", str(directory), "--timeout-ms", "20000", *arguments],
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )


def test_a_client_answers_until_it_asks_the_solver_to_end(tmp_path):
    process = solver(tmp_path, "--steps", "10")
    seen = []
    with ombrix.Client(str(tmp_path), ["Probe.Temperature"], options=options(), timeout_ms=20000) as client:
        for step in client.steps():
            seen.append((step.number, step.iteration, step.time, step.inputs["Probe.Temperature"]))
            step.outputs["Heater Flux"] = 1000.0 * step.number
            if step.number == 3:
                step.end()
    out, err = process.communicate(timeout=30)
    assert process.returncode == 0, err
    # The solver sends every digit: its 300 K after one step is 299.99999999999994.
    assert [s[:3] for s in seen] == [(1, 1, 10.0), (2, 2, 20.0), (3, 3, 30.0)]
    assert seen[0][3] == pytest.approx(300.0, abs=1e-9)
    assert "heater flux    2000.0 W/m^2" in out.splitlines()[2]
    assert "solver: the client asks to end after step 3" in out
    assert len(client.outputs) == 3  # by default every writable number: the shortcut, both ends


def test_an_error_in_the_compute_step_tells_the_solver_at_once(tmp_path):
    process = solver(tmp_path)
    with pytest.raises(ZeroDivisionError):
        with ombrix.Client(str(tmp_path), options=options(), timeout_ms=20000) as client:
            for step in client.steps():
                step.outputs["Heater Flux"] = 1 / 0
    out, err = process.communicate(timeout=30)
    assert process.returncode == 2 and "exchange_solver: the client reports that it failed" in err


def test_a_dead_solver_ends_the_loop_with_an_exchange_error(tmp_path):
    process = solver(tmp_path)
    client = ombrix.Client(str(tmp_path), options=options(), timeout_ms=20000)
    with pytest.raises(ombrix.ExchangeError) as raised:
        for step in client.steps():
            if step.number == 2:
                process.kill()
    process.communicate()
    assert str(raised.value) == (
        f"the solver stopped answering: its heartbeat in {tmp_path}/out.alive is " "older than 3 s"
    )
    assert open(tmp_path / "in.state").read() == "12\tFailed\t<END>"


def run_example(script, build, steps):
    environment = dict(os.environ, SOLVER_ARGS=f"--steps {steps}", PYTHON=sys.executable)
    result = subprocess.run(
        ["sh", script, build], capture_output=True, text=True, env=environment, timeout=120
    )
    assert result.returncode == 0, result.stdout + result.stderr
    return [
        line for line in result.stdout.splitlines() if "wall time" not in line and "directory" not in line
    ]


def test_the_python_example_client_ends_the_exchange_like_the_cpp_one():
    examples = os.path.dirname(example_program("solver"))
    source = os.path.join(os.path.dirname(__file__), "..", "..", "examples")
    cpp = run_example(os.path.join(source, "run_exchange.sh"), examples, 6)
    python = run_example(os.path.join(source, "run_exchange_python.sh"), os.path.dirname(examples), 6)
    assert python[1:] == cpp[1:] and python[-2].startswith("client: 6 exchanges up to t 60.0 s; probe")


def test_the_torch_client_answers_with_its_model(tmp_path):
    pytest.importorskip("torch")
    script = os.path.join(EXAMPLES, "torch_client.py")
    exported = str(tmp_path / "controller.pt")
    subprocess.run([sys.executable, script, "--export", exported], check=True, timeout=120)
    process = solver(tmp_path, "--steps", "3")
    client = subprocess.run(
        [sys.executable, script, "--dir", str(tmp_path), "--model", exported, "--timeout-ms", "20000"],
        capture_output=True,
        text=True,
        timeout=120,
    )
    out, err = process.communicate(timeout=30)
    assert process.returncode == 0 and client.returncode == 0, err + client.stderr
    # Step 1 answers the probe at 300 K: 4000 * 30 W/m^2, clamped to 60000.
    assert "heater flux   60000.0 W/m^2" in out.splitlines()[1]
    assert client.stdout.startswith("torch_client.py: the model answered 3 exchanges")
