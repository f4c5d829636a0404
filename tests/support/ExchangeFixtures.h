// Shared by the exchange and scenario tests: elapsed times, alive-file stamps, a scripted heartbeat, polling
// for a condition, and a forked writer or lock holder that the test kills like a crashed side.
#pragma once

#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/WaitResult.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace OmbrixTest
{

using SteadyClock = std::chrono::steady_clock;

inline std::int64_t millisecondsSince(SteadyClock::time_point start)
{
  return std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - start).count();
}

// A complete alive file stamped `secondsFromNow` from the current time.
inline std::string aliveStamp(std::int64_t secondsFromNow = 0)
{
  return std::to_string(static_cast<std::int64_t>(std::time(nullptr)) + secondsFromNow) + "\t<END>";
}

// The stamp of a complete alive file's `content`, or -1 when it is not "<digits>\t<END>".
inline std::int64_t stampOf(const std::string& content)
{
  const std::size_t tab = content.find('\t');
  if (tab == 0 || tab == std::string::npos || content.substr(tab) != "\t<END>" ||
      content.find_first_not_of("0123456789") != tab)
    return -1;
  return std::stoll(content.substr(0, tab));
}

// How a wait ended and its message; a stopped wait's message starts with "stopped after <elapsed> ms".
inline void expectEnd(const Ombrix::WaitResult& result, Ombrix::WaitEnd end, const std::string& message)
{
  EXPECT_EQ(Ombrix::waitEndToString(result.end), Ombrix::waitEndToString(end)) << result.message;
  EXPECT_EQ(result.message, end == Ombrix::WaitEnd::Stopped
                                ? "stopped after " + std::to_string(result.elapsed) + " ms" + message
                                : message);
}

// Polls `condition` every 10 ms for at most `limit`; true when it held.
template <typename Condition> bool eventually(Condition condition, std::chrono::milliseconds limit)
{
  for (const auto deadline = SteadyClock::now() + limit; !condition();
       std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    if (SteadyClock::now() > deadline)
      return false;
  return true;
}

// A partner heartbeat that counts its checks; with a script, it replays verdicts instead of reading the
// file (the last one repeats).
class ScriptedHeartbeat : public Ombrix::AliveFileReaderWriter
{
public:
  ScriptedHeartbeat(const std::string& path, std::vector<bool> script)
      : Ombrix::AliveFileReaderWriter(path), m_script(std::move(script))
  {
  }

  bool checkAlive() const override
  {
    ++checks;
    if (m_script.empty())
      return Ombrix::AliveFileReaderWriter::checkAlive();
    const bool alive = m_script[std::min<std::size_t>(checks, m_script.size()) - 1];
    setAlive(alive);
    return alive;
  }

  mutable int checks = 0;

private:
  std::vector<bool> m_script;
};

// A forked copy of this process running `body`, which calls its argument once it is ready (holds a lock,
// say); the constructor returns only then, so that a kill never strikes a child still being scheduled.
// Killed with SIGKILL and reaped when the object goes.
class ForkedChild
{
public:
  explicit ForkedChild(const std::function<void(const std::function<void()>&)>& body)
  {
    int ready[2];
    if (::pipe(ready) != 0)
      throw std::runtime_error("no pipe");
    m_pid = ::fork();
    if (m_pid == 0)
    {
      // Nothing may leave the child but its exit: an escaping exception would run the test program on. A
      // failed write reaches the parent as the end of the pipe.
      try
      {
        body([&] { static_cast<void>(::write(ready[1], "", 1) == 1); });
      }
      catch (...)
      {
        std::_Exit(1);
      }
      std::_Exit(0);
    }
    ::close(ready[1]);
    char byte = 0;
    const bool started = m_pid > 0 && ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
    if (!started)
    {
      kill();
      throw std::runtime_error("the child process did not start");
    }
  }
  ForkedChild(const ForkedChild&) = delete;
  ForkedChild& operator=(const ForkedChild&) = delete;
  ~ForkedChild() { kill(); }

  pid_t pid() const { return m_pid; }
  // The child's exit code (-signal when a signal ended it), or nullopt when it still runs after `limit`: it
  // is then killed, so that a test fails instead of hanging.
  std::optional<int> wait(std::chrono::milliseconds limit = std::chrono::seconds(60))
  {
    int status = 0;
    if (m_pid <= 0 || !eventually([&] { return ::waitpid(m_pid, &status, WNOHANG) == m_pid; }, limit))
    {
      kill();
      return std::nullopt;
    }
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  // Kills and reaps the child; does nothing once done.
  void kill()
  {
    if (m_pid <= 0)
      return;
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
  }

private:
  pid_t m_pid = -1;
};

} // namespace OmbrixTest
