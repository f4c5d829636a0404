// The binary form of a dense network, the bytes of a "NeuralNetwork" module definition (grammar in
// docs/ai-runtime.md). All fields little-endian:
//
//   network = "OMNN" version:u32 inputs:u32 layers:u32 layer{layers}
//   layer   = outputs:u32 activation:u32 weights:f64{outputs * inputs of the layer} biases:f64{outputs}
//
// Version 1. The weights of a layer are row-major, one row of the layer's inputs per output.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/platform/bytearray.h"
#include "ombrix/runtime/DenseNetwork.h"

#include <cstdint>
#include <span>

namespace Ombrix
{

class OMBRIX_AI_API NeuralNetworkFormat
{
public:
  static constexpr std::uint32_t version = 1;

  // Throws std::invalid_argument "NeuralNetwork data: <what>" when `bytes` do not hold exactly one
  // network of this version (wrong signature or version, data that ends early or goes on after the
  // last layer, an empty or inconsistent layer, an unknown activation, a weight that is not finite).
  // Nothing is allocated beyond what the bytes can fill.
  static DenseNetwork read(std::span<const std::uint8_t> bytes);
  static Utilities::bytearray write(const DenseNetwork& network);
};

} // namespace Ombrix
