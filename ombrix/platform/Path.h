// Path text helpers. Paths use "/" as separator; "\\" is accepted as one too.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>

namespace FileSystem
{

class OMBRIX_API Path
{
public:
  // `path` without its trailing separators; a path that is only separators ("/") is kept as it is.
  static std::string stripTrailingSlash(const std::string& path);
};

} // namespace FileSystem
