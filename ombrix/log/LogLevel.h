// The levels of the process-wide log and their names as written into each line. A larger number is a
// more talkative level: a line is written when its level is at most the manager's level.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class LogLevel : std::int32_t
{
  None = 0,
  Error = 1,
  Warning = 2,
  Message = 3,
  Informational = 4,
};

// "None", "Error", "Warning", "Message", "Informational"; any other value gives "None".
OMBRIX_API std::string toString(LogLevel level);
// The level named `text` (one of the names above, exactly, or its number 0 to 4); `fallback` otherwise.
OMBRIX_API LogLevel logLevelFromString(const std::string& text, LogLevel fallback);

} // namespace Ombrix
