#include "ombrix/platform/Path.h"

namespace FileSystem
{

std::string Path::stripTrailingSlash(const std::string& path)
{
  if (path.empty())
    return path;
  const auto last = path.find_last_not_of("/\\");
  if (last == std::string::npos)
    return path.substr(0, 1);
  return path.substr(0, last + 1);
}

std::string Path::join(const std::string& directory, const std::string& name)
{
  std::string path;
  path.reserve(directory.size() + 1 + name.size());
  path += directory;
  if (directory.empty() || (directory.back() != '/' && directory.back() != '\\'))
    path += '/';
  path += name;
  return path;
}

} // namespace FileSystem
