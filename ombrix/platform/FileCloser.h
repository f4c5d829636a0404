// Owning C file handles: FileSystem::fopen opens a file, FileCloser closes it when the handle goes.
// Safe for concurrent use on different handles.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdio>
#include <memory>
#include <string>

namespace FileSystem
{

struct OMBRIX_API FileCloser
{
  void operator()(std::FILE* file) const noexcept;
};

using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// Opens `path` with the C library's `mode` ("r", "w+", "a+", ...). Returns an empty handle when the file
// cannot be opened; never throws for a missing or unwritable file.
OMBRIX_API FilePtr fopen(const std::string& path, const char* mode);

} // namespace FileSystem
