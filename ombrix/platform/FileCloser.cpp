#include "ombrix/platform/FileCloser.h"

namespace FileSystem
{

void FileCloser::operator()(std::FILE* file) const noexcept
{
  if (file)
    std::fclose(file);
}

FilePtr fopen(const std::string& path, const char* mode)
{
  return FilePtr(std::fopen(path.c_str(), mode));
}

} // namespace FileSystem
