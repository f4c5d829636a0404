#!/usr/bin/env python3
"""A client whose compute step is a PyTorch model.

Each exchange hands the inputs' array to the model as a batch of one and writes the model's answer to
the outputs. Without --model the client uses a small module made here, a proportional heater controller
written as layers (a linear layer and a clamp) that stands in for a trained surrogate; --export writes
that module as TorchScript, and --model loads any TorchScript module that maps a batch of input vectors
to a batch of output vectors. Against the C++ example solver:

    PYTHONPATH=build/default/python python3 python/examples/torch_client.py --dir DIR &
    build/default/examples/exchange_solver --dir DIR
"""

from __future__ import annotations

import argparse
import sys

import ombrix

try:
    import torch
except ImportError:  # the client needs it; say so plainly
    torch = None


def proportional_controller(set_point: float = 330.0, gain: float = 4000.0, maximum: float = 60000.0):
    """flux = clamp(gain * (set_point - probe), 0, maximum), as a scripted module of float64 layers."""

    class Proportional(torch.nn.Module):
        def __init__(self) -> None:
            super().__init__()
            self.linear = torch.nn.Linear(1, 1, dtype=torch.float64)
            with torch.no_grad():
                self.linear.weight.fill_(-gain)
                self.linear.bias.fill_(gain * set_point)
            self.maximum = maximum

        def forward(self, x: torch.Tensor) -> torch.Tensor:
            return torch.clamp(self.linear(x), 0.0, self.maximum)

    return torch.jit.script(Proportional())


def main(argv: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(prog="torch_client.py", description=__doc__.split("\n\n")[0])
    parser.add_argument("--dir", help="the exchange directory")
    parser.add_argument("--model", help="a TorchScript file; default: the module made here")
    parser.add_argument("--export", help="write the module made here as TorchScript to this file and stop")
    parser.add_argument("--inputs", nargs="+", default=["Probe.Temperature"], help="attribute paths")
    parser.add_argument("--outputs", nargs="+", default=["Heater Flux"], help="attribute paths")
    parser.add_argument("--timeout-ms", type=int, default=60000)
    args = parser.parse_args(argv)
    if torch is None:
        print("torch_client.py: PyTorch is not installed (Debian: python3-torch)", file=sys.stderr)
        return 1
    if args.export:
        proportional_controller().save(args.export)
        return 0
    if not args.dir:
        parser.error("--dir is required")
    model = torch.jit.load(args.model) if args.model else proportional_controller()
    model.eval()
    dtype = next(iter(model.parameters())).dtype
    options = ombrix.Options()
    options.read_failure_handling = ombrix.ReadFailureHandling.Retry
    options.solver_heartbeat_interval = 1
    options.client_heartbeat_grace_period = 3
    answer = None
    try:
        with ombrix.Client(
            args.dir, args.inputs, args.outputs, options=options, timeout_ms=args.timeout_ms
        ) as client:
            with torch.no_grad():
                for step in client.steps():
                    batch = torch.from_numpy(step.inputs.array).unsqueeze(0).to(dtype)
                    answer = model(batch).squeeze(0).to(torch.float64).numpy()
                    if answer.shape != step.outputs.array.shape:
                        raise ValueError(
                            f"the model answers {answer.shape[0]} values for " f"{len(step.outputs)} outputs"
                        )
                    step.outputs.array[:] = answer
    except ombrix.Error as error:
        print(f"torch_client.py: {error}", file=sys.stderr)
        return 2
    print(
        f"torch_client.py: the model answered {client.exchanges} exchanges; last answer "
        f"{answer.tolist() if answer is not None else None}"
    )
    return 0


if __name__ == "__main__":
    sys.exit(main())
