#include "ombrix/runtime/AIModuleBuilder.h"

#include "ombrix/ai/AIModuleType.h"
#include "ombrix/runtime/NeuralNetworkModule.h"
#include "ombrix/runtime/TorchScriptModule.h"
#include "ombrix/runtime/TransformedFormat.h"
#include "ombrix/runtime/TransformedModule.h"
#include "ombrix/runtime/TrivialModule.h"

#include <stdexcept>
#include <string>

namespace Ombrix
{

bool AIModuleBuilder::hasRuntime(AISystem::ModuleType type)
{
  using AISystem::ModuleType;
  switch (type)
  {
  case ModuleType::Trivial:
  case ModuleType::NeuralNetwork:
  case ModuleType::Transformed:
    return true;
  case ModuleType::TorchScript:
    return TorchScriptModule::available();
  default:
    return false;
  }
}

std::unique_ptr<AIRuntimeModule> AIModuleBuilder::build(AISystem::ModuleType type,
                                                        std::span<const std::uint8_t> bytes)
{
  return build(type, bytes, 0);
}

std::unique_ptr<AIRuntimeModule> AIModuleBuilder::build(AISystem::ModuleType type,
                                                        std::span<const std::uint8_t> bytes, int depth)
{
  using AISystem::ModuleType;
  const std::string name = aiModuleTypeToString(type);
  if (name.empty())
    throw std::invalid_argument(
        "module type " + std::to_string(static_cast<std::int32_t>(type)) +
        " is unknown (Trivial 1, NeuralNetwork 3, TorchScript 16, ONNX 32, Python 48, "
        "Transformed 4096)");
  if (type == ModuleType::TorchScript && !TorchScriptModule::available())
    throw std::invalid_argument(TorchScriptModule::unavailableReason());
  if (!hasRuntime(type))
    throw std::invalid_argument("this build has no runtime for module type \"" + name + "\"");
  switch (type)
  {
  case ModuleType::Trivial:
    if (!bytes.empty())
      throw std::invalid_argument("Trivial data: a Trivial module takes no data, found " +
                                  std::to_string(bytes.size()) + " bytes");
    return std::make_unique<TrivialModule>();
  case ModuleType::NeuralNetwork:
    return std::make_unique<NeuralNetworkModule>(bytes);
  case ModuleType::TorchScript:
    return std::make_unique<TorchScriptModule>(bytes);
  default:
  {
    if (depth + 1 >= maximumNesting)
      throw std::invalid_argument("Transformed data: modules nest deeper than " +
                                  std::to_string(maximumNesting) + " levels");
    TransformedFormat::Content content = TransformedFormat::read(bytes);
    std::unique_ptr<AIRuntimeModule> inner;
    try
    {
      inner = build(content.innerType, content.innerData, depth + 1);
    }
    catch (const std::invalid_argument& error)
    {
      throw std::invalid_argument("Transformed data: the wrapped module: " + std::string(error.what()));
    }
    return std::make_unique<TransformedModule>(std::move(content.inputs), std::move(content.outputs),
                                               std::move(inner));
  }
  }
}

} // namespace Ombrix
