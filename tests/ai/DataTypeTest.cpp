#include "ombrix/ai/DataType.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

using Ombrix::DataType;

TEST(DataType, NamesValuesAndFallbacks)
{
  OmbrixTest::expectNames({{1, "Int"}, {2, "Bool"}, {3, "String"}, {4, "Float"}, {5, "Double"}},
                          Ombrix::dataTypeToString, Ombrix::datatTypeFromString, static_cast<DataType>(0));
  EXPECT_EQ(Ombrix::dataTypeToString(static_cast<DataType>(0)), "");
  EXPECT_EQ(Ombrix::dataTypeToString(static_cast<DataType>(6)), "");
  EXPECT_EQ(Ombrix::datatTypeFromString("Int32", DataType::Bool), DataType::Bool);
}
