#include "ombrix/runtime/NeuralNetworkFormat.h"

#include "ombrix/runtime/ByteReader.h"
#include "ombrix/runtime/ByteWriter.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Ombrix
{
namespace
{

constexpr std::uint8_t signature[4] = {'O', 'M', 'N', 'N'};
// Header and one weight and bias: the fewest bytes a layer takes.
constexpr std::size_t smallestLayer = 8 + 2 * 8;

} // namespace

DenseNetwork NeuralNetworkFormat::read(std::span<const std::uint8_t> bytes)
{
  ByteReader in(bytes, "NeuralNetwork data");
  if (bytes.size() < 4 || !std::equal(signature, signature + 4, bytes.begin()))
    in.fail("does not start with the signature \"OMNN\"");
  in.bytes(4, "the signature");
  const std::uint32_t dataVersion = in.u32("the version");
  if (dataVersion != version)
    in.fail("version " + std::to_string(dataVersion) + ", this build reads version " +
            std::to_string(version));
  const std::uint32_t inputs = in.u32("the number of inputs");
  const std::uint32_t count = in.u32("the number of layers");
  if (inputs == 0 || count == 0)
    in.fail(std::to_string(inputs) + " inputs and " + std::to_string(count) +
            " layers; both must be at least 1");

  std::vector<DenseLayer> layers;
  layers.reserve(std::min<std::size_t>(count, in.remaining() / smallestLayer + 1));
  std::size_t width = inputs;
  for (std::uint32_t l = 0; l < count; ++l)
  {
    const std::string name = "layer " + std::to_string(l);
    DenseLayer layer;
    layer.inputs = width;
    layer.outputs = in.u32(name + "'s number of outputs");
    if (layer.outputs == 0)
      in.fail(name + " has 0 outputs");
    const std::uint32_t activation = in.u32(name + "'s activation");
    if (!isActivation(activation))
      in.fail(name + " has the unknown activation " + std::to_string(activation) +
              " (0 Identity, 1 Relu, 2 Tanh, 3 Sigmoid)");
    layer.activation = static_cast<Activation>(activation);
    in.f64s(static_cast<std::uint64_t>(layer.outputs) * layer.inputs, layer.weights, name + "'s weights");
    in.f64s(layer.outputs, layer.biases, name + "'s biases");
    width = layer.outputs;
    layers.push_back(std::move(layer));
  }
  in.expectEnd();
  try
  {
    return DenseNetwork(std::move(layers));
  }
  catch (const std::invalid_argument& error)
  {
    in.fail(error.what());
  }
}

Utilities::bytearray NeuralNetworkFormat::write(const DenseNetwork& network)
{
  if (network.layers().empty())
    throw std::invalid_argument("NeuralNetwork data: a network without layers cannot be written");
  const auto narrow = [](std::size_t value)
  {
    if (value > UINT32_MAX)
      throw std::invalid_argument("NeuralNetwork data: a layer width of " + std::to_string(value) +
                                  " does not fit the format's 32 bits");
    return static_cast<std::uint32_t>(value);
  };
  ByteWriter out;
  out.bytes(signature);
  out.u32(version);
  out.u32(narrow(network.inputCount()));
  out.u32(narrow(network.layers().size()));
  for (const DenseLayer& layer : network.layers())
  {
    out.u32(narrow(layer.outputs));
    out.u32(static_cast<std::uint32_t>(layer.activation));
    for (double weight : layer.weights)
      out.f64(weight);
    for (double bias : layer.biases)
      out.f64(bias);
  }
  return out.take();
}

} // namespace Ombrix
