#include "ombrix/log/LogManager.h"

#include "ombrix/log/LogSection.h"
#include "ombrix/model/ValueAttribute.h"

#include "log/LogTestSupport.h"
#include "support/GroupingLocale.h"

#include <cstdarg>
#include <gtest/gtest.h>
#include <locale>
#include <regex>
#include <set>
#include <system_error>
#include <thread>

using namespace Ombrix;
using namespace std::chrono_literals;
using OmbrixTest::utc;
using OmbrixTest::withoutStamp;

namespace
{

class LogManagerTest : public OmbrixTest::LogFileFixture
{
};

LogManager& logManager()
{
  return LogManager::instance();
}

void plainV(LogManager::TimePoint when, LogLevel level, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  logManager().vaddToLog(when, level, format, args);
  va_end(args);
}

void sectionV(LogManager::TimePoint when, LogLevel level, const LogSection& section, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  logManager().vaddToLog(when, level, section, format, args);
  va_end(args);
}

void plainNowV(LogLevel level, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  logManager().vaddToLog(level, format, args);
  va_end(args);
}

void sectionNowV(LogLevel level, const LogSection& section, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  logManager().vaddToLog(level, section, format, args);
  va_end(args);
}

} // namespace

TEST(LogLevel, Names)
{
  const std::pair<int, const char*> cases[] = {{0, "None"},    {1, "Error"},         {2, "Warning"},
                                               {3, "Message"}, {4, "Informational"}, {5, "None"},
                                               {-1, "None"}};
  for (const auto& [value, name] : cases)
  {
    SCOPED_TRACE(value);
    EXPECT_EQ(toString(static_cast<LogLevel>(value)), name);
  }
}

TEST_F(LogManagerTest, InactiveBeforeInitializeAndAfterTerminate)
{
  EXPECT_FALSE(logManager().isActive());
  logManager().addToLog(LogLevel::None, "before");
  logManager().terminate(); // inactive: writes nothing, must not fail

  logManager().initialize(logPath, LogLevel::Informational);
  EXPECT_TRUE(logManager().isActive());
  logManager().terminate();
  EXPECT_FALSE(logManager().isActive());
  EXPECT_EQ(logManager().getLevel(), LogLevel::Informational);
  logManager().addToLog(LogLevel::None, "after");
  logManager().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), 2u);
  EXPECT_EQ(withoutStamp(written[0]), "\t\tLogger Logging Started");
  EXPECT_EQ(withoutStamp(written[1]), "\t\tLogger Logging Finished");
}

TEST_F(LogManagerTest, EmptyPathStoresLevelButStaysOff)
{
  logManager().initialize("", LogLevel::Informational);
  EXPECT_FALSE(logManager().isActive());
  EXPECT_EQ(logManager().getLevel(), LogLevel::Informational);
  logManager().addToLog(LogLevel::Error, "dropped");
  EXPECT_FALSE(std::filesystem::exists(logPath));
}

TEST_F(LogManagerTest, WritesLevelsUpToTheManagersLevel)
{
  const LogLevel levels[] = {LogLevel::None, LogLevel::Error, LogLevel::Warning, LogLevel::Message,
                             LogLevel::Informational};
  for (LogLevel managerLevel : levels)
  {
    SCOPED_TRACE(toString(managerLevel));
    logManager().initialize(logPath, managerLevel);
    std::vector<std::string> expected;
    for (LogLevel messageLevel : levels)
    {
      logManager().addToLog(messageLevel, "%s", toString(messageLevel).c_str());
      if (static_cast<int>(messageLevel) <= static_cast<int>(managerLevel))
        expected.push_back(toString(messageLevel));
    }
    // Unknown levels compare by number and are named "None".
    logManager().addToLog(static_cast<LogLevel>(-1), "below None");
    logManager().addToLog(static_cast<LogLevel>(5), "above Informational");
    logManager().terminate();

    const auto written = lines();
    ASSERT_EQ(written.size(), expected.size() + 3);
    for (std::size_t i = 0; i < expected.size(); ++i)
      EXPECT_EQ(withoutStamp(written[i + 1]), "\t" + expected[i] + "\t\t" + expected[i]);
    EXPECT_EQ(withoutStamp(written[expected.size() + 1]), "\tNone\t\tbelow None");
  }
}

TEST_F(LogManagerTest, SecondInitializeTruncatesTheFile)
{
  logManager().initialize(logPath, LogLevel::Error);
  logManager().addToLog(LogLevel::Error, "first run");
  logManager().initialize(logPath, LogLevel::Warning);
  logManager().addToLog(LogLevel::Warning, "second run");
  logManager().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(withoutStamp(written[0]), "\t\tLogger Logging Started");
  EXPECT_EQ(withoutStamp(written[1]), "\tWarning\t\tsecond run");
  EXPECT_EQ(withoutStamp(written[2]), "\t\tLogger Logging Finished");
}

TEST_F(LogManagerTest, WholeLinesOfEveryForm)
{
  const auto when = utc(2024, 3, 5, 14, 7, 9, 250ms);
  const LogSection section("CSV File : out.csv");
  logManager().initialize(logPath, LogLevel::Informational);
  logManager().addToLog(when, LogLevel::Warning, "value %d of %s", 42, "Group.Value");
  plainV(when, LogLevel::Message, "plain %s", "list");
  sectionV(when, LogLevel::Error, section, "row %d", 7);
  logManager().addToLog(when, LogLevel::Error, "%s", "100% literal %d");
  logManager().terminate();

  const auto written = lines();
  const std::string expected[] = {
      "[2024-03-05T14:07:09.250Z]:\tWarning\t\tvalue 42 of Group.Value",
      "[2024-03-05T14:07:09.250Z]:\tMessage\t\tplain list",
      "[2024-03-05T14:07:09.250Z]:\tError\tCSV File : out.csv\t row 7",
      "[2024-03-05T14:07:09.250Z]:\tError\t\t100% literal %d",
  };
  ASSERT_EQ(written.size(), std::size(expected) + 2);
  for (std::size_t i = 0; i < std::size(expected); ++i)
  {
    SCOPED_TRACE(i);
    EXPECT_EQ(written[i + 1], expected[i]);
  }
}

TEST_F(LogManagerTest, FormsWithoutTimeUseTheCurrentTime)
{
  const LogSection section("Solver");
  const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  logManager().initialize(logPath, LogLevel::Informational);
  logManager().addToLog(LogLevel::Error, "a");
  plainNowV(LogLevel::Error, "b%d", 2);
  sectionNowV(LogLevel::Error, section, "c%d", 3);
  logManager().terminate();
  const auto after = std::chrono::system_clock::now();

  const auto written = lines();
  ASSERT_EQ(written.size(), 5u);
  EXPECT_EQ(withoutStamp(written[1]), "\tError\t\ta");
  EXPECT_EQ(withoutStamp(written[2]), "\tError\t\tb2");
  EXPECT_EQ(withoutStamp(written[3]), "\tError\tSolver\t c3");
  // Whole seconds of every stamp lie between the two readings of the clock.
  const std::string first = LogManager::formatTimeStamp(before).substr(0, 19);
  const std::string last = LogManager::formatTimeStamp(after).substr(0, 19);
  for (const auto& line : written)
  {
    SCOPED_TRACE(line);
    const std::string seconds = line.substr(1, 19);
    EXPECT_LE(first, seconds);
    EXPECT_LE(seconds, last);
  }
}

TEST_F(LogManagerTest, LongMessagesAreWrittenWhole)
{
  const std::string text(20000, 'x');
  logManager().initialize(logPath, LogLevel::Error);
  logManager().addToLog(LogLevel::Error, "%s|", text.c_str());
  logManager().terminate();
  const auto written = lines();
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(withoutStamp(written[1]), "\tError\t\t" + text + "|");
}

TEST_F(LogManagerTest, TimeStamps)
{
  using std::chrono::microseconds;
  using std::chrono::nanoseconds;
  const struct
  {
    LogManager::TimePoint when;
    const char* text;
  } cases[] = {
      {utc(2024, 3, 5, 14, 7, 9, 250ms), "2024-03-05T14:07:09.250Z"},
      {utc(2024, 3, 5, 14, 7, 9), "2024-03-05T14:07:09.000Z"},
      {utc(2024, 3, 5, 14, 7, 9, 1ms), "2024-03-05T14:07:09.001Z"},
      // Anything above a whole millisecond is rounded up, one 100-ns tick is enough.
      {utc(2024, 3, 5, 14, 7, 9, 100ns), "2024-03-05T14:07:09.001Z"},
      {utc(2024, 3, 5, 14, 7, 9, 1ms + 100ns), "2024-03-05T14:07:09.002Z"},
      {utc(2024, 3, 5, 14, 7, 9, 999ms), "2024-03-05T14:07:09.999Z"},
      // Rounding up is not carried into the seconds.
      {utc(2024, 3, 5, 14, 7, 9, 999ms + 100ns), "2024-03-05T14:07:09.1000Z"},
      {utc(2024, 3, 5, 14, 7, 9, microseconds{999'900}), "2024-03-05T14:07:09.1000Z"},
      // Below one 100-ns tick there is nothing to round.
      {utc(2024, 3, 5, 14, 7, 9, 99ns), "2024-03-05T14:07:09.000Z"},
      {utc(2024, 2, 29, 23, 59, 59, 500ms), "2024-02-29T23:59:59.500Z"},
      {utc(1970, 1, 1, 0, 0, 0), "1970-01-01T00:00:00.000Z"},
      {utc(1969, 12, 31, 23, 59, 59), "0000-00-00T00:00:00.000Z"},
      // Less than one tick before 1970 is cut towards zero, onto 1970 itself.
      {utc(1970, 1, 1, 0, 0, 0) - 1ns, "1970-01-01T00:00:00.000Z"},
      {utc(1969, 12, 31, 23, 59, 59, 999'999'900ns), "0000-00-00T00:00:00.000Z"},
      {utc(1900, 6, 1, 12, 0, 0, 250ms), "0000-00-00T00:00:00.000Z"},
      {utc(2099, 12, 31, 23, 59, 59, 999ms), "2099-12-31T23:59:59.999Z"},
  };
  for (const auto& [when, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(LogManager::formatTimeStamp(when), text);
  }
}

TEST_F(LogManagerTest, TimeStampsIgnoreTheGlobalLocale)
{
  const OmbrixTest::GroupingLocale grouping;
  EXPECT_EQ(LogManager::formatTimeStamp(utc(2024, 3, 5, 14, 7, 9, 999'900us)), "2024-03-05T14:07:09.1000Z");
}

TEST_F(LogManagerTest, NumbersIgnoreANamedGlobalLocale)
{
  logManager().initialize(logPath, LogLevel::Informational);
  Model::ValueAttribute<double> value("Value", KorvanSDK::AccessType::ReadWrite, nullptr);
  value.set(2.5);
  {
    const OmbrixTest::GroupingLocale grouping;
    if (!grouping.named())
      GTEST_SKIP() << "no named locale that groups digits is installed (.ci/run makes de_DE.UTF-8)";
    logManager().addToLog(LogLevel::Message, "%.1f %g", 2.5, 0.25);
    logManager().recordAttributeSetValue(&value, KorvanSDK::Chronology::Current);
  }
  EXPECT_EQ(withoutStamp(lines().at(1)), "\tMessage\t\t2.5 0.25");
  EXPECT_EQ(withoutStamp(lines().at(2)),
            "\tInformational\t\tAttribute '0-0:Value:Current ,[3]' set to '2.500000'");
}

TEST_F(LogManagerTest, UnknownChronologyFailsAtEveryLevel)
{
  Model::ValueAttribute<int> value("Value", KorvanSDK::AccessType::ReadWrite, nullptr);
  for (const LogLevel level : {LogLevel::None, LogLevel::Error, LogLevel::Informational})
  {
    SCOPED_TRACE(toString(level));
    logManager().initialize(logPath, level);
    EXPECT_THROW_MSG(logManager().recordAttributeSetValue(&value, static_cast<KorvanSDK::Chronology>(9)),
                     std::logic_error, "Not implemented");
  }
}

TEST_F(LogManagerTest, ConcurrentLinesNeverInterleave)
{
  constexpr int threadCount = 4;
  constexpr int linesPerThread = 200;
  // Longer than the C library's buffer, so that each line takes several writes to the file.
  const std::string padding(10000, '.');
  logManager().initialize(logPath, LogLevel::Informational);
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t)
  {
    threads.emplace_back(
        [t, &padding]
        {
          const LogSection section("thread " + std::to_string(t));
          for (int i = 0; i < linesPerThread; ++i)
          {
            if (i % 2 == 0)
              logManager().addToLog(LogLevel::Message, "%d %d %s", t, i, padding.c_str());
            else
              section.addToLog(LogLevel::Message, "%d %d %s", t, i, padding.c_str());
          }
        });
  }
  for (auto& thread : threads)
    thread.join();
  logManager().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), threadCount * linesPerThread + 2u);
  const std::regex shape(R"(^\tMessage\t(\t|thread (\d)\t )(\d) (\d+) $)");
  std::vector<int> next(threadCount, 0);
  for (std::size_t i = 1; i + 1 < written.size(); ++i)
  {
    const std::string body = withoutStamp(written[i]);
    ASSERT_TRUE(body.ends_with(padding)) << body.substr(0, 40);
    const std::string head = body.substr(0, body.size() - padding.size());
    std::smatch match;
    ASSERT_TRUE(std::regex_match(head, match, shape)) << head;
    const int t = std::stoi(match[3].str());
    const int n = std::stoi(match[4].str());
    ASSERT_LT(t, threadCount);
    EXPECT_EQ(n, next[t]) << "lines of one thread keep their order";
    next[t] = n + 1;
    EXPECT_EQ(match[1].str() == "\t", n % 2 == 0);
    if (n % 2 == 1)
    {
      EXPECT_EQ(match[2].str(), std::to_string(t));
    }
  }
  EXPECT_EQ(next, std::vector<int>(threadCount, linesPerThread));
}

TEST_F(LogManagerTest, UnopenableFileDropsLinesAndRecovers)
{
  const std::string badPath = dir.path().string(); // a directory cannot be opened as a file
  const std::string notice = "OmbrixModel: cannot open the log file \"" + badPath + "\" (" +
                             std::generic_category().message(EISDIR) +
                             "); log lines are dropped until the log is initialised with a path that can be "
                             "written.\n";

  ::testing::internal::CaptureStderr();
  logManager().initialize(badPath, LogLevel::Informational);
  EXPECT_TRUE(logManager().isActive());
  for (int i = 0; i < 3; ++i)
    logManager().addToLog(LogLevel::Error, "dropped %d", i);
  LogSection("Solver").addToLog(LogLevel::Error, "dropped too");
  logManager().terminate();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), notice);
  EXPECT_FALSE(logManager().isActive());

  // A fresh initialize with the same bad path reports it once more.
  ::testing::internal::CaptureStderr();
  logManager().initialize(badPath, LogLevel::Informational);
  logManager().addToLog(LogLevel::Error, "dropped");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), notice);

  logManager().initialize(logPath, LogLevel::Informational);
  logManager().addToLog(LogLevel::Error, "kept");
  logManager().terminate();
  const auto written = lines();
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(withoutStamp(written[1]), "\tError\t\tkept");
}

TEST_F(LogManagerTest, FileRemovedWhileActiveIsCreatedAgain)
{
  logManager().initialize(logPath, LogLevel::Error);
  std::filesystem::remove(logPath);
  logManager().addToLog(LogLevel::Error, "after removal");
  const auto written = lines();
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(withoutStamp(written[0]), "\tError\t\tafter removal");
}
