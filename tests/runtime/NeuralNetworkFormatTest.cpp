#include "ombrix/runtime/NeuralNetworkFormat.h"

#include "runtime/RuntimeTestSupport.h"
#include "support/TestSupport.h"

#include <bit>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

using Ombrix::Activation;
using Ombrix::DenseLayer;
using Ombrix::DenseNetwork;
using Ombrix::NeuralNetworkFormat;
using Bytes = Utilities::bytearray;

// A 1-input, 1-output network with weight 2 and bias 0.5, written field by field.
Bytes tiny(std::uint32_t activation = 1)
{
  Bytes bytes;
  const auto put = [&](std::uint64_t value, int size)
  {
    for (int i = 0; i < size; ++i)
      bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  };
  for (char c : {'O', 'M', 'N', 'N'})
    put(static_cast<std::uint8_t>(c), 1);
  for (std::uint32_t field : {1u, 1u, 1u, 1u, activation}) // version, inputs, layers, outputs, activation
    put(field, 4);
  for (double value : {2.0, 0.5})
    put(std::bit_cast<std::uint64_t>(value), 8);
  return bytes;
}

TEST(NeuralNetworkFormat, ReadsTheDocumentedLayoutAndWritesItBack)
{
  const DenseNetwork expected({DenseLayer{1, 1, Activation::Relu, {2.0}, {0.5}}});
  EXPECT_EQ(NeuralNetworkFormat::read(tiny()), expected);
  EXPECT_EQ(NeuralNetworkFormat::write(expected), tiny());

  const DenseNetwork network =
      OmbrixTest::makeNetwork({5, 7, 3, 2}, {Activation::Tanh, Activation::Sigmoid, Activation::Identity});
  EXPECT_EQ(NeuralNetworkFormat::read(NeuralNetworkFormat::write(network)), network);
  EXPECT_THROW_MSG(NeuralNetworkFormat::write(DenseNetwork()), std::invalid_argument,
                   "NeuralNetwork data: a network without layers cannot be written");
}

TEST(NeuralNetworkFormat, RefusesMalformedDataWithItsReason)
{
  const auto with = [](std::size_t at, std::uint8_t value)
  {
    Bytes bytes = tiny();
    bytes[at] = value;
    return bytes;
  };
  Bytes longer = tiny();
  longer.push_back(0);
  const Bytes shorter(longer.begin(), longer.end() - 2);
  Bytes huge = tiny();
  huge.resize(24);
  huge[16] = huge[17] = huge[18] = huge[19] = 0xFF; // 4294967295 outputs
  Bytes infinite = tiny();
  std::memset(infinite.data() + 24, 0, 8);
  infinite[30] = 0xF0;
  infinite[31] = 0x7F;
  const std::pair<Bytes, const char*> cases[] = {
      {{}, "NeuralNetwork data: does not start with the signature \"OMNN\""},
      {with(3, 'X'), "NeuralNetwork data: does not start with the signature \"OMNN\""},
      {with(4, 2), "NeuralNetwork data: version 2, this build reads version 1"},
      {with(8, 0), "NeuralNetwork data: 0 inputs and 1 layers; both must be at least 1"},
      {with(16, 0), "NeuralNetwork data: layer 0 has 0 outputs"},
      {with(20, 4),
       "NeuralNetwork data: layer 0 has the unknown activation 4 (0 Identity, 1 Relu, 2 Tanh, 3 Sigmoid)"},
      {shorter, "NeuralNetwork data: ends at byte 39 in layer 0's biases (1 x 8 bytes needed from byte 32)"},
      {huge,
       "NeuralNetwork data: ends at byte 24 in layer 0's weights (4294967295 x 8 bytes needed from byte 24)"},
      {longer, "NeuralNetwork data: 1 bytes after the end of the data, at byte 40"},
      {infinite, "NeuralNetwork data: layer 0 weight 0 is not finite (inf)"},
  };
  for (const auto& [bytes, message] : cases)
    EXPECT_THROW_MSG(NeuralNetworkFormat::read(bytes), std::invalid_argument, message);
  // Every cut of a valid network is refused, never read past.
  const Bytes whole = NeuralNetworkFormat::write(
      OmbrixTest::makeNetwork({2, 3, 1}, {Activation::Relu, Activation::Identity}));
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_THROW(NeuralNetworkFormat::read(std::span(whole.data(), size)), std::invalid_argument) << size;
}

} // namespace
