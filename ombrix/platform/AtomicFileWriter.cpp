#include "ombrix/platform/AtomicFileWriter.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace FileSystem
{

namespace
{

// The file a path finally names, following symbolic links (a bounded number of them, as the system does).
// Leaves the status of that file in `status`, or returns with `exists` false.
std::string resolveLinks(std::string path, struct stat& status, bool& exists)
{
  for (int hops = 0; hops < 40; ++hops)
  {
    exists = ::lstat(path.c_str(), &status) == 0;
    if (!exists || !S_ISLNK(status.st_mode))
      return path;
    std::string target(static_cast<std::size_t>(status.st_size) + 1, '\0');
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0)
      return path;
    target.resize(static_cast<std::size_t>(length));
    const auto slash = path.rfind('/');
    path = target.front() == '/' || slash == std::string::npos ? target : path.substr(0, slash + 1) + target;
  }
  exists = ::stat(path.c_str(), &status) == 0;
  return path;
}

std::string directoryOf(const std::string& path)
{
  const auto slash = path.rfind('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool syncDirectory(const std::string& directory)
{
  const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
  struct stat existing;
  bool exists = false;
  m_target = resolveLinks(path, existing, exists);
  // Unique per process and write, so that two writers never share a temporary; hidden, so that listings
  // and name patterns of the exchange files never see it.
  static std::atomic<unsigned long> counter{0};
  const auto slash = m_target.rfind('/');
  const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
  m_temporary = m_target.substr(0, nameStart) + "." + m_target.substr(nameStart) + "." +
                std::to_string(::getpid()) + "." + std::to_string(counter.fetch_add(1)) + ".tmp";
  const mode_t mode = exists ? existing.st_mode & 07777 : 0666;
  m_fd = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  // The creation mode passed the process's umask: put back what it took from an existing file's mode.
  struct stat created;
  if (m_fd >= 0 && exists && ::fstat(m_fd, &created) == 0 && (created.st_mode & 07777) != mode)
    ::fchmod(m_fd, mode);
}

AtomicFileWriter::~AtomicFileWriter()
{
  discard();
}

std::FILE* AtomicFileWriter::get()
{
  if (!m_file && m_fd >= 0)
  {
    m_file = ::fdopen(m_fd, "wb");
    if (!m_file)
      m_good = false;
  }
  return m_file;
}

bool AtomicFileWriter::write(std::string_view text)
{
  if (m_fd < 0)
    return false;
  if (m_file)
    m_good = m_good && std::fwrite(text.data(), 1, text.size(), m_file) == text.size();
  while (m_good && !m_file && !text.empty())
  {
    const ssize_t written = ::write(m_fd, text.data(), text.size());
    if (written < 0 && errno == EINTR)
      continue;
    m_good = written > 0;
    if (m_good)
      text.remove_prefix(static_cast<std::size_t>(written));
  }
  return m_good;
}

bool AtomicFileWriter::commit()
{
  if (m_fd < 0)
    return false;
  bool good = m_good && (!m_file || (std::fflush(m_file) == 0 && !std::ferror(m_file)));
  if (good && m_durable)
    good = ::fsync(m_fd) == 0;
  // Closing can report a write that failed late; after a failed close the descriptor is gone all the same.
  good = (m_file ? std::fclose(m_file) : ::close(m_fd)) == 0 && good;
  m_file = nullptr;
  m_fd = -1;
  if (good)
    good = std::rename(m_temporary.c_str(), m_target.c_str()) == 0;
  if (!good)
  {
    ::unlink(m_temporary.c_str());
    return false;
  }
  // The rename is done: the new file is in place even if the directory cannot be synced.
  return !m_durable || syncDirectory(directoryOf(m_target));
}

void AtomicFileWriter::discard()
{
  if (m_fd < 0)
    return;
  if (m_file)
    std::fclose(m_file);
  else
    ::close(m_fd);
  m_file = nullptr;
  m_fd = -1;
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
  namespace fs = std::filesystem;
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
