#include "ombrix/log/LogManager.h"

#include "ombrix/log/LogSection.h"
#include "ombrix/platform/ClassicCLocaleScope.h"
#include "ombrix/platform/FileCloser.h"
#include "ombrix/platform/SystemEnvironmentVariables.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <locale>
#include <optional>
#include <ratio>
#include <sstream>
#include <system_error>

namespace Ombrix
{

namespace
{

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t nanosecondsPerTick = 100;
constexpr std::int64_t nanosecondsPerMillisecond = 1'000'000;

// Opens the log file for one operation. The caller holds the manager's lock, which also guards
// `reported`: the notice goes to stderr once per initialised path, not once per dropped line.
FileSystem::FilePtr openLogFile(const std::string& path, const char* mode, bool& reported)
{
  auto file = FileSystem::fopen(path, mode);
  if (!file && !reported)
  {
    const std::string reason = std::generic_category().message(errno);
    std::fprintf(stderr,
                 "OmbrixModel: cannot open the log file \"%s\" (%s); log lines are dropped until the log "
                 "is initialised with a path that can be written.\n",
                 path.c_str(), reason.c_str());
    reported = true;
  }
  return file;
}

} // namespace

LogManager::LogManager() = default;
LogManager::~LogManager() = default;

LogManager& LogManager::instance()
{
  static LogManager manager;
  return manager;
}

void LogManager::initialize(const std::string& path, LogLevel level)
{
  std::lock_guard lock(m_mutex);
  m_path = path;
  m_openFailureReported = false;
  if (!m_path.empty())
  {
    if (auto file = openLogFile(m_path, "w+", m_openFailureReported))
    {
      const std::string stamp = formatTimeStamp(std::chrono::system_clock::now());
      std::fprintf(file.get(), "[%s]:\t\tLogger Logging Started\n", stamp.c_str());
    }
  }
  const std::optional<std::string> wanted =
      FileSystem::SystemEnvironmentVariables::instance().get(levelVariable);
  const LogLevel chosen = wanted ? logLevelFromString(*wanted, level) : level;
  // Stored last, so that no line passes the level test before the start line is on disk.
  m_level.store(chosen);
  if (wanted && toString(chosen) != *wanted && std::to_string(static_cast<int>(chosen)) != *wanted)
    addToLog(LogLevel::Error,
             "%s='%s' is no log level (None, Error, Warning, Message, Informational or 0 to 4); "
             "the level stays %s",
             levelVariable.c_str(), wanted->c_str(), toString(level).c_str());
}

void LogManager::terminate()
{
  std::lock_guard lock(m_mutex);
  if (m_path.empty())
    return;
  auto file = openLogFile(m_path, "a+", m_openFailureReported);
  if (file)
  {
    const std::string stamp = formatTimeStamp(std::chrono::system_clock::now());
    std::fprintf(file.get(), "[%s]:\t\tLogger Logging Finished\n", stamp.c_str());
  }
  m_path.clear();
}

bool LogManager::isActive() const
{
  std::lock_guard lock(m_mutex);
  return !m_path.empty();
}

LogLevel LogManager::getLevel() const
{
  return m_level.load();
}

bool LogManager::accepts(LogLevel level) const
{
  return static_cast<std::int32_t>(level) <= static_cast<std::int32_t>(m_level.load()) && isActive();
}

void LogManager::addToLog(LogLevel level, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  writeLine(std::chrono::system_clock::now(), level, nullptr, format, args);
  va_end(args);
}

void LogManager::addToLog(TimePoint when, LogLevel level, const char* format, ...)
{
  va_list args;
  va_start(args, format);
  writeLine(when, level, nullptr, format, args);
  va_end(args);
}

void LogManager::vaddToLog(LogLevel level, std::string_view format, va_list args)
{
  writeLine(std::chrono::system_clock::now(), level, nullptr, format, args);
}

void LogManager::vaddToLog(TimePoint when, LogLevel level, std::string_view format, va_list args)
{
  writeLine(when, level, nullptr, format, args);
}

void LogManager::vaddToLog(LogLevel level, const LogSection& section, std::string_view format, va_list args)
{
  writeLine(std::chrono::system_clock::now(), level, &section.getName(), format, args);
}

void LogManager::vaddToLog(TimePoint when, LogLevel level, const LogSection& section, std::string_view format,
                           va_list args)
{
  writeLine(when, level, &section.getName(), format, args);
}

void LogManager::writeLine(TimePoint when, LogLevel level, const std::string* sectionName,
                           std::string_view format, va_list args)
{
  if (!accepts(level))
    return;

  // vfprintf needs a terminated format, which a string_view does not promise.
  const std::string terminatedFormat(format);
  const std::string stamp = formatTimeStamp(when);
  const std::string levelName = toString(level);

  std::lock_guard lock(m_mutex);
  // terminate() may have run between the active test and the lock.
  if (m_path.empty())
    return;
  auto file = openLogFile(m_path, "a+", m_openFailureReported);
  if (!file)
    return;
  // The host's numbers ("%f", "%g") in the classic form, whatever C locale a named global locale set.
  const FileSystem::ClassicCLocaleScope classicNumbers;
  if (sectionName)
    std::fprintf(file.get(), "[%s]:\t%s\t%s\t ", stamp.c_str(), levelName.c_str(), sectionName->c_str());
  else
    std::fprintf(file.get(), "[%s]:\t%s\t\t", stamp.c_str(), levelName.c_str());
  std::vfprintf(file.get(), terminatedFormat.c_str(), args);
  std::fputc('\n', file.get());
}

std::string LogManager::formatTimeStamp(TimePoint when)
{
  const std::int64_t ticks = std::chrono::duration_cast<Ticks>(when.time_since_epoch()).count();
  const std::int64_t seconds = ticks / ticksPerSecond;

  // A host may have set a global locale that groups digits; the stamp must not change with it.
  std::ostringstream stream;
  const std::locale previous = stream.imbue(std::locale::classic());

  const std::time_t calendarSeconds = static_cast<std::time_t>(seconds);
  std::tm calendar{};
  // Negative ticks (any time before 1970, including the last second before it) take the fallback.
  if (ticks >= 0 && gmtime_r(&calendarSeconds, &calendar) != nullptr)
  {
    stream << std::put_time(&calendar, "%FT%T");
    const std::int64_t nanoseconds = (ticks % ticksPerSecond) * nanosecondsPerTick;
    // Rounded up and never carried into the seconds: 999.9 ms gives "1000". Readers of existing logs
    // rely on this form, so it stays.
    std::int64_t milliseconds = nanoseconds / nanosecondsPerMillisecond;
    if (nanoseconds % nanosecondsPerMillisecond != 0)
      ++milliseconds;
    stream << '.' << std::right << std::setw(3) << std::setfill('0') << milliseconds;
    if (stream)
      stream << 'Z';
  }
  else
  {
    stream << "0000-00-00T00:00:00" << '.' << "000" << 'Z';
  }
  stream.imbue(previous);
  return stream.str();
}

} // namespace Ombrix
