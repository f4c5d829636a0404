#include "ombrix/exchange/CSVFileMode.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto fileModes = makeNameTable<CSVFileMode>({
    {CSVFileMode::Automatic, "Automatic"},
    {CSVFileMode::Fixed, "Fixed"},
    {CSVFileMode::Sequential, "Sequential"},
});

} // namespace

std::string csvFileModeToString(CSVFileMode mode)
{
  // Every value but -1 and 2 names the files the fixed way.
  return std::string(fileModes.nameOr(mode, "Fixed"));
}

CSVFileMode csvFileModeFromString(const std::string& text, CSVFileMode fallback)
{
  return fileModes.valueOr(text, fallback);
}

} // namespace Ombrix
