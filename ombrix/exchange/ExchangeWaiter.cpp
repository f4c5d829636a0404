#include "ombrix/exchange/ExchangeWaiter.h"

#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/platform/DirectoryWatcher.h"

#include <algorithm>
#include <filesystem>

namespace Ombrix
{

ExchangeWaiter::ExchangeWaiter() = default;

ExchangeWaiter::ExchangeWaiter(const std::string& path, const ExchangeSideOptions& options)
    : m_notified(options.notifiedWaits), m_deaf(options.ignoreNotifications)
{
  const std::filesystem::path file(path);
  m_directory = file.parent_path().string();
  m_name = file.filename().string();
}

ExchangeWaiter::ExchangeWaiter(const ExchangeWaiter& other)
    : m_directory(other.m_directory), m_name(other.m_name), m_notified(other.m_notified), m_deaf(other.m_deaf)
{
}

ExchangeWaiter::ExchangeWaiter(ExchangeWaiter&&) noexcept = default;

ExchangeWaiter& ExchangeWaiter::operator=(const ExchangeWaiter& other)
{
  if (this != &other)
    *this = ExchangeWaiter(other);
  return *this;
}

ExchangeWaiter& ExchangeWaiter::operator=(ExchangeWaiter&&) noexcept = default;

ExchangeWaiter::~ExchangeWaiter() = default;

void ExchangeWaiter::arm()
{
  if (!m_notified)
    return;
  // A directory that could not be watched (not there yet, say) is tried again at the next wait.
  if (!m_watcher || !m_watcher->isWatching())
  {
    m_watcher = std::make_unique<FileSystem::DirectoryWatcher>(m_directory);
    m_watcher->setDeaf(m_deaf);
  }
  m_watcher->discardPending();
}

bool ExchangeWaiter::pause(std::chrono::milliseconds limit)
{
  if (!m_notified)
  {
    ExchangeClock::sleep(limit);
    return false;
  }
  if (!m_watcher)
    arm();
  return m_watcher->waitForChange(m_name, limit);
}

std::chrono::milliseconds ExchangeWaiter::pauseFor(std::chrono::milliseconds poll,
                                                   ExchangeClock::WallTime start, int timeout) const
{
  if (!m_notified || timeout < 0)
    return poll;
  const std::int64_t left = static_cast<std::int64_t>(timeout) + 1 - ExchangeClock::millisecondsSince(start);
  return std::chrono::milliseconds(std::clamp<std::int64_t>(left, 0, poll.count()));
}

} // namespace Ombrix
