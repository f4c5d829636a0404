#include "ombrix/ai/AIModuleType.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

using AISystem::ModuleType;

constexpr auto names = makeNameTable<ModuleType>({
    {ModuleType::Trivial, "Trivial"},
    {ModuleType::NeuralNetwork, "NeuralNetwork"},
    {ModuleType::TorchScript, "TorchScript"},
    {ModuleType::ONNX, "ONNX"},
    {ModuleType::Python, "Python"},
    {ModuleType::Transformed, "Transformed"},
});

} // namespace

std::string aiModuleTypeToString(ModuleType type)
{
  return std::string(names.nameOr(type));
}

ModuleType aiModuleTypeFromString(const std::string& text, ModuleType fallback)
{
  return names.valueOr(text, fallback);
}

} // namespace Ombrix
