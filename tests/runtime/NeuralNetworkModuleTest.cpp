#include "ombrix/runtime/NeuralNetworkModule.h"

#include "ombrix/runtime/NeuralNetworkFormat.h"

#include "runtime/RuntimeTestSupport.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::Activation;
using Ombrix::NeuralNetworkModule;

TEST(NeuralNetworkModule, EvaluatesEveryRowLikeThePlainSumWhateverTheBatch)
{
  const auto network =
      OmbrixTest::makeNetwork({3, 9, 17, 2}, {Activation::Relu, Activation::Tanh, Activation::Sigmoid}, 7);
  NeuralNetworkModule module(Ombrix::NeuralNetworkFormat::write(network));
  EXPECT_EQ(module.outputCount(3), 2u);

  // 131 rows: several chunks and a last block that is not full.
  const std::size_t rows = 131;
  std::vector<double> in(rows * 3);
  for (std::size_t i = 0; i < in.size(); ++i)
    in[i] = static_cast<double>(i % 23) * 0.37 - 4.0;
  std::vector<double> batch(rows * 2);
  module.compute(in.data(), rows, 3, batch.data());
  for (std::size_t r = 0; r < rows; ++r)
  {
    SCOPED_TRACE(r);
    const auto expected = OmbrixTest::evaluate(network, {in[3 * r], in[3 * r + 1], in[3 * r + 2]});
    double single[2];
    module.compute(in.data() + 3 * r, 1, 3, single);
    for (std::size_t o = 0; o < 2; ++o)
    {
      EXPECT_DOUBLE_EQ(batch[2 * r + o], expected[o]);
      EXPECT_EQ(batch[2 * r + o], single[o]); // bit for bit
    }
  }
}

// Bad bytes are refused through the builder (AIRuntimeModuleCollectionTest).
TEST(NeuralNetworkModule, RefusesAnotherNumberOfInputs)
{
  NeuralNetworkModule module(OmbrixTest::makeNetwork({4, 2}, {Activation::Identity}));
  EXPECT_THROW_MSG(module.outputCount(3), std::invalid_argument, "expects 4 inputs, the functor has 3");
}

} // namespace
