#include "ombrix/runtime/DenseNetwork.h"

#include "support/TestSupport.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{

using Ombrix::Activation;
using Ombrix::DenseLayer;
using Ombrix::DenseNetwork;

TEST(DenseNetwork, RefusesLayersThatCannotBeEvaluated)
{
  const std::pair<std::vector<DenseLayer>, const char*> cases[] = {
      {{}, "a network needs at least one layer"},
      {{DenseLayer{0, 1, Activation::Relu, {}, {0}}},
       "layer 0 has 0 inputs and 1 outputs; both must be at least 1"},
      {{DenseLayer{2, 1, Activation::Relu, {1}, {0}}}, "layer 0 has 1 weights, expected 1 x 2"},
      {{DenseLayer{1, 1, Activation::Relu, {1}, {}}}, "layer 0 has 0 biases, expected 1"},
      {{DenseLayer{1, 2, Activation::Relu, {1, 1}, {0, 0}}, DenseLayer{1, 1, Activation::Relu, {1}, {0}}},
       "layer 1 takes 1 inputs, layer 0 gives 2"},
      {{DenseLayer{1, 1, static_cast<Activation>(9), {1}, {0}}}, "layer 0 has the unknown activation 9"},
      {{DenseLayer{1, 1, Activation::Relu, {1}, {NAN}}}, "layer 0 bias 0 is not finite (nan)"},
  };
  for (const auto& [layers, message] : cases)
    EXPECT_THROW_MSG(DenseNetwork{layers}, std::invalid_argument, message);
}

} // namespace
