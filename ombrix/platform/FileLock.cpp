#include "ombrix/platform/FileLock.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace FileSystem
{

namespace
{

std::string systemReason()
{
  return std::strerror(errno);
}

// The record of a lock file: "<pid> <host>\n".
FileLock::Holder readHolder(int fd)
{
  char buffer[512];
  const ssize_t got = ::pread(fd, buffer, sizeof buffer - 1, 0);
  FileLock::Holder holder;
  if (got <= 0)
    return holder;
  std::istringstream record(std::string(buffer, static_cast<std::size_t>(got)));
  if (!(record >> holder.pid >> holder.host))
    return FileLock::Holder{};
  return holder;
}

} // namespace

FileLock::~FileLock()
{
  unlock();
}

FileLock::Holder FileLock::currentProcess()
{
  char host[256] = {};
  if (::gethostname(host, sizeof host - 1) != 0)
    host[0] = '\0';
  return Holder{static_cast<long>(::getpid()), host[0] ? host : "unknown"};
}

bool FileLock::tryLock(const std::string& path)
{
  unlock();
  m_holder = Holder{};
  // A holder that releases removes the file; a file locked after it was removed is no lock at all, so
  // the lock counts only while the path still names the locked file.
  for (int attempt = 0; attempt < 100; ++attempt)
  {
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
      throw std::runtime_error("Cannot create the lock file " + path + ": " + systemReason());
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0)
    {
      const int error = errno;
      if (error != EWOULDBLOCK)
      {
        ::close(fd);
        errno = error;
        throw std::runtime_error("Cannot lock " + path + ": " + systemReason());
      }
      // The holder writes its record right after locking: give it a moment when it is not there yet.
      for (int look = 0; look < 20 && m_holder.pid == 0; ++look)
      {
        m_holder = readHolder(fd);
        if (m_holder.pid == 0)
          std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
      ::close(fd);
      return false;
    }
    struct stat locked, named;
    if (::fstat(fd, &locked) == 0 && ::stat(path.c_str(), &named) == 0 && locked.st_dev == named.st_dev &&
        locked.st_ino == named.st_ino)
    {
      const Holder self = currentProcess();
      const std::string record = std::to_string(self.pid) + " " + self.host + "\n";
      // A record left by a crashed holder is replaced; the record is informative only.
      if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, record.data(), record.size(), 0) < 0)
      {
        ::close(fd);
        throw std::runtime_error("Cannot write the lock file " + path + ": " + systemReason());
      }
      m_path = path;
      m_fd = fd;
      return true;
    }
    ::close(fd);
  }
  throw std::runtime_error("Cannot lock " + path + ": it is removed and created again all the time");
}

void FileLock::unlock()
{
  if (m_fd < 0)
    return;
  // Removed while still locked, so that nobody can lock the old file in between and count as a holder.
  ::unlink(m_path.c_str());
  ::close(m_fd);
  m_fd = -1;
  m_path.clear();
}

} // namespace FileSystem
