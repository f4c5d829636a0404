// A dense feed-forward network in double precision: layers of weights, biases and an activation, each
// layer taking the previous layer's outputs. A plain value, checked when it is built; evaluating it is
// NeuralNetworkModule's business.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/runtime/Activation.h"

#include <cstddef>
#include <vector>

namespace Ombrix
{

struct DenseLayer
{
  std::size_t inputs = 0;
  std::size_t outputs = 0;
  Activation activation = Activation::Identity;
  // `outputs` rows of `inputs` weights: row o holds the weights of output o (the layout of
  // torch.nn.Linear.weight).
  std::vector<double> weights;
  std::vector<double> biases; // one per output

  bool operator==(const DenseLayer&) const = default;
};

class OMBRIX_AI_API DenseNetwork
{
public:
  DenseNetwork() = default;
  // Throws std::invalid_argument when there is no layer, a layer has no input or output, the weights
  // or biases do not match the layer's size, a layer does not take what the previous one gives, an
  // activation is unknown, or a weight or bias is not finite.
  explicit DenseNetwork(std::vector<DenseLayer> layers);

  const std::vector<DenseLayer>& layers() const { return m_layers; }
  // Values per row in and out; 0 for an empty network.
  std::size_t inputCount() const { return m_layers.empty() ? 0 : m_layers.front().inputs; }
  std::size_t outputCount() const { return m_layers.empty() ? 0 : m_layers.back().outputs; }

  bool operator==(const DenseNetwork&) const = default;

private:
  std::vector<DenseLayer> m_layers;
};

} // namespace Ombrix
