#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/platform/File.h"

#include <chrono>
#include <utility>

namespace Ombrix
{
namespace
{

constexpr int fileTries = 10;
constexpr std::chrono::milliseconds retryPause{200};
constexpr std::chrono::milliseconds pollPause{100};
// The writer sleeps in steps of this length, which bounds how long stop() waits.
constexpr std::chrono::milliseconds stopStep{1000};

// stamp + grace > now, without overflowing for absurd stamps read from a file.
bool isFresh(std::int64_t stamp, int gracePeriod, std::int64_t now)
{
  return stamp > now - gracePeriod;
}

} // namespace

AliveFileReaderWriter::AliveFileReaderWriter() : AliveFileReaderWriter(std::string()) {}

AliveFileReaderWriter::AliveFileReaderWriter(const std::string& path)
    : m_stop(false), m_interval(10), m_gracePeriod(30), m_path(path), m_lastStamp(-1), m_alive(false)
{
}

AliveFileReaderWriter::~AliveFileReaderWriter()
{
  stop();
}

void AliveFileReaderWriter::start()
{
  if (m_thread)
    return;
  m_stop.store(false);
  m_thread = std::make_unique<std::thread>(&AliveFileReaderWriter::writeFile, this);
}

void AliveFileReaderWriter::stop()
{
  if (!m_thread)
    return;
  m_stop.store(true);
  // join() itself refuses a call from the writer thread with resource_deadlock_would_occur.
  m_thread->join();
  m_thread.reset();
}

bool AliveFileReaderWriter::isRunning() const
{
  return m_thread != nullptr;
}

bool AliveFileReaderWriter::checkAlive() const
{
  if (m_gracePeriod < 0)
  {
    setAlive(true);
    return true;
  }
  const std::int64_t now = ExchangeClock::secondsSinceEpoch();
  if (m_lastStamp >= 1 && isFresh(m_lastStamp, m_gracePeriod, now))
  {
    setAlive(true);
    return true;
  }
  for (int attempt = 1; attempt <= fileTries; ++attempt)
  {
    FileSystem::ZQifstream in(m_path);
    if (in)
    {
      std::int64_t stamp = -1;
      if (!(in >> stamp))
        stamp = -1;
      std::string word;
      in >> word;
      if (word == "<END>")
      {
        const bool alive = isFresh(stamp, m_gracePeriod, now);
        setAlive(alive);
        if (alive)
          m_lastStamp = stamp;
        return alive;
      }
      // No end marker: possibly half-written, so not alive for now; try again.
      setAlive(false);
    }
    if (attempt < fileTries)
      ExchangeClock::sleep(retryPause);
  }
  return m_alive;
}

bool AliveFileReaderWriter::isAlive() const
{
  return m_alive;
}

bool AliveFileReaderWriter::waitForAlive(int timeout) const
{
  return waitForAlive(std::function<bool()>(), timeout);
}

bool AliveFileReaderWriter::waitForAlive(std::function<bool()> stop, int timeout) const
{
  const ExchangeClock::WallTime start = ExchangeClock::wallNow();
  while (true)
  {
    if (checkAlive())
      return true;
    if (stop && stop())
      return false;
    ExchangeClock::sleep(pollPause);
    if (timeout < 0)
      continue;
    if (ExchangeClock::millisecondsSince(start) > timeout)
      return checkAlive();
  }
}

int AliveFileReaderWriter::getInterval() const
{
  return m_interval;
}

void AliveFileReaderWriter::setInterval(int seconds)
{
  m_interval = seconds;
}

int AliveFileReaderWriter::getGracePeriod() const
{
  return m_gracePeriod;
}

void AliveFileReaderWriter::setGracePeriod(int seconds)
{
  m_gracePeriod = seconds;
}

void AliveFileReaderWriter::setAlive(bool alive) const
{
  m_alive = alive;
}

void AliveFileReaderWriter::writeFile()
{
  while (true)
  {
    const std::int64_t now = ExchangeClock::secondsSinceEpoch();
    for (int attempt = 1; attempt <= fileTries; ++attempt)
    {
      FileSystem::ZQofstream out(m_path);
      if (out)
      {
        out << now << "\t<END>";
        out.close();
        break;
      }
      out.close();
      if (attempt < fileTries)
        ExchangeClock::sleep(retryPause);
    }

    const ExchangeClock::WallTime roundStart = ExchangeClock::wallNow();
    while (true)
    {
      ExchangeClock::sleep(stopStep);
      if (m_stop.load())
        return;
      // 64-bit, so that a huge interval cannot overflow into a negative one.
      const std::int64_t intervalMs = static_cast<std::int64_t>(m_interval) * 1000;
      if (intervalMs < 0)
        continue;
      if (ExchangeClock::millisecondsSince(roundStart) > intervalMs)
        break;
    }
  }
}

} // namespace Ombrix
