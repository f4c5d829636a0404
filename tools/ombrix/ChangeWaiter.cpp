#include "ChangeWaiter.h"

#include "Interrupt.h"

#include <algorithm>

namespace Ombrix::Tools
{

namespace fs = std::filesystem;

ChangeWaiter::ChangeWaiter(const std::string& directory) : m_directory(directory), m_watcher(directory)
{
  m_last = snapshot();
}

ChangeWaiter::Snapshot ChangeWaiter::snapshot() const
{
  Snapshot files;
  std::error_code error;
  for (fs::directory_iterator it(m_directory, error), end; !error && it != end; it.increment(error))
  {
    std::error_code statError;
    const auto changed = it->last_write_time(statError);
    const auto size = it->is_regular_file(statError) ? it->file_size(statError) : 0;
    if (!statError)
      files[it->path().filename().string()] = {changed, size};
  }
  return files;
}

bool ChangeWaiter::waitForChange(std::chrono::milliseconds limit)
{
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + limit;
  while (!Interrupt::requested())
  {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    Snapshot now = snapshot();
    if (now != m_last)
    {
      m_last = std::move(now);
      return true;
    }
    if (left.count() <= 0)
      return false;
    m_watcher.waitForChange("out.state", std::min(left, std::chrono::milliseconds(50)));
  }
  return false;
}

} // namespace Ombrix::Tools
