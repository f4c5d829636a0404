// ChangeWaiter: waits until a file of an exchange directory changes. Woken at once by the system's
// notification when the solver's state file is replaced (which it is at every step of the handshake), and
// otherwise looking at the directory's files every 50 ms, so that every other change is seen too. One
// thread at a time.
#pragma once

#include "ombrix/platform/DirectoryWatcher.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <utility>

namespace Ombrix::Tools
{

class ChangeWaiter
{
public:
  explicit ChangeWaiter(const std::string& directory);

  // True when a file was added, removed or changed since the last call (or construction); false after
  // `limit`, or at once when an interrupt was requested.
  bool waitForChange(std::chrono::milliseconds limit);

private:
  using Snapshot = std::map<std::string, std::pair<std::filesystem::file_time_type, std::uintmax_t>>;
  Snapshot snapshot() const;

  std::string m_directory;
  FileSystem::DirectoryWatcher m_watcher;
  Snapshot m_last;
};

} // namespace Ombrix::Tools
