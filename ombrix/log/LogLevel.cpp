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

} // namespace Ombrix
