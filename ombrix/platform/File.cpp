#include "ombrix/platform/File.h"

#include "ombrix/platform/FileCloser.h"

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
  bool written = false;
  {
    ZQofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out)
      return false;
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    written = static_cast<bool>(out);
  }
  std::error_code error;
  if (written)
    std::filesystem::rename(temporary, path, error);
  // A failed write or rename (onto a directory, say) must not leave the temporary behind.
  if (!written || error)
  {
    std::filesystem::remove(temporary, error);
    return false;
  }
  return true;
}

bool File::readAll(const std::string& path, std::string& content)
{
  content.clear();
  // Only regular files: a directory can be opened on some systems and reports a meaningless size.
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error))
    return false;
  const auto size = std::filesystem::file_size(path, error);
  if (error)
    return false;
  FilePtr file = FileSystem::fopen(path, "rb");
  if (!file)
    return false;
  content.resize(static_cast<std::size_t>(size));
  const std::size_t got = std::fread(content.data(), 1, content.size(), file.get());
  if (std::ferror(file.get()))
  {
    content.clear();
    return false;
  }
  // A file that shrank meanwhile gives what was there.
  content.resize(got);
  return true;
}

} // namespace FileSystem
