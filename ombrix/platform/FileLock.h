// FileLock: an exclusive, advisory lock on a lock file, held with flock() while the object holds it. The
// system releases it when the holder's process ends in any way, so a crashed holder never blocks the next
// one. The lock file records the holder's process ID and host name. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>

namespace FileSystem
{

class OMBRIX_API FileLock
{
public:
  // Who holds a lock, as its lock file records it; pid 0 and an empty host when the record is unreadable.
  struct Holder
  {
    long pid = 0;
    std::string host;
  };

  FileLock() = default;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  // Releases a held lock.
  ~FileLock();

  // Takes the lock on `path` without waiting, creating the file if needed, and records this process in it.
  // Returns false when another holder has it (holder() then tells who, as far as its record says).
  // Throws std::runtime_error naming the path and the system's reason when the lock file cannot be
  // created or locked for any other reason. A held lock is released first.
  bool tryLock(const std::string& path);
  // Removes the lock file and releases the lock; nothing when none is held.
  void unlock();
  bool isLocked() const { return m_fd >= 0; }
  // The other holder found by the last failed tryLock().
  const Holder& holder() const { return m_holder; }

  // This process and host.
  static Holder currentProcess();

private:
  std::string m_path;
  int m_fd = -1;
  Holder m_holder;
};

} // namespace FileSystem
