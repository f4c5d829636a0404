// The kinds of AI module that the host's AI runtime can build. The values are flags of the runtime and
// are written to streams as they are, hence the gaps; there is no 0.
#pragma once

#include <cstdint>

namespace AISystem
{

enum class ModuleType : std::int32_t
{
  Trivial = 1,
  NeuralNetwork = 3,
  TorchScript = 16,
  ONNX = 32,
  Python = 48,
  Transformed = 4096,
};

} // namespace AISystem
