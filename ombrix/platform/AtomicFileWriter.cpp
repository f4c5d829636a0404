#include "ombrix/platform/AtomicFileWriter.h"

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace FileSystem
{

namespace
{

namespace fs = std::filesystem;

// The file a path finally names, following symbolic links (a bounded number of them, as the system does).
fs::path resolveLinks(fs::path path)
{
  std::error_code error;
  for (int hops = 0; hops < 40 && fs::is_symlink(path, error); ++hops)
  {
    const fs::path target = fs::read_symlink(path, error);
    if (error)
      break;
    path = target.is_absolute() ? target : path.parent_path() / target;
  }
  return path;
}

bool syncDirectory(const fs::path& directory)
{
  const int fd = ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0)
    return false;
  const bool synced = ::fsync(fd) == 0;
  ::close(fd);
  return synced;
}

} // namespace

AtomicFileWriter::AtomicFileWriter(const std::string& path, bool durable) : m_durable(durable)
{
  if (path.empty())
    return;
  const fs::path target = resolveLinks(path);
  m_target = target.string();
  // Unique per process and write, so that two writers never share a temporary; hidden, so that listings
  // and name patterns of the exchange files never see it.
  static std::atomic<unsigned long> counter{0};
  const fs::path temporary =
      target.parent_path() / ("." + target.filename().string() + "." + std::to_string(::getpid()) + "." +
                              std::to_string(counter.fetch_add(1)) + ".tmp");
  m_temporary = temporary.string();
  const int fd = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0)
    return;
  struct stat existing;
  if (::stat(m_target.c_str(), &existing) == 0)
    ::fchmod(fd, existing.st_mode & 07777);
  m_file = ::fdopen(fd, "wb");
  if (!m_file)
  {
    ::close(fd);
    ::unlink(m_temporary.c_str());
  }
}

AtomicFileWriter::~AtomicFileWriter()
{
  discard();
}

bool AtomicFileWriter::write(std::string_view text)
{
  if (!m_file)
    return false;
  m_good = m_good && std::fwrite(text.data(), 1, text.size(), m_file) == text.size();
  return m_good;
}

bool AtomicFileWriter::commit()
{
  if (!m_file)
    return false;
  bool good = m_good && std::fflush(m_file) == 0 && !std::ferror(m_file);
  if (good && m_durable)
    good = ::fsync(::fileno(m_file)) == 0;
  // Closing can report a write that failed late; after a failed fclose the stream is gone all the same.
  good = std::fclose(m_file) == 0 && good;
  m_file = nullptr;
  if (good)
    good = std::rename(m_temporary.c_str(), m_target.c_str()) == 0;
  if (!good)
  {
    ::unlink(m_temporary.c_str());
    return false;
  }
  // The rename is done: the new file is in place even if the directory cannot be synced.
  return !m_durable || syncDirectory(fs::path(m_target).parent_path());
}

void AtomicFileWriter::discard()
{
  if (!m_file)
    return;
  std::fclose(m_file);
  m_file = nullptr;
  ::unlink(m_temporary.c_str());
}

bool AtomicFileWriter::replace(const std::string& path, std::string_view content, bool durable)
{
  AtomicFileWriter writer(path, durable);
  return writer.write(content) && writer.commit();
}

std::size_t AtomicFileWriter::removeTemporaries(const std::string& directory,
                                                const std::function<bool(const std::string&)>& isTarget)
{
  // ".<name>.<pid>.<n>.tmp": the target's name is what is left without the dot and the three suffixes.
  const auto targetOf = [](std::string name) -> std::string
  {
    const std::string suffix = ".tmp";
    if (name.size() <= 1 + suffix.size() || name[0] != '.' ||
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
      return {};
    name = name.substr(1, name.size() - 1 - suffix.size());
    for (int number = 0; number < 2; ++number)
    {
      const auto dot = name.rfind('.');
      if (dot == std::string::npos || dot + 1 == name.size() ||
          name.find_first_not_of("0123456789", dot + 1) != std::string::npos)
        return {};
      name.resize(dot);
    }
    return name;
  };
  std::size_t removed = 0;
  std::error_code error;
  fs::directory_iterator entry(directory.empty() ? "." : directory, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
  {
    const std::string target = targetOf(entry->path().filename().string());
    std::error_code ignored;
    if (!target.empty() && isTarget(target) && fs::remove(entry->path(), ignored))
      ++removed;
  }
  return removed;
}

} // namespace FileSystem
