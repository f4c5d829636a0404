#include "ombrix/platform/DirectoryWatcher.h"

#include "ombrix/platform/AtomicFileWriter.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

using FileSystem::AtomicFileWriter;
using FileSystem::DirectoryWatcher;
using OmbrixTest::TempDir;
using std::chrono::milliseconds;

// Each change is made before the wait, so the notification is queued by then: no test depends on timing.
TEST(DirectoryWatcher, ReportsAReplacedOrFinishedFileOfItsNameOnly)
{
  TempDir dir;
  DirectoryWatcher watcher(dir.path().string());
  ASSERT_TRUE(watcher.isWatching());

  AtomicFileWriter::replace(dir.file("out.state"), "x");
  EXPECT_FALSE(watcher.waitForChange("in.state", milliseconds(20)));
  AtomicFileWriter::replace(dir.file("in.state"), "x");
  EXPECT_TRUE(watcher.waitForChange("in.state", milliseconds(10000)));
  OmbrixTest::writeFile(dir.file("in.state"), "rewritten in place");
  EXPECT_TRUE(watcher.waitForChange("in.state", milliseconds(10000)));

  AtomicFileWriter::replace(dir.file("in.state"), "x");
  watcher.discardPending();
  EXPECT_FALSE(watcher.waitForChange("in.state", milliseconds(20)));

  watcher.setDeaf(true);
  AtomicFileWriter::replace(dir.file("in.state"), "x");
  EXPECT_FALSE(watcher.waitForChange("in.state", milliseconds(20)));
}

TEST(DirectoryWatcher, WithoutADirectoryOnlySleeps)
{
  TempDir dir;
  DirectoryWatcher watcher(dir.file("missing"));
  EXPECT_FALSE(watcher.isWatching());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(watcher.waitForChange("in.state", milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
}
