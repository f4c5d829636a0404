#include "ombrix/platform/DirectoryWatcher.h"

#include <climits>
#include <cstring>
#include <thread>

#if defined(__linux__)
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>
#endif

namespace FileSystem
{

#if defined(__linux__)

DirectoryWatcher::DirectoryWatcher(const std::string& directory)
{
  m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (m_fd < 0)
    return;
  // A writer that replaces a file renames it into place (IN_MOVED_TO); one that rewrites it in place
  // is done when it closes it (IN_CLOSE_WRITE).
  if (::inotify_add_watch(m_fd, directory.empty() ? "." : directory.c_str(),
                          IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR) < 0)
  {
    ::close(m_fd);
    m_fd = -1;
  }
}

DirectoryWatcher::~DirectoryWatcher()
{
  if (m_fd >= 0)
    ::close(m_fd);
}

void DirectoryWatcher::discardPending()
{
  if (m_fd >= 0)
    consume(std::string());
}

bool DirectoryWatcher::consume(const std::string& name)
{
  alignas(inotify_event) char buffer[4096];
  bool changed = false;
  while (true)
  {
    const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
    if (got <= 0)
      return changed && !m_deaf;
    for (ssize_t at = 0; at < got;)
    {
      inotify_event event;
      std::memcpy(&event, buffer + at, sizeof event);
      const char* eventName = buffer + at + sizeof event;
      if (event.mask & (IN_Q_OVERFLOW | IN_IGNORED))
        changed = true;
      else if (event.len > 0 && !name.empty() && name == eventName)
        changed = true;
      if (event.mask & IN_IGNORED)
      {
        // The directory was removed or unmounted: no more notifications will come.
        ::close(m_fd);
        m_fd = -1;
        return !m_deaf;
      }
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
    // A buffer that had room for one more event of the longest name was all there was.
    if (got + static_cast<ssize_t>(sizeof(inotify_event) + NAME_MAX + 1) <=
        static_cast<ssize_t>(sizeof buffer))
      return changed && !m_deaf;
  }
}

bool DirectoryWatcher::waitForChange(const std::string& name, std::chrono::milliseconds limit)
{
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + limit;
  while (m_fd >= 0)
  {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0)
      return false;
    pollfd watched{m_fd, POLLIN, 0};
    const int ready = ::poll(&watched, 1, static_cast<int>(left));
    if (ready > 0 && consume(name))
      return true;
  }
  std::this_thread::sleep_until(deadline);
  return false;
}

#else

DirectoryWatcher::DirectoryWatcher(const std::string&) {}

DirectoryWatcher::~DirectoryWatcher() = default;

void DirectoryWatcher::discardPending() {}

bool DirectoryWatcher::consume(const std::string&)
{
  return false;
}

bool DirectoryWatcher::waitForChange(const std::string&, std::chrono::milliseconds limit)
{
  std::this_thread::sleep_for(limit);
  return false;
}

#endif

} // namespace FileSystem
