#!/usr/bin/env python3
"""Trains the network that ai_solver runs in place of the example's client process.

Records exchanges of exchange_solver with exchange_client (the PI controller), then fits a small dense
network (4-16-16-1, tanh) that answers the controller's heater flux from the probe temperature, the mean
temperature, the current heater flux and the time, as read from each out<N>.csv, with the flux of the
matching in<N>.csv as the answer. Writes the "Transformed" module definition that ai_solver reads: the
inputs and the output scaled by their mean and standard deviation ("MeanStdDevScaling") around the
"NeuralNetwork" module, both in the binary formats of docs/ai-runtime.md.

Usage: python3 examples/train_controller.py <directory of the example programs> [output file]
The default output is examples/controller_network.bin. Needs python3-torch (Debian) for the fit.
"""
import csv
import os
import struct
import subprocess
import sys
import tempfile

import torch

# (entity ID, attribute path) of the network's inputs in out<N>.csv, in the functor's order, and of the
# answer in in<N>.csv.
INPUTS = [("2-1", "Probe.Temperature"), ("2-1", "Mean Temperature"), ("3-1", "Heat Flux"),
          ("1-1", "Results.Time")]
ANSWER = ("3-1", "Heat Flux")
TANH, IDENTITY = 2, 0
MEAN_STD_DEV_SCALING, NEURAL_NETWORK = 5, 3


def read_values(path):
    """The values of a data file, by (entity ID, attribute path)."""
    with open(path, newline="") as f:
        rows = list(csv.reader(f))
    return {(row[0], row[3]): row[4] for row in rows[2:-1]}


def record(programs, cells, steps=60):
    """Runs one exchange with `cells` cells in the rod; returns its (inputs, answer) pairs."""
    with tempfile.TemporaryDirectory(prefix="ombrix-record.") as directory:
        common = ["--dir", directory, "--mode", "Sequential"]
        client = subprocess.Popen([os.path.join(programs, "exchange_client")] + common,
                                  stdout=subprocess.DEVNULL)
        subprocess.run([os.path.join(programs, "exchange_solver")] + common +
                       ["--cells", str(cells), "--steps", str(steps)], check=True, stdout=subprocess.DEVNULL)
        if client.wait() != 0:
            raise RuntimeError("exchange_client failed")
        samples = []
        for n in range(steps):
            out = read_values(os.path.join(directory, f"out{n}.csv"))
            answer = read_values(os.path.join(directory, f"in{n}.csv"))
            samples.append(([float(out[key]) for key in INPUTS], float(answer[ANSWER])))
        return samples


def network_bytes(layers):
    """The "NeuralNetwork" data of torch.nn.Linear layers, each with its activation."""
    data = b"OMNN" + struct.pack("<III", 1, layers[0][0].in_features, len(layers))
    for linear, activation in layers:
        weights = linear.weight.detach().double().flatten().tolist()
        biases = linear.bias.detach().double().tolist()
        data += struct.pack("<II", linear.out_features, activation)
        data += struct.pack(f"<{len(weights)}d", *weights) + struct.pack(f"<{len(biases)}d", *biases)
    return data


def transformed_bytes(input_scales, output_scales, inner_type, inner):
    """The "Transformed" data: mean and standard deviation scaling of each input and output."""
    def transformations(scales):
        data = struct.pack("<I", len(scales))
        for mean, deviation in scales:
            data += struct.pack("<iIdd", MEAN_STD_DEV_SCALING, 2, mean, deviation)
        return data
    return (b"OMTR" + struct.pack("<I", 1) + transformations(input_scales) + transformations(output_scales) +
            struct.pack("<iQ", inner_type, len(inner)) + inner)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    programs = sys.argv[1]
    output = sys.argv[2] if len(sys.argv) == 3 else os.path.join(os.path.dirname(__file__), "controller_network.bin")

    # Rods of a few resolutions give a few slightly different trajectories to learn from.
    samples = [sample for cells in (30, 40, 50, 60) for sample in record(programs, cells)]
    x = torch.tensor([inputs for inputs, _ in samples], dtype=torch.float64)
    y = torch.tensor([[answer] for _, answer in samples], dtype=torch.float64)
    x_mean, x_std = x.mean(0), x.std(0)
    y_mean, y_std = y.mean(0), y.std(0)

    torch.manual_seed(0)
    layers = [(torch.nn.Linear(4, 16), TANH), (torch.nn.Linear(16, 16), TANH), (torch.nn.Linear(16, 1), IDENTITY)]
    model = torch.nn.Sequential(layers[0][0], torch.nn.Tanh(), layers[1][0], torch.nn.Tanh(), layers[2][0]).double()
    optimiser = torch.optim.Adam(model.parameters(), lr=0.01)
    schedule = torch.optim.lr_scheduler.StepLR(optimiser, step_size=2000, gamma=0.3)
    for _ in range(6000):
        optimiser.zero_grad()
        loss = torch.nn.functional.mse_loss(model((x - x_mean) / x_std), (y - y_mean) / y_std)
        loss.backward()
        optimiser.step()
        schedule.step()
    with torch.no_grad():
        error = (model((x - x_mean) / x_std) * y_std + y_mean - y).pow(2).mean().sqrt().item()
    print(f"{len(samples)} recorded answers; the network answers them within {error:.1f} W/m^2 (RMS)")

    data = transformed_bytes(list(zip(x_mean.tolist(), x_std.tolist())), [(y_mean.item(), y_std.item())],
                             NEURAL_NETWORK, network_bytes(layers))
    with open(output, "wb") as f:
        f.write(data)
    print(f"wrote {output} ({len(data)} bytes)")


if __name__ == "__main__":
    main()
