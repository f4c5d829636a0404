// Shared by the exchange and scenario tests: elapsed times, alive-file stamps, polling for a condition, and
// a forked writer or lock holder that the test kills like a crashed side.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

// Polls `condition` every 10 ms for at most `limit`; true when it held.
template <typename Condition> bool eventually(Condition condition, std::chrono::milliseconds limit)
{
  const auto deadline = SteadyClock::now() + limit;
  while (!condition())
  {
    if (SteadyClock::now() > deadline)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

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
      ::close(ready[0]);
      // Nothing may leave the child but its exit: an escaping exception would run the test program on.
      try
      {
        body(
            [&]
            {
              const char byte = 1;
              if (::write(ready[1], &byte, 1) != 1)
                std::_Exit(1);
            });
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
