#include "ombrix/log/LogSection.h"

#include "log/LogTestSupport.h"

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

} // namespace

TEST_F(LogSectionTest, LinesAndExceptionsCarryTheSectionNameWhileTheManagerIsActive)
{
  const auto when = utc(2024, 3, 5, 14, 7, 9, 250ms);
  const LogSection section("CSV File : 50%d.csv");
  EXPECT_FALSE(section.isActive());
  EXPECT_FALSE(static_cast<bool>(section));
  LogManager::instance().initialize(logPath, LogLevel::Warning);
  EXPECT_TRUE(section.isActive());
  EXPECT_TRUE(static_cast<bool>(section));
  section.addToLog(when, LogLevel::Warning, "row %d: %s", 3, "bad unit");
  section.addToLog(when, LogLevel::Message, "dropped by level");
  OmbrixTest::withArgs([&](const char* f, va_list a) { section.vaddToLog(when, LogLevel::None, f, a); },
                       "via %s", "va_list");
  OmbrixTest::withArgs([&](const char* f, va_list a) { section.vaddToLog(LogLevel::Error, f, a); }, "now %d",
                       1);
  const auto before = std::chrono::system_clock::now();
  section.addToLog(LogLevel::Error, "cut");
  const auto after = std::chrono::system_clock::now();
  LogManager::instance().terminate();
  EXPECT_FALSE(section.isActive());
  section.addToLog(LogLevel::Error, "after terminate");

  auto written = lines();
  ASSERT_EQ(written.size(), 6u);
  EXPECT_EQ(written[1], "[2024-03-05T14:07:09.250Z]:\tWarning\tCSV File : 50%d.csv\t row 3: bad unit");
  EXPECT_EQ(written[2], "[2024-03-05T14:07:09.250Z]:\tNone\tCSV File : 50%d.csv\t via va_list");
  EXPECT_EQ(withoutStamp(written[3]), "\tError\tCSV File : 50%d.csv\t now 1");
  EXPECT_EQ(withoutStamp(written[4]), "\tError\tCSV File : 50%d.csv\t cut");
  // The current time is cut to whole milliseconds: rounded up, the stamp could lie past `after` or show
  // four digits.
  const std::string stamp = written[4].substr(1, 24);
  EXPECT_EQ(written[4][25], ']');
  EXPECT_LE(LogManager::formatTimeStamp(std::chrono::floor<std::chrono::milliseconds>(before)), stamp);
  EXPECT_LE(stamp, LogManager::formatTimeStamp(std::chrono::floor<std::chrono::milliseconds>(after)));

  // Exceptions are logged at Error and not rethrown.
  const LogSection ai("AI");
  LogManager::instance().initialize(logPath, LogLevel::Error);
  EXPECT_NO_THROW(ai.addToLog(when, std::make_exception_ptr(std::runtime_error("disk 100% %s full"))));
  EXPECT_NO_THROW(ai.addToLog(when, std::make_exception_ptr(42)));
  EXPECT_NO_THROW(ai.addToLog(when, std::exception_ptr{}));
  EXPECT_NO_THROW(ai.addToLog(std::make_exception_ptr(std::out_of_range("No attribute 'Value'"))));
  written = lines();
  ASSERT_EQ(written.size(), 4u);
  EXPECT_EQ(written[1], "[2024-03-05T14:07:09.250Z]:\tError\tAI\t Exception: disk 100% %s full");
  EXPECT_EQ(written[2], "[2024-03-05T14:07:09.250Z]:\tError\tAI\t Unknown exception");
  EXPECT_EQ(withoutStamp(written[3]), "\tError\tAI\t Exception: No attribute 'Value'");

  // They follow the level like any line.
  LogManager::instance().initialize(logPath, LogLevel::None);
  ai.addToLog(std::make_exception_ptr(std::runtime_error("dropped")));
  LogManager::instance().terminate();
  EXPECT_EQ(bodies(),
            (std::vector<std::string>{"\t\tLogger Logging Started", "\t\tLogger Logging Finished"}));
}
