// DirectoryWatcher: wakes a waiting thread when a file of one directory has been finished (closed after
// writing) or renamed into place, through the system's file notifications (inotify on Linux). A file
// changed from another host of a network file system, or on a system without notifications, is never
// reported, so every wait is bounded by its caller. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <chrono>
#include <string>

namespace FileSystem
{

class OMBRIX_API DirectoryWatcher
{
public:
  // Starts watching `directory`. When the system offers no notifications, the directory cannot be
  // watched or the system's limit of watches is reached, isWatching() is false and the waits only sleep.
  explicit DirectoryWatcher(const std::string& directory);
  DirectoryWatcher(const DirectoryWatcher&) = delete;
  DirectoryWatcher& operator=(const DirectoryWatcher&) = delete;
  ~DirectoryWatcher();

  bool isWatching() const { return m_fd >= 0; }
  // Consumes the notifications of a file system that delivers none: waits then run to their limit.
  // For tests of the polling that bounds a wait.
  void setDeaf(bool deaf) { m_deaf = deaf; }

  // Forgets the changes reported so far; a wait then sees only later ones. Call it before reading the
  // file whose next change is awaited, so that no change between the read and the wait is missed.
  void discardPending();
  // Blocks until the file `name` of the directory is reported changed (true; also when the system lost
  // notifications, or the directory itself went away, since any file may then have changed) or until
  // `limit` has passed (false). Without a watch it sleeps for `limit` and returns false.
  bool waitForChange(const std::string& name, std::chrono::milliseconds limit);

private:
  // Reads the pending notifications; true when one concerns `name` (or may concern any file).
  bool consume(const std::string& name);

  int m_fd = -1;
  bool m_deaf = false;
};

} // namespace FileSystem
