// Networks for the AI runtime's tests: fixed pseudo-random weights and a plain evaluation to compare
// the module against.
#pragma once

#include "ombrix/runtime/DenseNetwork.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace OmbrixTest
{

// Layers of the given widths (widths[0] inputs), weights and biases in [-1, 1) from `seed`.
inline Ombrix::DenseNetwork makeNetwork(const std::vector<std::size_t>& widths,
                                        const std::vector<Ombrix::Activation>& activations,
                                        std::uint64_t seed = 1)
{
  std::uint64_t state = seed;
  const auto next = [&]
  {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state >> 11) / static_cast<double>(1ULL << 52) - 1.0;
  };
  std::vector<Ombrix::DenseLayer> layers;
  for (std::size_t l = 0; l + 1 < widths.size(); ++l)
  {
    Ombrix::DenseLayer layer{widths[l], widths[l + 1], activations[l], {}, {}};
    for (std::size_t i = 0; i < layer.inputs * layer.outputs; ++i)
      layer.weights.push_back(next());
    for (std::size_t o = 0; o < layer.outputs; ++o)
      layer.biases.push_back(next());
    layers.push_back(layer);
  }
  return Ombrix::DenseNetwork(layers);
}

// One row through the network, term by term.
inline std::vector<double> evaluate(const Ombrix::DenseNetwork& network, std::vector<double> row)
{
  for (const auto& layer : network.layers())
  {
    std::vector<double> next(layer.outputs);
    for (std::size_t o = 0; o < layer.outputs; ++o)
    {
      double sum = layer.biases[o];
      for (std::size_t i = 0; i < layer.inputs; ++i)
        sum += row[i] * layer.weights[o * layer.inputs + i];
      switch (layer.activation)
      {
      case Ombrix::Activation::Relu:
        sum = sum > 0 ? sum : 0;
        break;
      case Ombrix::Activation::Tanh:
        sum = std::tanh(sum);
        break;
      case Ombrix::Activation::Sigmoid:
        sum = 1 / (1 + std::exp(-sum));
        break;
      default:
        break;
      }
      next[o] = sum;
    }
    row = next;
  }
  return row;
}

} // namespace OmbrixTest
