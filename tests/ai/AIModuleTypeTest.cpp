#include "ombrix/ai/AIModuleType.h"

#include <gtest/gtest.h>

namespace
{

using AISystem::ModuleType;

TEST(AIModuleType, NamesAndValues)
{
  const std::tuple<ModuleType, int, const char*> cases[] = {
      {ModuleType::Trivial, 1, "Trivial"},          {ModuleType::NeuralNetwork, 3, "NeuralNetwork"},
      {ModuleType::TorchScript, 16, "TorchScript"}, {ModuleType::ONNX, 32, "ONNX"},
      {ModuleType::Python, 48, "Python"},           {ModuleType::Transformed, 4096, "Transformed"},
  };
  for (const auto& [type, value, name] : cases)
  {
    SCOPED_TRACE(name);
    EXPECT_EQ(static_cast<int>(type), value);
    EXPECT_EQ(Ombrix::aiModuleTypeToString(type), name);
    EXPECT_EQ(Ombrix::aiModuleTypeFromString(name, ModuleType::Trivial), type);
  }
}

TEST(AIModuleType, UnknownValuesPrintEmptyAndUnknownTextsFallBack)
{
  for (int value : {0, 2, 17, 4097, -1})
  {
    SCOPED_TRACE(value);
    EXPECT_EQ(Ombrix::aiModuleTypeToString(static_cast<ModuleType>(value)), "");
  }
  for (const char* text : {"python", "PYTHON", " Python", "Python ", "", "Onnx"})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(Ombrix::aiModuleTypeFromString(text, ModuleType::ONNX), ModuleType::ONNX);
    EXPECT_EQ(Ombrix::aiModuleTypeFromString(text, ModuleType::Trivial), ModuleType::Trivial);
  }
}

} // namespace
