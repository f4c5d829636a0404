#include "ombrix/log/LogSection.h"

#include <chrono>
#include <utility>

namespace Ombrix
{

LogSection::LogSection(const std::string& name) : m_name(name) {}

LogSection::~LogSection() = default;

bool LogSection::isActive() const
{
  return LogManager::instance().isActive();
}

LogSection::operator bool() const
{
  return LogManager::instance().isActive();
}

void LogSection::addToLog(LogLevel level, const char* format, ...) const
{
  // Whole milliseconds, so that the rounded-up stamp of such a line is exact.
  const TimePoint now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  va_list args;
  va_start(args, format);
  LogManager::instance().vaddToLog(now, level, *this, format, args);
  va_end(args);
}

void LogSection::addToLog(TimePoint when, LogLevel level, const char* format, ...) const
{
  va_list args;
  va_start(args, format);
  LogManager::instance().vaddToLog(when, level, *this, format, args);
  va_end(args);
}

void LogSection::vaddToLog(LogLevel level, std::string_view format, va_list args) const
{
  LogManager::instance().vaddToLog(level, *this, format, args);
}

void LogSection::vaddToLog(TimePoint when, LogLevel level, std::string_view format, va_list args) const
{
  LogManager::instance().vaddToLog(when, level, *this, format, args);
}

void LogSection::addToLog(std::exception_ptr error) const
{
  addToLog(std::chrono::system_clock::now(), std::move(error));
}

void LogSection::addToLog(TimePoint when, std::exception_ptr error) const
{
  if (!error)
    return;
  try
  {
    std::rethrow_exception(error);
  }
  catch (const std::exception& exception)
  {
    addToLog(when, LogLevel::Error, "Exception: %s", exception.what());
  }
  catch (...)
  {
    addToLog(when, LogLevel::Error, "Unknown exception");
  }
}

} // namespace Ombrix
