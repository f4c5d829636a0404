// Builds runtime modules from a module type and its definition's bytes: "Trivial" (no bytes),
// "NeuralNetwork" (NeuralNetworkFormat), "Transformed" (TransformedFormat, wrapping a module built the
// same way), "TorchScript" (a TorchScript archive, when this build has libtorch). "ONNX" and "Python"
// have no runtime in this build. Stateless; safe for concurrent use.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/platform/ModuleType.h"
#include "ombrix/runtime/AIRuntimeModule.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Ombrix
{

class OMBRIX_AI_API AIModuleBuilder
{
public:
  // Transformed modules nest at most this deep.
  static constexpr int maximumNesting = 8;

  // Whether this build can run modules of `type`.
  static bool hasRuntime(AISystem::ModuleType type);

  // Throws std::invalid_argument with a message naming the type and the problem when the type has no
  // runtime in this build ("this build has no runtime for module type \"ONNX\""), is unknown, or the
  // bytes do not suit it. Never returns null.
  static std::unique_ptr<AIRuntimeModule> build(AISystem::ModuleType type,
                                                std::span<const std::uint8_t> bytes);

private:
  static std::unique_ptr<AIRuntimeModule> build(AISystem::ModuleType type,
                                                std::span<const std::uint8_t> bytes, int depth);
};

} // namespace Ombrix
