#include "ombrix/ai/DataType.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::DataType;

TEST(DataType, NamesValuesAndFallbacks)
{
  const std::tuple<DataType, int, const char*> cases[] = {
      {DataType::Int, 1, "Int"},     {DataType::Bool, 2, "Bool"},     {DataType::String, 3, "String"},
      {DataType::Float, 4, "Float"}, {DataType::Double, 5, "Double"},
  };
  for (const auto& [type, value, name] : cases)
  {
    SCOPED_TRACE(name);
    EXPECT_EQ(static_cast<int>(type), value);
    EXPECT_EQ(Ombrix::dataTypeToString(type), name);
    EXPECT_EQ(Ombrix::datatTypeFromString(name, DataType::Int), type);
  }
  EXPECT_EQ(Ombrix::dataTypeToString(static_cast<DataType>(0)), "");
  EXPECT_EQ(Ombrix::dataTypeToString(static_cast<DataType>(6)), "");
  for (const char* text : {"double", "Double ", "", "Int32"})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(Ombrix::datatTypeFromString(text, DataType::Bool), DataType::Bool);
  }
}

} // namespace
