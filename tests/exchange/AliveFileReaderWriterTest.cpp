#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "support/ExchangeFixtures.h"
#include "support/GroupingLocale.h"
#include "support/TestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

using namespace Ombrix;
using namespace OmbrixTest;
using namespace std::chrono_literals;

namespace
{

// Threads of this process, to tell whether start() made one.
std::size_t threadCount()
{
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

} // namespace

TEST(AliveFileReaderWriter, WriterThreadRewritesTheStampEveryIntervalUntilStopped)
{
  // The writer thread, under a host locale that groups digits, still writes the stamp as plain digits.
  const GroupingLocale grouping;
  TempDir dir;
  const std::string path = dir.file("out.alive");
  // A sanitizer's runtime starts a helper thread along with the first thread a program makes; one made
  // and joined first keeps it out of the counts below.
  std::thread([] {}).join();
  const std::size_t threadsBefore = threadCount();
  {
    AliveFileReaderWriter writer(path);
    writer.stop();
    writer.setInterval(1);
    const std::int64_t before = std::time(nullptr);
    writer.start();
    writer.start();
    EXPECT_TRUE(writer.isRunning());
    EXPECT_EQ(threadCount(), threadsBefore + 1);
    EXPECT_TRUE(AliveFileReaderWriter(path).waitForAlive(5000));
    ASSERT_TRUE(eventually([&] { return stampOf(readFile(path)) >= before; }, 2000ms)) << readFile(path);
    const std::int64_t first = stampOf(readFile(path));
    EXPECT_LE(first, std::time(nullptr));
    // A one-second interval rewrites the file after one or two one-second steps.
    EXPECT_TRUE(eventually([&] { return stampOf(readFile(path)) > first; }, 3500ms));
    const auto stopping = SteadyClock::now();
    writer.stop();
    writer.stop();
    EXPECT_LE(millisecondsSince(stopping), 2000);
    EXPECT_FALSE(writer.isRunning());
    EXPECT_EQ(threadCount(), threadsBefore);

    // A negative interval writes once and then only waits to be stopped (by the destructor).
    std::filesystem::remove(path);
    writer.setInterval(-1);
    writer.start();
    ASSERT_TRUE(eventually([&] { return stampOf(readFile(path)) > 0; }, 2000ms));
    std::filesystem::remove(path);
    // Longer than one sleeping step: a non-negative interval would have written again by now.
    std::this_thread::sleep_for(1300ms);
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(threadCount(), threadsBefore);
}

TEST(AliveFileReaderWriter, StampIsJudgedAgainstGracePeriodAndTheLastVerdictStands)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  const std::string now = std::to_string(std::time(nullptr));
  // {content (none: no file), grace period, alive, retried: read ten times, 200 ms apart, for want of an end
  // marker}
  const std::tuple<std::optional<std::string>, int, bool, bool> cases[] = {
      {std::nullopt, -1, true, false}, // checking is off: no file needed
      {"100\t<END>", 30, false, false},
      {now + "\t<END>", 30, true, false},
      {now + " <END>\n", 30, true, false},
      {aliveStamp(-25), 30, true, false},
      {aliveStamp(-35), 30, false, false},
      {"-5\t<END>", 30, false, false},
      {"9223372036854775807\t<END>", 30, true, false},
      {now, 30, false, true},
      // A file zero-filled by a power loss.
      {now + std::string("\t<END>\0", 7), 30, false, true},
  };
  for (const auto& [content, grace, alive, retried] : cases)
  {
    SCOPED_TRACE(content.value_or("no file"));
    std::filesystem::remove(path);
    if (content)
      writeFile(path, *content);
    AliveFileReaderWriter checker(path);
    EXPECT_FALSE(checker.isAlive());
    checker.setGracePeriod(grace);
    const auto start = SteadyClock::now();
    EXPECT_EQ(checker.checkAlive(), alive);
    EXPECT_EQ(checker.isAlive(), alive);
    EXPECT_EQ(millisecondsSince(start) >= 1800, retried);
  }

  // An accepted stamp spares the read, and a missing file keeps the verdict.
  AliveFileReaderWriter checker(path);
  writeFile(path, "100\t<END>");
  EXPECT_FALSE(checker.checkAlive());
  writeFile(path, aliveStamp());
  EXPECT_TRUE(checker.checkAlive());
  // Within the grace period of the accepted stamp the file is not read again.
  writeFile(path, "100\t<END>");
  EXPECT_TRUE(checker.checkAlive());
  std::filesystem::remove(path);
  EXPECT_TRUE(checker.checkAlive());

  // Shortening the grace period stands in for waiting until the accepted stamp has expired: the checker
  // must now look for the file, finds none in ten tries and keeps what it said before.
  checker.setGracePeriod(0);
  const auto start = SteadyClock::now();
  EXPECT_TRUE(checker.checkAlive());
  EXPECT_GE(millisecondsSince(start), 1800);
  EXPECT_TRUE(checker.isAlive());

  // A stamp that cannot be written in ten tries is given up.
  EXPECT_FALSE(AliveFileReaderWriter(dir.file("missing/in.alive")).writeStamp());
  const std::int64_t before = std::time(nullptr);
  EXPECT_TRUE(checker.writeStamp());
  EXPECT_GE(stampOf(readFile(path)), before);
  EXPECT_LE(stampOf(readFile(path)), std::time(nullptr));
}

TEST(AliveFileReaderWriter, WaitsEndAliveTimedOutOrStopped)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  writeFile(path, "100\t<END>");
  // {verdicts (none: read the stale file), time-out, the call of the stop function that returns true (0:
  // never), end, fewest and most checks, message}
  const std::tuple<std::vector<bool>, int, int, WaitEnd, int, int, std::string> cases[] = {
      // Checks after 0, 100 and 200 ms and a last one once 250 ms have passed, fewer if pauses ran long.
      {{}, 250, 0, WaitEnd::TimedOut, 2, 4, "no heartbeat in " + path + " within 250 ms"},
      // The check after the time-out can still find it alive.
      {{false, true}, 0, 0, WaitEnd::Reached, 2, 2, "heartbeat in " + path + " is alive"},
      {{}, -1, 2, WaitEnd::Stopped, 2, 2, " waiting for a heartbeat in " + path},
      {{false, false, true}, -1, 0, WaitEnd::Reached, 3, 3, "heartbeat in " + path + " is alive"},
  };
  for (const auto& [script, timeout, stopAt, end, fewest, most, message] : cases)
  {
    SCOPED_TRACE(message);
    ScriptedHeartbeat checker(path, script);
    int stops = 0;
    const auto start = SteadyClock::now();
    const WaitResult result =
        checker.waitUntilAlive([&stops, at = stopAt] { return ++stops == at; }, timeout);
    expectEnd(result, end, message);
    EXPECT_GE(checker.checks, fewest);
    EXPECT_LE(checker.checks, most);
    EXPECT_GE(millisecondsSince(start), std::max(timeout, 0));
    if (stopAt != 0)
    {
      EXPECT_EQ(stops, stopAt);
    }
  }
  // The plain forms only tell whether it is alive.
  EXPECT_TRUE(ScriptedHeartbeat(path, {false, true}).waitForAlive(-1));
  EXPECT_FALSE(ScriptedHeartbeat(path, {false}).waitForAlive([] { return true; }, -1));
}
