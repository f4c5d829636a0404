#include "ombrix/ai/TransformationType.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

using Ombrix::TransformationType;

TEST(TransformationType, NamesValuesAndFallbacks)
{
  OmbrixTest::expectNames({{-1, "Inverse"},
                           {1, "Identity"},
                           {2, "Curve"},
                           {3, "PowerLaw"},
                           {4, "SimpleScaling"},
                           {5, "MeanStdDevScaling"}},
                          Ombrix::transformationTypeToString, Ombrix::transformationTypeFromString,
                          static_cast<TransformationType>(0));
  EXPECT_EQ(Ombrix::transformationTypeToString(static_cast<TransformationType>(0)), "");
  EXPECT_EQ(Ombrix::transformationTypeToString(static_cast<TransformationType>(-2)), "");
  EXPECT_EQ(Ombrix::transformationTypeFromString("-1", TransformationType::Curve), TransformationType::Curve);
}
