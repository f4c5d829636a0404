#include "ombrix/log/LogLevel.h"

namespace Ombrix
{

std::string toString(LogLevel level)
{
  switch (level)
  {
  case LogLevel::Error:
    return "Error";
  case LogLevel::Warning:
    return "Warning";
  case LogLevel::Message:
    return "Message";
  case LogLevel::Informational:
    return "Informational";
  case LogLevel::None:
    break;
  }
  return "None";
}

LogLevel logLevelFromString(const std::string& text, LogLevel fallback)
{
  for (int value = 0; value <= 4; ++value)
  {
    const auto level = static_cast<LogLevel>(value);
    if (text == toString(level) || text == std::to_string(value))
      return level;
  }
  return fallback;
}

} // namespace Ombrix
