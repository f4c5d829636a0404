// A named handle on the process-wide log: its lines carry the section's name after the level.
// Holds nothing but the name, so it is cheap to create and safe to use from any thread.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/log/LogLevel.h"
#include "ombrix/log/LogManager.h"

#include <cstdarg>
#include <exception>
#include <string>
#include <string_view>

namespace Ombrix
{

class OMBRIX_API LogSection
{
public:
  using TimePoint = LogManager::TimePoint;

  explicit LogSection(const std::string& name);
  ~LogSection();

  const std::string& getName() const { return m_name; }

  // Both tell whether the log manager is active.
  bool isActive() const;
  explicit operator bool() const;

  // Stamped with the current time cut down to whole milliseconds.
  void addToLog(LogLevel level, const char* format, ...) const OMBRIX_PRINTF_FORMAT(3, 4);
  void addToLog(TimePoint when, LogLevel level, const char* format, ...) const OMBRIX_PRINTF_FORMAT(4, 5);
  // Stamped with the current time as it is.
  void vaddToLog(LogLevel level, std::string_view format, va_list args) const;
  void vaddToLog(TimePoint when, LogLevel level, std::string_view format, va_list args) const;

  // Logs the stored exception at Error as "Exception: <what()>", or "Unknown exception" for one not
  // derived from std::exception; never rethrows it. A null pointer holds no exception and writes
  // nothing. The first form uses the current time.
  void addToLog(std::exception_ptr error) const;
  void addToLog(TimePoint when, std::exception_ptr error) const;

private:
  std::string m_name;
};

} // namespace Ombrix
