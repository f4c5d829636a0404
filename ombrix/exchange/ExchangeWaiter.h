// ExchangeWaiter: the pause of a wait loop between two reads of a file that the other side writes. By
// default a plain sleep; with notified waits it ends as soon as the system reports the file replaced or
// finished, and never lasts longer than the sleep would. The notification watch is set up at the first
// wait and kept; a copy has the same settings but sets up a watch of its own. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/exchange/ExchangeSideOptions.h"

#include <chrono>
#include <memory>
#include <string>

namespace FileSystem
{
class DirectoryWatcher;
}

namespace Ombrix
{

class OMBRIX_API ExchangeWaiter
{
public:
  // Plain sleeps.
  ExchangeWaiter();
  // Pauses for the file `path`, notified when `options` ask for it.
  ExchangeWaiter(const std::string& path, const ExchangeSideOptions& options);
  ExchangeWaiter(const ExchangeWaiter& other);
  ExchangeWaiter(ExchangeWaiter&&) noexcept;
  ExchangeWaiter& operator=(const ExchangeWaiter& other);
  ExchangeWaiter& operator=(ExchangeWaiter&&) noexcept;
  ~ExchangeWaiter();

  bool isNotified() const { return m_notified; }

  // Call before the first read of a wait: sets up the watch if needed and forgets earlier changes, so
  // that a change after that read ends the next pause.
  void arm();
  // Sleeps for `limit`, or, when notified, until the file changes or `limit` has passed. Returns true when
  // a change of the file ended the pause.
  bool pause(std::chrono::milliseconds limit);
  // The pause after a read in a wait that started at `start` with `timeout` milliseconds (negative: none):
  // `poll` when sleeping, whose pace is fixed; when notified, `poll` at most and no longer than until the
  // time-out has passed, so that a wait woken early never overshoots it.
  std::chrono::milliseconds pauseFor(std::chrono::milliseconds poll, ExchangeClock::WallTime start,
                                     int timeout) const;

private:
  std::string m_directory;
  std::string m_name;
  bool m_notified = false;
  bool m_deaf = false;
  std::unique_ptr<FileSystem::DirectoryWatcher> m_watcher;
};

} // namespace Ombrix
