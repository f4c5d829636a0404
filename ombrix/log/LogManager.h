// The process-wide text log: one manager that owns the log file's path, the level and the lock.
// Safe for concurrent use from any thread: every line is appended with the file opened and closed
// around it under one recursive mutex, so lines never interleave and the file is complete on disk.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/log/LogLevel.h"
#include "ombrix/sdk/Chronology.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <list>
#include <mutex>
#include <string>
#include <string_view>

#if defined(__GNUC__) || defined(__clang__)
#define OMBRIX_PRINTF_FORMAT(formatIndex, firstArgument)                                                     \
  __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define OMBRIX_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

namespace Ombrix::Model
{
class Attribute;
} // namespace Ombrix::Model

namespace Ombrix
{

class LogSection;

// Lines look like "[2024-03-05T14:07:09.250Z]:\tError\t\tmessage"; docs/logging.md has the grammar.
// Formats are printf formats: text that comes from a user or a file goes in as an argument to "%s".
// A line whose level is greater than the manager's level, or that arrives while the manager is
// inactive, is dropped before any formatting. When the log file cannot be opened, the line is
// dropped and a single notice per initialised path goes to stderr; the manager stays usable.
class OMBRIX_API LogManager
{
public:
  using TimePoint = std::chrono::system_clock::time_point;

  // The single manager, created on first use and destroyed at process exit. It starts inactive with
  // the level Error.
  static LogManager& instance();

  LogManager(const LogManager&) = delete;
  LogManager& operator=(const LogManager&) = delete;

  // Stores `path` and then `level`. A non-empty path makes the manager active: the file is created
  // or truncated and the start line written. An empty path switches logging off but still stores the
  // level. The environment variable OMBRIX_LOG_LEVEL, when set, overrides `level` without recompiling
  // the host: a level name ("Informational") or number ("4"); a value that is neither keeps `level` and
  // is reported by an Error line after the start line.
  void initialize(const std::string& path, LogLevel level);
  static inline const std::string levelVariable = "OMBRIX_LOG_LEVEL";
  // Writes the finish line and switches logging off; the level stays. Does nothing when inactive.
  void terminate();
  bool isActive() const;
  // The level stored by the last initialize (Error before the first).
  LogLevel getLevel() const;

  void addToLog(LogLevel level, const char* format, ...) OMBRIX_PRINTF_FORMAT(3, 4);
  void addToLog(TimePoint when, LogLevel level, const char* format, ...) OMBRIX_PRINTF_FORMAT(4, 5);
  void vaddToLog(LogLevel level, std::string_view format, va_list args);
  void vaddToLog(TimePoint when, LogLevel level, std::string_view format, va_list args);
  // The section forms put the section's name between the level and the message.
  void vaddToLog(LogLevel level, const LogSection& section, std::string_view format, va_list args);
  void vaddToLog(TimePoint when, LogLevel level, const LogSection& section, std::string_view format,
                 va_list args);

  // Writes one Informational line that records the value just set on `attribute` for `chronology`.
  // A null attribute, an inactive manager or a level below Informational writes nothing. Throws
  // std::logic_error("Not implemented") for an unknown chronology whenever the manager is active,
  // whatever its level.
  void recordAttributeSetValue(Model::Attribute* attribute, KorvanSDK::Chronology chronology);

  // The time stamp of a line, e.g. "2024-03-05T14:07:09.250Z" (UTC). The milliseconds are rounded
  // up and not carried into the seconds, so 999.9 ms into a second gives ".1000Z". Times before
  // 1970 give "0000-00-00T00:00:00.000Z".
  static std::string formatTimeStamp(TimePoint when);

private:
  LogManager();
  ~LogManager();

  // The level and active tests that every line passes before the lock and before any formatting.
  bool accepts(LogLevel level) const;
  void writeLine(TimePoint when, LogLevel level, const std::string* sectionName, std::string_view format,
                 va_list args);

  // Reserved: no operation fills this list; it stays empty and goes with the manager.
  std::list<std::string> m_reserved;
  mutable std::recursive_mutex m_mutex;
  std::string m_path;
  // Read before the lock is taken, so it is atomic; written only by initialize.
  std::atomic<LogLevel> m_level{LogLevel::Error};
  // Set once the failure to open the current path has been reported, so the notice is not repeated.
  bool m_openFailureReported = false;
};

} // namespace Ombrix
