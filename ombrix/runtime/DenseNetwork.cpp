#include "ombrix/runtime/DenseNetwork.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace Ombrix
{
namespace
{

void checkFinite(const std::vector<double>& values, std::size_t layer, const char* what)
{
  for (std::size_t i = 0; i < values.size(); ++i)
  {
    if (!std::isfinite(values[i]))
      throw std::invalid_argument("layer " + std::to_string(layer) + " " + what + " " + std::to_string(i) +
                                  " is not finite (" + std::to_string(values[i]) + ")");
  }
}

} // namespace

DenseNetwork::DenseNetwork(std::vector<DenseLayer> layers) : m_layers(std::move(layers))
{
  if (m_layers.empty())
    throw std::invalid_argument("a network needs at least one layer");
  for (std::size_t l = 0; l < m_layers.size(); ++l)
  {
    const DenseLayer& layer = m_layers[l];
    const std::string name = "layer " + std::to_string(l);
    if (layer.inputs == 0 || layer.outputs == 0)
      throw std::invalid_argument(name + " has " + std::to_string(layer.inputs) + " inputs and " +
                                  std::to_string(layer.outputs) + " outputs; both must be at least 1");
    if (l > 0 && layer.inputs != m_layers[l - 1].outputs)
      throw std::invalid_argument(name + " takes " + std::to_string(layer.inputs) + " inputs, layer " +
                                  std::to_string(l - 1) + " gives " +
                                  std::to_string(m_layers[l - 1].outputs));
    if (layer.weights.size() / layer.inputs != layer.outputs || layer.weights.size() % layer.inputs != 0)
      throw std::invalid_argument(name + " has " + std::to_string(layer.weights.size()) +
                                  " weights, expected " + std::to_string(layer.outputs) + " x " +
                                  std::to_string(layer.inputs));
    if (layer.biases.size() != layer.outputs)
      throw std::invalid_argument(name + " has " + std::to_string(layer.biases.size()) +
                                  " biases, expected " + std::to_string(layer.outputs));
    if (!isActivation(static_cast<std::uint32_t>(layer.activation)))
      throw std::invalid_argument(name + " has the unknown activation " +
                                  std::to_string(static_cast<std::uint32_t>(layer.activation)));
    checkFinite(layer.weights, l, "weight");
    checkFinite(layer.biases, l, "bias");
  }
}

} // namespace Ombrix
