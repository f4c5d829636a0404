#include "ombrix/ai/AIModuleType.h"

#include "ombrix/ai/AIVocabulary.h"

namespace Ombrix
{
namespace
{

using AISystem::ModuleType;

const std::pair<ModuleType, const char*> names[] = {
    {ModuleType::Trivial, "Trivial"},         {ModuleType::NeuralNetwork, "NeuralNetwork"},
    {ModuleType::TorchScript, "TorchScript"}, {ModuleType::ONNX, "ONNX"},
    {ModuleType::Python, "Python"},           {ModuleType::Transformed, "Transformed"},
};

} // namespace

std::string aiModuleTypeToString(ModuleType type)
{
  return Detail::nameOf(names, type);
}

ModuleType aiModuleTypeFromString(const std::string& text, ModuleType fallback)
{
  return Detail::valueOf(names, text, fallback);
}

} // namespace Ombrix
