// Shared by the log tests: a fixture that gives each test its own log file and leaves the
// process-wide manager inactive at level Error afterwards, plus helpers to read what was written.
#pragma once

#include "ombrix/log/LogManager.h"

#include "support/TestSupport.h"

#include <chrono>
#include <cstdarg>
#include <functional>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace OmbrixTest
{

// The line without its "[<time stamp>]:" prefix; fails the test when the prefix is malformed.
inline std::string withoutStamp(const std::string& line)
{
  static const std::regex stamp(R"(^\[\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}\.\d{3,4}Z\]:)");
  std::smatch match;
  if (std::regex_search(line, match, stamp))
    return match.suffix().str();
  ADD_FAILURE() << "no time stamp at the start of: " << line;
  return line;
}

class LogFileFixture : public ::testing::Test
{
protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }

  static void reset()
  {
    Ombrix::LogManager::instance().terminate();
    Ombrix::LogManager::instance().initialize("", Ombrix::LogLevel::Error);
  }

  // The log file's lines without their "\n"; the last line must be complete.
  std::vector<std::string> lines() const
  {
    const std::string content = readFile(logPath);
    EXPECT_TRUE(content.empty() || content.back() == '\n') << "the log ends in a partial line";
    std::istringstream stream(content);
    std::vector<std::string> result;
    for (std::string line; std::getline(stream, line);)
      result.push_back(line);
    return result;
  }

  // The lines without their time stamps.
  std::vector<std::string> bodies() const
  {
    std::vector<std::string> result;
    for (const auto& line : lines())
      result.push_back(withoutStamp(line));
    return result;
  }

  TempDir dir;
  std::string logPath = dir.file("ombrix.log");
};

// Calls `sink` with the arguments after `format` as a va_list, as the v-forms of the log take them.
inline void withArgs(const std::function<void(const char*, va_list)>& sink, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  sink(format, args);
  va_end(args);
}

// A UTC time point from its calendar parts and a sub-second offset.
inline std::chrono::system_clock::time_point utc(int year, unsigned month, unsigned day, int hour, int minute,
                                                 int second, std::chrono::nanoseconds fraction = {})
{
  using namespace std::chrono;
  const sys_days date =
      year_month_day{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  return time_point_cast<system_clock::duration>(date + hours{hour} + minutes{minute} + seconds{second} +
                                                 fraction);
}

} // namespace OmbrixTest
