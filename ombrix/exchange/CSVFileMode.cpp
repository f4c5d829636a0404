#include "ombrix/exchange/CSVFileMode.h"

namespace Ombrix
{

std::string csvFileModeToString(CSVFileMode mode)
{
  switch (mode)
  {
  case CSVFileMode::Automatic:
    return "Automatic";
  case CSVFileMode::Sequential:
    return "Sequential";
  default:
    return "Fixed";
  }
}

CSVFileMode csvFileModeFromString(const std::string& text, CSVFileMode fallback)
{
  if (text == "Automatic")
    return CSVFileMode::Automatic;
  if (text == "Fixed")
    return CSVFileMode::Fixed;
  if (text == "Sequential")
    return CSVFileMode::Sequential;
  return fallback;
}

} // namespace Ombrix
