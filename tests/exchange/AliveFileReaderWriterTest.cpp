#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "support/GroupingLocale.h"
#include "support/TestSupport.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using Ombrix::AliveFileReaderWriter;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;
using OmbrixTest::writeFile;

namespace
{

using Clock = std::chrono::steady_clock;

std::int64_t millisecondsSince(Clock::time_point start)
{
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

std::int64_t now()
{
  return static_cast<std::int64_t>(std::time(nullptr));
}

std::string aliveContent(std::int64_t stamp)
{
  return std::to_string(stamp) + "\t<END>";
}

// Threads of this process, to tell whether start() made one.
std::size_t threadCount()
{
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

// Polls `condition` every 10 ms for at most `limit`; true when it held.
template <typename Condition> bool eventually(Condition condition, std::chrono::milliseconds limit)
{
  const auto deadline = Clock::now() + limit;
  while (!condition())
  {
    if (Clock::now() > deadline)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// The stamp of a complete alive file, or -1 when the file is missing or not "<digits>\t<END>".
std::int64_t completeStamp(const std::string& path)
{
  const std::string content = readFile(path);
  const std::string marker = "\t<END>";
  if (content.size() <= marker.size() ||
      content.compare(content.size() - marker.size(), marker.size(), marker))
    return -1;
  const std::string digits = content.substr(0, content.size() - marker.size());
  if (digits.find_first_not_of("0123456789") != std::string::npos)
    return -1;
  return std::stoll(digits);
}

// Counts the checks of a wait loop; with a script, replays verdicts instead of reading a file.
class CountingChecker : public AliveFileReaderWriter
{
public:
  using AliveFileReaderWriter::AliveFileReaderWriter;
  explicit CountingChecker(std::vector<bool> script) : m_script(std::move(script)) {}

  bool checkAlive() const override
  {
    ++checks;
    if (m_script.empty())
      return AliveFileReaderWriter::checkAlive();
    const bool alive = m_script[std::min<std::size_t>(checks, m_script.size()) - 1];
    setAlive(alive);
    return alive;
  }

  mutable int checks = 0;

private:
  std::vector<bool> m_script;
};

} // namespace

TEST(AliveFileReaderWriter, WriterRewritesStampAndStopsWithinASecond)
{
  // The writer thread, under a host locale that groups digits, still writes the stamp as plain digits.
  const OmbrixTest::GroupingLocale grouping;
  TempDir dir;
  const std::string path = dir.file("out.alive");
  AliveFileReaderWriter writer(path);
  writer.setInterval(1);
  const std::int64_t before = now();
  writer.start();
  EXPECT_TRUE(writer.isRunning());

  AliveFileReaderWriter checker(path);
  EXPECT_TRUE(checker.waitForAlive(5000));
  ASSERT_TRUE(eventually([&] { return completeStamp(path) >= before; }, std::chrono::milliseconds(2000)))
      << readFile(path);
  const std::int64_t first = completeStamp(path);
  EXPECT_LE(first, now());
  EXPECT_EQ(readFile(path), aliveContent(first));

  // A one-second interval rewrites the file after one or two one-second steps.
  EXPECT_TRUE(eventually([&] { return completeStamp(path) > first; }, std::chrono::milliseconds(3500)));

  const auto stopping = Clock::now();
  writer.stop();
  EXPECT_LE(millisecondsSince(stopping), 2000);
  EXPECT_FALSE(writer.isRunning());
}

TEST(AliveFileReaderWriter, StartTwiceRunsOneThreadAndNegativeIntervalWritesOnce)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  // A sanitizer's runtime starts a helper thread along with the first thread a program makes; one made
  // and joined first keeps it out of the counts below.
  std::thread([] {}).join();
  const std::size_t threadsBefore = threadCount();
  {
    AliveFileReaderWriter writer(path);
    writer.stop();
    EXPECT_FALSE(writer.isRunning());

    writer.setInterval(-1);
    writer.start();
    writer.start();
    EXPECT_EQ(threadCount(), threadsBefore + 1);
    ASSERT_TRUE(eventually([&] { return completeStamp(path) > 0; }, std::chrono::milliseconds(2000)));

    // Longer than one sleeping step: a non-negative interval would have written again by now.
    std::filesystem::remove(path);
    std::this_thread::sleep_for(std::chrono::milliseconds(1300));
    EXPECT_FALSE(std::filesystem::exists(path));

    writer.stop();
    writer.stop();
    EXPECT_FALSE(writer.isRunning());
    EXPECT_EQ(threadCount(), threadsBefore);

    writer.start();
    EXPECT_TRUE(writer.isRunning());
    EXPECT_TRUE(eventually([&] { return completeStamp(path) > 0; }, std::chrono::milliseconds(2000)));
    // The destructor stops the thread.
  }
  EXPECT_EQ(threadCount(), threadsBefore);
}

TEST(AliveFileReaderWriter, NegativeGracePeriodNeedsNoFile)
{
  TempDir dir;
  AliveFileReaderWriter checker(dir.file("missing.alive"));
  EXPECT_FALSE(checker.isAlive());
  checker.setGracePeriod(-1);
  EXPECT_TRUE(checker.checkAlive());
  EXPECT_TRUE(checker.isAlive());
  EXPECT_TRUE(checker.waitForAlive(0));
}

TEST(AliveFileReaderWriter, StampIsJudgedAgainstGracePeriod)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  const std::int64_t current = now();
  const std::pair<std::string, bool> cases[] = {
      {"100\t<END>", false},
      {aliveContent(current), true},
      {std::to_string(current) + " <END>\n", true},
      {aliveContent(current - 25), true},
      {aliveContent(current - 35), false},
      {"-5\t<END>", false},
      {"9223372036854775807\t<END>", true},
  };
  for (const auto& [content, alive] : cases)
  {
    SCOPED_TRACE(content);
    writeFile(path, content);
    AliveFileReaderWriter checker(path);
    checker.setGracePeriod(30);
    EXPECT_EQ(checker.checkAlive(), alive);
    EXPECT_EQ(checker.isAlive(), alive);
  }
}

TEST(AliveFileReaderWriter, AcceptedStampSparesTheRead)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  AliveFileReaderWriter checker(path);
  writeFile(path, "100\t<END>");
  EXPECT_FALSE(checker.checkAlive());
  writeFile(path, aliveContent(now()));
  EXPECT_TRUE(checker.checkAlive());
  // Within the grace period of the accepted stamp the file is not read again.
  writeFile(path, "100\t<END>");
  EXPECT_TRUE(checker.checkAlive());
}

TEST(AliveFileReaderWriter, StampWithoutEndMarkerIsNotAliveAfterTenTries)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  writeFile(path, std::to_string(now()));
  AliveFileReaderWriter checker(path);
  const auto start = Clock::now();
  EXPECT_FALSE(checker.checkAlive());
  EXPECT_GE(millisecondsSince(start), 1800);
  EXPECT_FALSE(checker.isAlive());
}

TEST(AliveFileReaderWriter, MissingFileKeepsLastVerdict)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  writeFile(path, aliveContent(now()));
  AliveFileReaderWriter checker(path);
  ASSERT_TRUE(checker.checkAlive());
  std::filesystem::remove(path);
  EXPECT_TRUE(checker.checkAlive());

  // Shortening the grace period stands in for waiting until the accepted stamp has expired: the checker
  // must now look for the file, finds none in ten tries and keeps what it said before.
  checker.setGracePeriod(0);
  const auto start = Clock::now();
  EXPECT_TRUE(checker.checkAlive());
  EXPECT_GE(millisecondsSince(start), 1800);
  EXPECT_TRUE(checker.isAlive());
}

TEST(AliveFileReaderWriter, WaitEndsAfterTimeoutWithOneMoreCheck)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  writeFile(path, "100\t<END>");
  CountingChecker checker(path);
  const auto start = Clock::now();
  EXPECT_FALSE(checker.waitForAlive(250));
  EXPECT_GE(millisecondsSince(start), 250);
  // Checks after 0, 100 and 200 ms and a last one once 250 ms have passed, fewer if pauses ran long.
  EXPECT_GE(checker.checks, 2);
  EXPECT_LE(checker.checks, 4);

  CountingChecker scripted(std::vector<bool>{false, true});
  EXPECT_TRUE(scripted.waitForAlive(0));
  EXPECT_EQ(scripted.checks, 2);
}

TEST(AliveFileReaderWriter, StopFunctionEndsUnlimitedWait)
{
  TempDir dir;
  const std::string path = dir.file("in.alive");
  writeFile(path, "100\t<END>");
  CountingChecker checker(path);
  int stops = 0;
  EXPECT_FALSE(checker.waitForAlive([&] { return ++stops == 2; }, -1));
  EXPECT_EQ(stops, 2);
  EXPECT_EQ(checker.checks, 2);

  CountingChecker scripted(std::vector<bool>{false, false, true});
  EXPECT_TRUE(scripted.waitForAlive(-1));
  EXPECT_EQ(scripted.checks, 3);
}
