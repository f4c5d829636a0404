#include "ombrix/runtime/NeuralNetworkModule.h"

#include "ombrix/platform/ModuleType.h"
#include "ombrix/runtime/NeuralNetworkFormat.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace Ombrix
{
namespace
{

// A block of rows times a block of outputs is summed in registers (the rows left over one by one); rows
// go through all layers in chunks small enough for the values between layers to stay in the cache.
constexpr std::size_t blockRows = 4;
constexpr std::size_t blockOutputs = 8;
constexpr std::size_t chunkRows = 64;

double activate(Activation activation, double value)
{
  switch (activation)
  {
  case Activation::Relu:
    return value > 0 ? value : 0.0;
  case Activation::Tanh:
    return std::tanh(value);
  case Activation::Sigmoid:
    return 1.0 / (1.0 + std::exp(-value));
  default:
    return value;
  }
}

struct LayerView
{
  std::size_t inputs;
  std::size_t stride;
  Activation activation;
  const double* weights;
  const double* biases;
};

// `rows` rows of `x` (row stride `xStride`) through one layer into `y` (row stride layer.stride), in
// blocks of R rows. Each output is its bias plus the products in input order, never fused, so neither
// the block nor the vector width the compiler chooses changes a result.
template <std::size_t R>
[[gnu::always_inline]] inline void denseBlock(const double* x, std::size_t xStride, const LayerView& layer,
                                              double* y)
{
  for (std::size_t o0 = 0; o0 < layer.stride; o0 += blockOutputs)
  {
    double sum[R][blockOutputs];
    for (std::size_t r = 0; r < R; ++r)
      for (std::size_t o = 0; o < blockOutputs; ++o)
        sum[r][o] = layer.biases[o0 + o];
    for (std::size_t i = 0; i < layer.inputs; ++i)
    {
      const double* w = layer.weights + i * layer.stride + o0;
      // Unrolled whole, so that the sums stay in registers.
#pragma GCC unroll 8
      for (std::size_t r = 0; r < R; ++r)
      {
        const double v = x[r * xStride + i];
#pragma GCC unroll 8
        for (std::size_t o = 0; o < blockOutputs; ++o)
          sum[r][o] += v * w[o];
      }
    }
    for (std::size_t r = 0; r < R; ++r)
    {
      double* row = y + r * layer.stride + o0;
      if (layer.activation == Activation::Relu)
      {
        for (std::size_t o = 0; o < blockOutputs; ++o)
          row[o] = sum[r][o] > 0 ? sum[r][o] : 0.0;
      }
      else
      {
        for (std::size_t o = 0; o < blockOutputs; ++o)
          row[o] = activate(layer.activation, sum[r][o]);
      }
    }
  }
}

[[gnu::always_inline]] inline void denseLayer(const double* x, std::size_t xStride, std::size_t rows,
                                              const LayerView& layer, double* y)
{
  std::size_t r = 0;
  for (; r + blockRows <= rows; r += blockRows)
    denseBlock<blockRows>(x + r * xStride, xStride, layer, y + r * layer.stride);
  for (; r < rows; ++r)
    denseBlock<1>(x + r * xStride, xStride, layer, y + r * layer.stride);
}

using LayerFunction = void (*)(const double*, std::size_t, std::size_t, const LayerView&, double*);

void denseLayerPortable(const double* x, std::size_t xStride, std::size_t rows, const LayerView& layer,
                        double* y)
{
  denseLayer(x, xStride, rows, layer, y);
}

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
// The same code with 256-bit vectors, for processors that have them.
[[gnu::target("avx")]] void denseLayerWide(const double* x, std::size_t xStride, std::size_t rows,
                                           const LayerView& layer, double* y)
{
  denseLayer(x, xStride, rows, layer, y);
}

LayerFunction chooseLayerFunction()
{
  return __builtin_cpu_supports("avx") ? denseLayerWide : denseLayerPortable;
}
#else
LayerFunction chooseLayerFunction()
{
  return denseLayerPortable;
}
#endif

const LayerFunction layerFunction = chooseLayerFunction();

std::size_t padded(std::size_t count, std::size_t block)
{
  return (count + block - 1) / block * block;
}

} // namespace

NeuralNetworkModule::NeuralNetworkModule(DenseNetwork network)
    : AIRuntimeModule(AISystem::ModuleType::NeuralNetwork), m_network(std::move(network))
{
  if (m_network.layers().empty())
    throw std::invalid_argument("NeuralNetwork module: the network has no layer");
  std::size_t widest = 0;
  for (const DenseLayer& source : m_network.layers())
  {
    Layer layer;
    layer.inputs = source.inputs;
    layer.outputs = source.outputs;
    layer.stride = padded(source.outputs, blockOutputs);
    layer.activation = source.activation;
    layer.weights.assign(layer.inputs * layer.stride, 0.0);
    for (std::size_t o = 0; o < source.outputs; ++o)
      for (std::size_t i = 0; i < source.inputs; ++i)
        layer.weights[i * layer.stride + o] = source.weights[o * source.inputs + i];
    layer.biases.assign(layer.stride, 0.0);
    std::copy(source.biases.begin(), source.biases.end(), layer.biases.begin());
    widest = std::max(widest, layer.stride);
    m_layers.push_back(std::move(layer));
  }
  m_a.assign(chunkRows * widest, 0.0);
  m_b.assign(chunkRows * widest, 0.0);
}

NeuralNetworkModule::NeuralNetworkModule(std::span<const std::uint8_t> bytes)
    : NeuralNetworkModule(NeuralNetworkFormat::read(bytes))
{
}

std::size_t NeuralNetworkModule::do_outputCount(std::size_t inputs)
{
  if (inputs != m_network.inputCount())
    throw std::invalid_argument("expects " + std::to_string(m_network.inputCount()) +
                                " inputs, the functor has " + std::to_string(inputs));
  return m_network.outputCount();
}

void NeuralNetworkModule::do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out)
{
  if (inputs != m_network.inputCount())
    throw std::runtime_error(describe() + " expects " + std::to_string(m_network.inputCount()) +
                             " inputs per row, not " + std::to_string(inputs));
  const std::size_t outputs = m_network.outputCount();
  for (std::size_t first = 0; first < rows; first += chunkRows)
  {
    const std::size_t count = std::min(chunkRows, rows - first);
    const double* x = in + first * inputs;
    std::size_t xStride = inputs;
    double* y = m_a.data();
    for (const Layer& layer : m_layers)
    {
      const LayerView view{layer.inputs, layer.stride, layer.activation, layer.weights.data(),
                           layer.biases.data()};
      layerFunction(x, xStride, count, view, y);
      x = y;
      xStride = layer.stride;
      y = (y == m_a.data()) ? m_b.data() : m_a.data();
    }
    for (std::size_t r = 0; r < count; ++r)
      std::copy(x + r * xStride, x + r * xStride + outputs, out + (first + r) * outputs);
  }
}

} // namespace Ombrix
