#include "ombrix/platform/Path.h"

namespace FileSystem
{

std::string Path::stripTrailingSlash(const std::string& path)
{
  const auto last = path.find_last_not_of("/\\");
  if (last == std::string::npos)
    return path;
  return path.substr(0, last + 1);
}

} // namespace FileSystem
