// Full paths of the exchange files for hosts.
#include "ombrix/exchange/ExchangeFiles.h"

#include <gtest/gtest.h>

TEST(ExchangeFiles, FullPathsFollowTheFileMode)
{
  Ombrix::ExchangeFiles fixed("/x/dir/");
  EXPECT_EQ(fixed.getDefFile(), "/x/dir/def.csv");
  EXPECT_EQ(fixed.getOutFile(), "/x/dir/out.csv");
  EXPECT_EQ(fixed.getInStateFile(), "/x/dir/in.state");
  EXPECT_EQ(fixed.getOutAliveFile(), "/x/dir/out.alive");
  Ombrix::ExchangeFiles numbered("/x/dir", Ombrix::CSVFileMode::Sequential);
  numbered.increaseSequentialFileCounter(3);
  EXPECT_EQ(numbered.getInFile(), "/x/dir/in3.csv");
  EXPECT_EQ(numbered.getOutFile(), "/x/dir/out3.csv");
}
