#include "ombrix/ai/TransformationType.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::TransformationType;

TEST(TransformationType, NamesValuesAndFallbacks)
{
  const std::tuple<TransformationType, int, const char*> cases[] = {
      {TransformationType::Inverse, -1, "Inverse"},
      {TransformationType::Identity, 1, "Identity"},
      {TransformationType::Curve, 2, "Curve"},
      {TransformationType::PowerLaw, 3, "PowerLaw"},
      {TransformationType::SimpleScaling, 4, "SimpleScaling"},
      {TransformationType::MeanStdDevScaling, 5, "MeanStdDevScaling"},
  };
  for (const auto& [type, value, name] : cases)
  {
    SCOPED_TRACE(name);
    EXPECT_EQ(static_cast<int>(type), value);
    EXPECT_EQ(Ombrix::transformationTypeToString(type), name);
    EXPECT_EQ(Ombrix::transformationTypeFromString(name, TransformationType::Identity), type);
  }
  EXPECT_EQ(Ombrix::transformationTypeToString(static_cast<TransformationType>(0)), "");
  EXPECT_EQ(Ombrix::transformationTypeToString(static_cast<TransformationType>(-2)), "");
  for (const char* text : {"inverse", "Inverse\n", "", "-1"})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(Ombrix::transformationTypeFromString(text, TransformationType::Curve),
              TransformationType::Curve);
  }
}

} // namespace
