#include "ombrix/platform/FileLock.h"

#include "support/TestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>

using FileSystem::FileLock;
using OmbrixTest::TempDir;

// Two descriptions of one file conflict under flock() even within one process, so one process can play
// both holders. The lock of a killed process is tested with ExchangeSideLock.
TEST(FileLock, OneHolderAtATimeRecordedInTheFile)
{
  TempDir dir;
  const std::string path = dir.file("out.lock");
  const FileLock::Holder self = FileLock::currentProcess();
  FileLock first;
  ASSERT_TRUE(first.tryLock(path));
  EXPECT_EQ(OmbrixTest::readFile(path), std::to_string(self.pid) + " " + self.host + "\n");

  FileLock second;
  EXPECT_FALSE(second.tryLock(path));
  EXPECT_FALSE(second.isLocked());
  EXPECT_EQ(std::pair(second.holder().pid, second.holder().host), std::pair(self.pid, self.host));

  first.unlock();
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(second.tryLock(path));
  EXPECT_THROW_MSG(first.tryLock(dir.file("missing/out.lock")), std::runtime_error,
                   "Cannot create the lock file " + dir.file("missing/out.lock") +
                       ": No such file or directory");
}
