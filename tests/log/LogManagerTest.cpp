#include "ombrix/log/LogManager.h"

#include "ombrix/log/LogSection.h"
#include "ombrix/model/ValueAttribute.h"

#include "log/LogTestSupport.h"
#include "support/GroupingLocale.h"

#include <gtest/gtest.h>
#include <system_error>
#include <thread>

using namespace Ombrix;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using OmbrixTest::utc;
using OmbrixTest::withArgs;
using OmbrixTest::withoutStamp;

namespace
{

class LogManagerTest : public OmbrixTest::LogFileFixture
{
protected:
  LogManager& logManager = LogManager::instance();
};

} // namespace

TEST_F(LogManagerTest, WritesLevelsUpToTheManagersLevel)
{
  for (int managerLevel = 0; managerLevel <= 4; ++managerLevel)
  {
    logManager.initialize(logPath, static_cast<LogLevel>(managerLevel));
    Lines expected = {"\t\tLogger Logging Started"};
    // Every level's name; unknown levels compare by number and are named "None".
    const std::pair<int, const char*> levels[] = {{-1, "None"},   {0, "None"},    {1, "Error"},
                                                  {2, "Warning"}, {3, "Message"}, {4, "Informational"},
                                                  {5, "None"}};
    for (const auto& [level, name] : levels)
    {
      logManager.addToLog(static_cast<LogLevel>(level), "level %d", level);
      if (level <= managerLevel)
        expected.push_back("\t" + std::string(name) + "\t\tlevel " + std::to_string(level));
    }
    logManager.terminate();
    expected.push_back("\t\tLogger Logging Finished");
    EXPECT_EQ(bodies(), expected) << managerLevel;
  }
}

TEST_F(LogManagerTest, WholeLinesOfEveryForm)
{
  const auto when = utc(2024, 3, 5, 14, 7, 9, 250ms);
  const std::string stamp = "[2024-03-05T14:07:09.250Z]:";
  const std::string text(20000, 'x');
  const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  logManager.initialize(logPath, LogLevel::Informational);
  logManager.addToLog(when, LogLevel::Warning, "value %d of %s", 42, "Group.Value");
  withArgs([&](const char* f, va_list a) { logManager.vaddToLog(when, LogLevel::Message, f, a); }, "plain %s",
           "list");
  logManager.addToLog(when, LogLevel::Error, "%s", "100% literal %d");
  // Without a time: the current one. A long message is written whole.
  logManager.addToLog(LogLevel::Error, "%s|", text.c_str());
  withArgs([&](const char* f, va_list a) { logManager.vaddToLog(LogLevel::Error, f, a); }, "b%d", 2);
  logManager.terminate();
  const auto after = std::chrono::system_clock::now();

  const Lines stamped = {stamp + "\tWarning\t\tvalue 42 of Group.Value", stamp + "\tMessage\t\tplain list",
                         stamp + "\tError\t\t100% literal %d"};
  const Lines current = {"\tError\t\t" + text + "|", "\tError\t\tb2"};
  const Lines written = lines();
  ASSERT_EQ(written.size(), stamped.size() + current.size() + 2);
  EXPECT_EQ(Lines(written.begin() + 1, written.begin() + 4), stamped);
  const Lines body = bodies();
  EXPECT_EQ(Lines(body.begin() + 4, body.end() - 1), current);
  // Whole seconds of every current stamp lie between the two readings of the clock.
  const std::string first = LogManager::formatTimeStamp(before).substr(0, 19);
  const std::string last = LogManager::formatTimeStamp(after).substr(0, 19);
  for (const std::size_t i : {0, 4, 5, 6})
  {
    EXPECT_LE(first, written[i].substr(1, 19)) << i;
    EXPECT_LE(written[i].substr(1, 19), last) << i;
  }
}

TEST_F(LogManagerTest, TimeStampsIgnoreTheGlobalLocale)
{
  using std::chrono::microseconds;
  using std::chrono::nanoseconds;
  const std::pair<LogManager::TimePoint, const char*> cases[] = {
      {utc(2024, 3, 5, 14, 7, 9), "2024-03-05T14:07:09.000Z"},
      {utc(2024, 3, 5, 14, 7, 9, 1ms), "2024-03-05T14:07:09.001Z"},
      // Anything above a whole millisecond is rounded up, one 100-ns tick is enough.
      {utc(2024, 3, 5, 14, 7, 9, 100ns), "2024-03-05T14:07:09.001Z"},
      {utc(2024, 3, 5, 14, 7, 9, 1ms + 100ns), "2024-03-05T14:07:09.002Z"},
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
      {utc(2099, 12, 31, 23, 59, 59, 999ms), "2099-12-31T23:59:59.999Z"},
  };
  const OmbrixTest::GroupingLocale grouping;
  for (const auto& [when, text] : cases)
    EXPECT_EQ(LogManager::formatTimeStamp(when), text);
}

TEST_F(LogManagerTest, RecordedValuesIgnoreANamedGlobalLocaleAndUnknownChronologiesFail)
{
  Model::ValueAttribute<double> value("Value", KorvanSDK::AccessType::ReadWrite, nullptr);
  for (const LogLevel level : {LogLevel::None, LogLevel::Error, LogLevel::Informational})
  {
    logManager.initialize(logPath, level);
    EXPECT_THROW_MSG(logManager.recordAttributeSetValue(&value, static_cast<KorvanSDK::Chronology>(9)),
                     std::logic_error, "Not implemented");
  }
  value.set(2.5);
  const OmbrixTest::GroupingLocale grouping;
  if (!grouping.named())
    GTEST_SKIP() << "no named locale that groups digits is installed (.ci/run makes de_DE.UTF-8)";
  logManager.addToLog(LogLevel::Message, "%.1f %g", 2.5, 0.25);
  logManager.recordAttributeSetValue(&value, KorvanSDK::Chronology::Current);
  EXPECT_EQ(withoutStamp(lines().at(1)), "\tMessage\t\t2.5 0.25");
  EXPECT_EQ(withoutStamp(lines().at(2)),
            "\tInformational\t\tAttribute '0-0:Value:Current ,[3]' set to '2.500000'");
}

TEST_F(LogManagerTest, ConcurrentLinesNeverInterleave)
{
  constexpr int threads = 4, perThread = 200;
  // Longer than the C library's buffer, so that each line takes several writes to the file.
  const std::string padding(10000, '.');
  // Even lines go through the manager, odd ones through the thread's own section.
  const auto line = [&](int t, int i)
  {
    return (i % 2 ? "thread " + std::to_string(t) + "\t " : "\t") + std::to_string(t) + " " +
           std::to_string(i) + " ";
  };
  logManager.initialize(logPath, LogLevel::Informational);
  std::vector<std::thread> writers;
  for (int t = 0; t < threads; ++t)
    writers.emplace_back(
        [this, t, &padding]
        {
          const LogSection section("thread " + std::to_string(t));
          for (int i = 0; i < perThread; ++i)
            if (i % 2 == 0)
              logManager.addToLog(LogLevel::Message, "%d %d %s", t, i, padding.c_str());
            else
              section.addToLog(LogLevel::Message, "%d %d %s", t, i, padding.c_str());
        });
  for (auto& writer : writers)
    writer.join();
  logManager.terminate();

  // Every line is whole and the lines of one thread keep their order.
  const Lines written = bodies();
  ASSERT_EQ(written.size(), threads * perThread + 2u);
  std::vector<int> next(threads, 0);
  for (std::size_t i = 1; i + 1 < written.size(); ++i)
  {
    int t = 0;
    while (t < threads && (next[t] == perThread || written[i] != "\tMessage\t" + line(t, next[t]) + padding))
      ++t;
    ASSERT_LT(t, threads) << "line " << i << ": " << written[i].substr(0, 40);
    ++next[t];
  }
}

TEST_F(LogManagerTest, LifeCycleAndAFileThatCannotBeOpened)
{
  // An empty path stores the level but keeps the log off; terminating an inactive log writes nothing.
  logManager.initialize("", LogLevel::Informational);
  EXPECT_FALSE(logManager.isActive());
  EXPECT_EQ(logManager.getLevel(), LogLevel::Informational);
  logManager.addToLog(LogLevel::Error, "dropped");
  logManager.terminate();
  EXPECT_FALSE(std::filesystem::exists(logPath));

  // A directory cannot be opened as a file: its lines are dropped, reported once per initialize.
  const std::string badPath = dir.path().string();
  const std::string notice = "OmbrixModel: cannot open the log file \"" + badPath + "\" (" +
                             std::generic_category().message(EISDIR) +
                             "); log lines are dropped until the log is initialised with a path that can be "
                             "written.\n";
  for (int run = 0; run < 2; ++run)
  {
    ::testing::internal::CaptureStderr();
    logManager.initialize(badPath, LogLevel::Informational);
    EXPECT_TRUE(logManager.isActive());
    for (int i = 0; i < 3; ++i)
      logManager.addToLog(LogLevel::Error, "dropped %d", i);
    LogSection("Solver").addToLog(LogLevel::Error, "dropped too");
    logManager.terminate();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), notice) << run;
    EXPECT_FALSE(logManager.isActive());
  }

  // A good path works again, a second initialize starts the file afresh, and a file removed while the log
  // is active is created anew.
  logManager.initialize(logPath, LogLevel::Error);
  EXPECT_TRUE(logManager.isActive());
  logManager.addToLog(LogLevel::Error, "first run");
  logManager.initialize(logPath, LogLevel::Warning);
  logManager.addToLog(LogLevel::Warning, "second run");
  EXPECT_EQ(bodies(), (Lines{"\t\tLogger Logging Started", "\tWarning\t\tsecond run"}));
  std::filesystem::remove(logPath);
  logManager.addToLog(LogLevel::Error, "after removal");
  logManager.terminate();
  EXPECT_FALSE(logManager.isActive());
  EXPECT_EQ(logManager.getLevel(), LogLevel::Warning);
  logManager.addToLog(LogLevel::None, "after");
  logManager.terminate();
  EXPECT_EQ(bodies(), (Lines{"\tError\t\tafter removal", "\t\tLogger Logging Finished"}));
}
