#include "ombrix/ai/AIModuleType.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

using AISystem::ModuleType;

TEST(AIModuleType, NamesAndValues)
{
  OmbrixTest::expectNames({{1, "Trivial"},
                           {3, "NeuralNetwork"},
                           {16, "TorchScript"},
                           {32, "ONNX"},
                           {48, "Python"},
                           {4096, "Transformed"}},
                          Ombrix::aiModuleTypeToString, Ombrix::aiModuleTypeFromString,
                          static_cast<ModuleType>(0));
  for (int value : {0, 2, 17, 4097, -1})
    EXPECT_EQ(Ombrix::aiModuleTypeToString(static_cast<ModuleType>(value)), "") << value;
}
