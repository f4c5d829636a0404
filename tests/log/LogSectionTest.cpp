#include "ombrix/log/LogSection.h"

#include "log/LogTestSupport.h"

#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace Ombrix;
using namespace std::chrono_literals;
using OmbrixTest::utc;
using OmbrixTest::withoutStamp;

namespace
{

class LogSectionTest : public OmbrixTest::LogFileFixture
{
};

struct NotAStandardException
{
};

void sectionV(const LogSection& section, LogLevel level, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  section.vaddToLog(level, format, args);
  va_end(args);
}

void sectionAtV(const LogSection& section, LogSection::TimePoint when, LogLevel level, const char* format,
                ...)
{
  va_list args;
  va_start(args, format);
  section.vaddToLog(when, level, format, args);
  va_end(args);
}

// The time written in a stamp of exactly three fraction digits.
LogSection::TimePoint parseStamp(const std::string& line)
{
  int year = 0;
  unsigned month = 0, day = 0;
  int hour = 0, minute = 0, second = 0, milliseconds = 0;
  char end = 0;
  EXPECT_EQ(std::sscanf(line.c_str(), "[%4d-%2u-%2uT%2d:%2d:%2d.%3d%c", &year, &month, &day, &hour, &minute,
                        &second, &milliseconds, &end),
            8)
      << line;
  EXPECT_EQ(end, 'Z') << "three fraction digits expected: " << line;
  return utc(year, month, day, hour, minute, second, std::chrono::milliseconds{milliseconds});
}

} // namespace

TEST_F(LogSectionTest, ActiveExactlyWhenTheManagerIs)
{
  const LogSection section("Solver");
  EXPECT_FALSE(section.isActive());
  EXPECT_FALSE(static_cast<bool>(section));
  LogManager::instance().initialize(logPath, LogLevel::Error);
  EXPECT_TRUE(section.isActive());
  EXPECT_TRUE(static_cast<bool>(section));
  LogManager::instance().terminate();
  EXPECT_FALSE(section.isActive());
  section.addToLog(LogLevel::Error, "after terminate");
  EXPECT_EQ(lines().size(), 2u);
}

TEST_F(LogSectionTest, LinesCarryTheSectionName)
{
  const auto when = utc(2024, 3, 5, 14, 7, 9, 250ms);
  const LogSection section("CSV File : 50%d.csv");
  LogManager::instance().initialize(logPath, LogLevel::Warning);
  section.addToLog(when, LogLevel::Warning, "row %d: %s", 3, "bad unit");
  section.addToLog(when, LogLevel::Message, "dropped by level");
  sectionAtV(section, when, LogLevel::None, "via %s", "va_list");
  sectionV(section, LogLevel::Error, "now %d", 1);
  LogManager::instance().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), 5u);
  EXPECT_EQ(written[1], "[2024-03-05T14:07:09.250Z]:\tWarning\tCSV File : 50%d.csv\t row 3: bad unit");
  EXPECT_EQ(written[2], "[2024-03-05T14:07:09.250Z]:\tNone\tCSV File : 50%d.csv\t via va_list");
  EXPECT_EQ(withoutStamp(written[3]), "\tError\tCSV File : 50%d.csv\t now 1");
}

TEST_F(LogSectionTest, CurrentTimeIsCutToWholeMilliseconds)
{
  const LogSection section("Solver");
  LogManager::instance().initialize(logPath, LogLevel::Error);
  const auto before = std::chrono::system_clock::now();
  section.addToLog(LogLevel::Error, "cut");
  const auto after = std::chrono::system_clock::now();
  LogManager::instance().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(withoutStamp(written[1]), "\tError\tSolver\t cut");
  // Rounded up instead of cut, the stamp could lie past `after` or show four digits.
  const auto stamped = parseStamp(written[1]);
  EXPECT_LE(std::chrono::floor<std::chrono::milliseconds>(before), stamped);
  EXPECT_LE(stamped, std::chrono::floor<std::chrono::milliseconds>(after));
}

TEST_F(LogSectionTest, ExceptionsAreLoggedAtErrorAndNotRethrown)
{
  const auto when = utc(2024, 3, 5, 14, 7, 9, 250ms);
  const LogSection section("AI");
  LogManager::instance().initialize(logPath, LogLevel::Error);
  EXPECT_NO_THROW(section.addToLog(when, std::make_exception_ptr(std::runtime_error("disk 100% %s full"))));
  EXPECT_NO_THROW(section.addToLog(when, std::make_exception_ptr(NotAStandardException{})));
  EXPECT_NO_THROW(section.addToLog(when, std::make_exception_ptr(42)));
  EXPECT_NO_THROW(section.addToLog(when, std::exception_ptr{}));
  try
  {
    throw std::out_of_range("No attribute 'Value'");
  }
  catch (...)
  {
    EXPECT_NO_THROW(section.addToLog(std::current_exception()));
  }
  LogManager::instance().terminate();

  const auto written = lines();
  ASSERT_EQ(written.size(), 6u);
  EXPECT_EQ(written[1], "[2024-03-05T14:07:09.250Z]:\tError\tAI\t Exception: disk 100% %s full");
  EXPECT_EQ(written[2], "[2024-03-05T14:07:09.250Z]:\tError\tAI\t Unknown exception");
  EXPECT_EQ(written[3], "[2024-03-05T14:07:09.250Z]:\tError\tAI\t Unknown exception");
  EXPECT_EQ(withoutStamp(written[4]), "\tError\tAI\t Exception: No attribute 'Value'");
}

TEST_F(LogSectionTest, ExceptionsFollowTheLevel)
{
  const LogSection section("AI");
  LogManager::instance().initialize(logPath, LogLevel::None);
  section.addToLog(std::make_exception_ptr(std::runtime_error("dropped")));
  LogManager::instance().terminate();
  EXPECT_EQ(lines().size(), 2u);
}
