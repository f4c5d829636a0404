#!/usr/bin/env python3
"""The client of the example exchange, in Python: the twin of examples/exchange_client.cpp.

Rebuilds the solver's model from def.csv, then per exchange reads the probe temperature from out.csv
and answers, in in.csv, with the heater flux that a PI controller chooses to drive the probe to its set
point; ends when the solver has finished. Run it against the C++ example solver with
``sh examples/run_exchange_python.sh build/default`` (or the build target ``run-example-python``).
"""

from __future__ import annotations

import argparse
import math
import sys

import ombrix


class Controller:
    """Proportional-integral control with a limited output; the integral stops growing while the
    output is saturated (no wind-up). The same arithmetic as the C++ client, so both answer alike."""

    def __init__(self, set_point: float, gain: float, reset_time: float, maximum: float) -> None:
        self.set_point = set_point
        self.gain = gain
        self.reset_time = reset_time
        self.maximum = maximum
        self.integral = 0.0

    def answer(self, measured: float, dt: float) -> float:
        error = self.set_point - measured
        integral = self.integral + error * dt
        output = self.gain * (error + integral / self.reset_time)
        limited = min(max(output, 0.0), self.maximum)
        if limited == output:
            self.integral = integral
        return limited


def options_from(args: argparse.Namespace) -> ombrix.Options:
    """The exchange options of the example: the file mode, a data file caught while being written read
    again, and a short heartbeat so that a dead partner is noticed within seconds."""
    if args.heartbeat < 1 or args.grace < args.heartbeat + 2:
        # Stamps are whole seconds, rewritten a little after each interval: a live partner's stamp can
        # look up to interval + 1 s old.
        raise ValueError("the heartbeat must be at least 1 s and the grace period at least 2 s longer")
    options = ombrix.Options()
    options.directory = args.dir
    options.file_mode = ombrix.FileMode.__members__[args.mode]
    options.read_failure_handling = ombrix.ReadFailureHandling.Retry
    options.in_file_try_attempts = 5
    options.solver_heartbeat_interval = args.heartbeat
    options.client_heartbeat_grace_period = args.grace
    return options


def parse(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="exchange_client.py", description=__doc__.split("\n\n")[0])
    parser.add_argument("--dir", required=True, help="the exchange directory")
    parser.add_argument("--mode", choices=["Fixed", "Sequential"], default="Fixed")
    parser.add_argument("--timeout-ms", type=int, default=60000, help="each wait for the solver")
    parser.add_argument("--heartbeat", type=int, default=1, help="seconds")
    parser.add_argument("--grace", type=int, default=3, help="seconds")
    parser.add_argument("--set-point", type=float, default=330.0)
    parser.add_argument("--gain", type=float, default=4000.0)
    parser.add_argument("--reset-time", type=float, default=60.0)
    parser.add_argument("--max-flux", type=float, default=60000.0)
    parser.add_argument(
        "--end-when-settled",
        type=float,
        default=0.0,
        help="answer END once the probe stayed within this many kelvin for 3 exchanges",
    )
    parser.add_argument("--verbose", type=int, default=0)
    args = parser.parse_args(argv)
    if not (args.reset_time > 0 and args.max_flux > 0):
        parser.error("reset-time and max-flux must be positive")
    return args


def main(argv: list[str] | None = None) -> int:
    args = parse(argv)
    try:
        options = options_from(args)
    except ValueError as error:
        print(f"exchange_client.py: {error}", file=sys.stderr)
        return 1
    controller = Controller(args.set_point, args.gain, args.reset_time, args.max_flux)
    probe = flux = simulated = 0.0
    settled = 0  # consecutive exchanges with the probe within --end-when-settled of the set point
    client = ombrix.Client(
        args.dir,
        inputs=["Probe.Temperature"],
        outputs=["Heater Flux"],
        options=options,
        timeout_ms=args.timeout_ms,
    )
    try:
        with client:
            for step in client.steps():
                dt = 1.0 if math.isnan(step.time_step) else step.time_step
                simulated = simulated + dt if math.isnan(step.time) else step.time
                probe = step.inputs["Probe.Temperature"]
                flux = controller.answer(probe, dt)
                # Through the rod's shortcut: the value lands on the left end's heat flux.
                step.outputs["Heater Flux"] = flux
                settled = settled + 1 if abs(probe - controller.set_point) <= args.end_when_settled else 0
                if settled == 3:
                    step.end()
                    print(f"client: settled within {args.end_when_settled:.3f} K, asking the solver to end")
                if args.verbose:
                    print(f"client: iteration {step.iteration}  probe {probe:.3f} K  flux {flux:.1f} W/m^2")
    except ombrix.Error as error:
        print(f"exchange_client.py: {error}", file=sys.stderr)
        return 2

    n = client.exchanges
    per_exchange = 1000.0 / n if n else 0.0
    off = probe - controller.set_point
    print(
        f"client: {n} exchanges up to t {simulated:.1f} s; probe {probe:.3f} K against set point "
        f"{controller.set_point:.3f} K (off by {off:.3f} K), last flux {flux:.1f} W/m^2"
    )
    waiting, files = client.handshake.waiting * per_exchange, client.file_seconds * per_exchange
    print(
        f"client: wall time per exchange {client.wall_seconds * per_exchange:.1f} ms: waiting for the solver "
        f"{waiting:.1f} ms, data files {files:.1f} ms, control {client.compute_seconds * per_exchange:.3f} ms"
    )
    return 0


if __name__ == "__main__":
    sys.exit(main())
