#include "ombrix/exchange/CSVFileMode.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

using Ombrix::CSVFileMode;

TEST(CSVFileMode, Texts)
{
  OmbrixTest::expectNames<CSVFileMode>({{-1, "Automatic"}, {1, "Fixed"}, {2, "Sequential"}},
                                       Ombrix::csvFileModeToString, Ombrix::csvFileModeFromString,
                                       static_cast<CSVFileMode>(0));
  // Every other value names the files the fixed way; an unknown text falls back, to Fixed by default.
  for (int value : {0, 3, -2, 100})
    EXPECT_EQ(Ombrix::csvFileModeToString(static_cast<CSVFileMode>(value)), "Fixed") << value;
  EXPECT_EQ(Ombrix::csvFileModeFromString("2", CSVFileMode::Automatic), CSVFileMode::Automatic);
  EXPECT_EQ(Ombrix::csvFileModeFromString("Sequential "), CSVFileMode::Fixed);
}
