// Path text helpers. Paths use "/" as separator; "\\" is accepted as one too.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>

namespace FileSystem
{

class OMBRIX_API Path
{
public:
  // `path` without its trailing separators. A path that is only separators is the root: it comes back as
  // its first separator ("//" gives "/"), so that it still names the root.
  static std::string stripTrailingSlash(const std::string& path);
  // `directory`, "/", `name`; no "/" is added after a directory that already ends in a separator (the
  // root "/"), and an empty directory gives "/" followed by the name.
  static std::string join(const std::string& directory, const std::string& name);
};

} // namespace FileSystem
