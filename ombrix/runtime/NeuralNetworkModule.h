// The "NeuralNetwork" module: a dense network (DenseNetwork, read from NeuralNetworkFormat bytes)
// evaluated in double precision. Rows are evaluated in blocks, so that a batch of many functors costs
// little more per functor than the arithmetic; each output sums its terms in the same order whatever
// the batch, the machine's vector width or the compiler, so batched and single results are identical.
// One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/runtime/AIRuntimeModule.h"
#include "ombrix/runtime/DenseNetwork.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API NeuralNetworkModule : public AIRuntimeModule
{
public:
  explicit NeuralNetworkModule(DenseNetwork network);
  // Throws std::invalid_argument "NeuralNetwork data: ..." for bytes that NeuralNetworkFormat refuses.
  explicit NeuralNetworkModule(std::span<const std::uint8_t> bytes);

  const DenseNetwork& getNetwork() const { return m_network; }

protected:
  std::size_t do_outputCount(std::size_t inputs) override;
  void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) override;

private:
  // A layer laid out for evaluation: the weights transposed (one row of outputs per input) and padded
  // to a whole number of blocks of outputs.
  struct Layer
  {
    std::size_t inputs = 0;
    std::size_t outputs = 0;
    std::size_t stride = 0; // outputs, padded
    Activation activation = Activation::Identity;
    std::vector<double> weights; // inputs x stride
    std::vector<double> biases;  // stride
  };

  DenseNetwork m_network;
  std::vector<Layer> m_layers;
  std::vector<double> m_a; // the values between layers of a chunk of rows, kept between calls
  std::vector<double> m_b;
};

} // namespace Ombrix
