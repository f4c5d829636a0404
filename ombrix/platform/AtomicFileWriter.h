// AtomicFileWriter: replaces a file as a whole. The content goes to a temporary file beside the target,
// which commit() renames over the target, so that a reader sees the complete old or the complete new file,
// never a torn one, and a crash while writing leaves the last complete file in place. One object, one
// thread; distinct objects may replace distinct files concurrently.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace FileSystem
{

class OMBRIX_API AtomicFileWriter
{
public:
  // Creates the temporary file ".<name>.<process id>.<n>.tmp" in the target's directory (a symbolic link
  // is followed: the file it names is replaced, the link stays). `durable` also syncs the file before the
  // rename and the directory after it, so that the replacement survives a power loss. An existing target's
  // permission bits are kept. When the temporary cannot be created, isOpen() is false and commit() fails.
  explicit AtomicFileWriter(const std::string& path, bool durable = false);
  AtomicFileWriter(const AtomicFileWriter&) = delete;
  AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;
  // Without a successful commit() the temporary is removed and the target is left as it was.
  ~AtomicFileWriter();

  bool isOpen() const { return m_fd >= 0; }
  // The temporary's stream, for writing; null when not open. Do not close it.
  std::FILE* get();
  // Appends `text`; false when not open or the write failed (commit() then fails too).
  bool write(std::string_view text);
  // Flushes and closes the temporary and renames it over the target (with the syncs of a durable
  // writer). Returns false, removing the temporary and leaving the target as it was, when anything failed
  // or the writer was not open; callable once.
  bool commit();

  // Replaces `path` with `content` in one go; false when the file could not be replaced.
  static bool replace(const std::string& path, std::string_view content, bool durable = false);
  // Removes from `directory` the temporaries of the files whose names `isTarget` accepts, as a writer
  // that crashed between creating and renaming one leaves it. Call it only while no other process writes
  // those files. Returns how many were removed; a directory that cannot be listed has none.
  static std::size_t removeTemporaries(const std::string& directory,
                                       const std::function<bool(const std::string&)>& isTarget);

private:
  void discard();

  std::string m_target;
  std::string m_temporary;
  int m_fd = -1;
  // Made on the first get(): write() goes to the descriptor directly.
  std::FILE* m_file = nullptr;
  bool m_durable;
  bool m_good = true;
};

} // namespace FileSystem
