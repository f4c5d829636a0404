#include "ombrix/exchange/CSVFileMode.h"

#include <gtest/gtest.h>

using Ombrix::CSVFileMode;

TEST(CSVFileMode, TextsRoundTrip)
{
  const std::pair<int, const char*> cases[] = {{-1, "Automatic"}, {1, "Fixed"}, {2, "Sequential"}};
  for (const auto& [value, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(Ombrix::csvFileModeToString(static_cast<CSVFileMode>(value)), text);
    EXPECT_EQ(Ombrix::csvFileModeFromString(text, CSVFileMode::Automatic), static_cast<CSVFileMode>(value))
        << "fallback must not be what the text names";
  }
}

TEST(CSVFileMode, OtherValuesNameTheFixedBehaviour)
{
  for (int value : {0, 3, -2, 100})
  {
    SCOPED_TRACE(value);
    EXPECT_EQ(Ombrix::csvFileModeToString(static_cast<CSVFileMode>(value)), "Fixed");
  }
}

TEST(CSVFileMode, UnknownTextGivesFallback)
{
  for (const char* text : {"", "fixed", "Sequential ", "2", "Auto"})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(Ombrix::csvFileModeFromString(text, CSVFileMode::Sequential), CSVFileMode::Sequential);
    EXPECT_EQ(Ombrix::csvFileModeFromString(text), CSVFileMode::Fixed);
  }
}
