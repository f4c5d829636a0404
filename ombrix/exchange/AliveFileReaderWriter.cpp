#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/platform/AtomicFileWriter.h"
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
  if (m_sideOptions.heartbeatJudgement == HeartbeatJudgement::StampChanges)
    return checkStampChanges();
  const std::int64_t now = ExchangeClock::secondsSinceEpoch();
  if (m_lastStamp >= 1 && isFresh(m_lastStamp, m_gracePeriod, now))
  {
    setAlive(true);
    return true;
  }
  std::int64_t stamp = -1;
  switch (readStamp(stamp))
  {
  case ReadOutcome::Complete:
  {
    const bool alive = isFresh(stamp, m_gracePeriod, now);
    setAlive(alive);
    if (alive)
      m_lastStamp = stamp;
    return alive;
  }
  case ReadOutcome::Incomplete:
    setAlive(false);
    return false;
  case ReadOutcome::Unopened:
    break;
  }
  return m_alive;
}

bool AliveFileReaderWriter::checkStampChanges() const
{
  using Clock = std::chrono::steady_clock;
  if (m_alive && m_lastChange && Clock::now() - m_lastRead < pollPause)
    return true;
  std::int64_t stamp = -1;
  const ReadOutcome outcome = readStamp(stamp);
  m_lastRead = Clock::now();
  if (outcome == ReadOutcome::Complete && (!m_lastChange || stamp != m_seenStamp))
  {
    m_seenStamp = stamp;
    m_lastChange = m_lastRead;
  }
  const bool alive = m_lastChange && m_lastRead - *m_lastChange < std::chrono::seconds(m_gracePeriod);
  setAlive(alive);
  return alive;
}

AliveFileReaderWriter::ReadOutcome AliveFileReaderWriter::readStamp(std::int64_t& stamp) const
{
  ReadOutcome outcome = ReadOutcome::Unopened;
  for (int attempt = 1; attempt <= fileTries; ++attempt)
  {
    FileSystem::ZQifstream in(m_path);
    if (in)
    {
      if (!(in >> stamp))
        stamp = -1;
      std::string word;
      in >> word;
      // A word with a NUL byte (a file zero-filled by a power loss) is no end marker either.
      if (word == "<END>")
        return ReadOutcome::Complete;
      // No end marker: possibly half-written, so not alive for now; try again.
      outcome = ReadOutcome::Incomplete;
    }
    if (attempt < fileTries)
      m_waiter.pause(retryPause);
  }
  return outcome;
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
  return waitUntilAlive(stop, timeout).reached();
}

WaitResult AliveFileReaderWriter::waitUntilAlive(const std::function<bool()>& stop, int timeout) const
{
  const auto steadyStart = std::chrono::steady_clock::now();
  const ExchangeClock::WallTime start = ExchangeClock::wallNow();
  m_waiter.arm();
  WaitResult result;
  while (true)
  {
    if (checkAlive())
    {
      result.end = WaitEnd::Reached;
      break;
    }
    if (stop && stop())
    {
      result.end = WaitEnd::Stopped;
      break;
    }
    m_waiter.pause(m_waiter.pauseFor(pollPause, start, timeout));
    if (timeout < 0)
      continue;
    if (ExchangeClock::millisecondsSince(start) > timeout)
    {
      result.end = checkAlive() ? WaitEnd::Reached : WaitEnd::TimedOut;
      break;
    }
  }
  result.elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - steadyStart)
          .count();
  switch (result.end)
  {
  case WaitEnd::Reached:
    result.message = "heartbeat in " + m_path + " is alive";
    break;
  case WaitEnd::Stopped:
    result.message =
        "stopped after " + std::to_string(result.elapsed) + " ms waiting for a heartbeat in " + m_path;
    break;
  default:
    result.message = "no heartbeat in " + m_path + " within " + std::to_string(timeout) + " ms";
    break;
  }
  return result;
}

bool AliveFileReaderWriter::writeStamp() const
{
  const std::string content = std::to_string(ExchangeClock::secondsSinceEpoch()) + "\t<END>";
  for (int attempt = 1; attempt <= fileTries; ++attempt)
  {
    if (FileSystem::AtomicFileWriter::replace(m_path, content, m_sideOptions.durableWrites))
      return true;
    if (attempt < fileTries)
      ExchangeClock::sleep(retryPause);
  }
  return false;
}

void AliveFileReaderWriter::setSideOptions(const ExchangeSideOptions& options)
{
  m_sideOptions = options;
  m_waiter = ExchangeWaiter(m_path, options);
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
    writeStamp();

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
