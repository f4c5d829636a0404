// AliveFileReaderWriter: the heartbeat of one side of the exchange. As a writer it owns a background
// thread that rewrites the alive file with the current time every interval; as a checker it judges the
// other side alive while the file's stamp is younger than the grace period. start(), stop() and the checks
// are called from one thread; the writer thread only reads the interval and the stop request.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/ExchangeSideOptions.h"
#include "ombrix/exchange/ExchangeWaiter.h"
#include "ombrix/exchange/WaitResult.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace Ombrix
{

// File content, ASCII without a line end: seconds since 1970-01-01 UTC, then "\t<END>", for example
// "1709647629\t<END>". A reader takes a file without "<END>" for one that is still being written.
class OMBRIX_API AliveFileReaderWriter
{
public:
  AliveFileReaderWriter();
  explicit AliveFileReaderWriter(const std::string& path);
  AliveFileReaderWriter(const AliveFileReaderWriter&) = delete;
  AliveFileReaderWriter& operator=(const AliveFileReaderWriter&) = delete;
  // Stops the writer thread, if any.
  virtual ~AliveFileReaderWriter();

  // Starts the writer thread unless one runs already. The thread writes at once, then about every
  // interval seconds; with a negative interval it writes once and only waits to be stopped. A round whose
  // file cannot be written in ten tries 200 ms apart is skipped without a report. Each write replaces the
  // file through a temporary one, so that a reader never sees it torn or missing.
  // Throws std::system_error (resource_unavailable_try_again) when no thread can be created.
  virtual void start();
  // Asks the writer thread to end and joins it; returns within about a second (plus up to 1.8 s when the
  // thread is retrying a write). Does nothing without a thread. Throws std::system_error
  // (resource_deadlock_would_occur) when called from the writer thread itself.
  virtual void stop();
  virtual bool isRunning() const;

  // Judges the writer alive: always with a negative grace period; without reading while the last accepted
  // stamp plus the grace period lies in the future; otherwise from the file, read up to ten times 200 ms
  // apart until it ends in "<END>". When the file cannot be opened in any of the ten tries the previous
  // verdict is returned unchanged, so that a file caught while being replaced does not flip it.
  // Under HeartbeatJudgement::StampChanges the writer is alive instead while the stamp read has changed
  // within the grace period, measured on this process's steady clock (the first stamp seen counts as a
  // change); the file is then read at most every 100 ms while the verdict is alive, and a file missing
  // or incomplete through all ten tries counts as no change.
  virtual bool checkAlive() const;
  // The last verdict, without reading anything.
  virtual bool isAlive() const;
  // Checks every 100 ms until alive (true), until `stop` returns true (false), or until `timeout`
  // milliseconds have passed (negative: no limit), then returns one last check.
  virtual bool waitForAlive(int timeout) const;
  virtual bool waitForAlive(std::function<bool()> stop, int timeout) const;

  // The wait of waitForAlive, telling why it ended: Reached (alive), TimedOut or Stopped, with a message
  // naming the file.
  WaitResult waitUntilAlive(const std::function<bool()>& stop, int timeout) const;
  // Writes the file once with the current time, as each round of the writer thread does (up to ten tries
  // 200 ms apart); returns whether it was written. For a host that beats the heartbeat from its own loop.
  bool writeStamp() const;

  // The options of the side this heartbeat belongs to: notified waits, durable writes and the
  // judgement of the stamp. Set before start() and before the first check.
  void setSideOptions(const ExchangeSideOptions& options);
  const ExchangeSideOptions& getSideOptions() const { return m_sideOptions; }
  const std::string& getPath() const { return m_path; }

  // Seconds between two writes (default 10). Set before start(): the running thread reads it unguarded.
  int getInterval() const;
  void setInterval(int seconds);
  // Seconds for which a stamp counts as alive (default 30); negative switches checking off.
  int getGracePeriod() const;
  void setGracePeriod(int seconds);

protected:
  void setAlive(bool alive) const;

private:
  enum class ReadOutcome
  {
    Complete,   // a stamp followed by "<END>"
    Incomplete, // some try found the file without "<END>"
    Unopened,   // no try could open the file
  };

  void writeFile();
  // The file read as checkAlive() reads it: up to ten tries, 200 ms apart, until it ends in "<END>".
  ReadOutcome readStamp(std::int64_t& stamp) const;
  bool checkStampChanges() const;

  std::unique_ptr<std::thread> m_thread;
  std::atomic<bool> m_stop;
  int m_interval;
  int m_gracePeriod;
  std::string m_path;
  // Checking is a const operation that remembers what it saw.
  mutable std::int64_t m_lastStamp;
  mutable bool m_alive;
  ExchangeSideOptions m_sideOptions;
  mutable ExchangeWaiter m_waiter;
  // The judgement by changes: the last stamp seen, when it was first seen and when the file was last read.
  mutable std::int64_t m_seenStamp = 0;
  mutable std::optional<std::chrono::steady_clock::time_point> m_lastChange;
  mutable std::chrono::steady_clock::time_point m_lastRead;
};

} // namespace Ombrix
