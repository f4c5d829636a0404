#include "ombrix/platform/File.h"

#include <filesystem>
#include <system_error>

namespace FileSystem
{

bool File::exists(const std::string& path)
{
  std::error_code error;
  return !path.empty() && std::filesystem::is_regular_file(path, error);
}

bool File::remove(const std::string& path)
{
  std::error_code error;
  std::filesystem::remove(path, error);
  return !exists(path);
}

bool File::writeAtomically(const std::string& path, const std::string& content)
{
  const std::string temporary = path + ".tmp";
  {
    ZQofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out)
      return false;
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    if (!out)
      return false;
  }
  std::error_code error;
  std::filesystem::rename(temporary, path, error);
  return !error;
}

} // namespace FileSystem
