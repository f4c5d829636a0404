// ExchangeClock: the clocks of the exchange protocol in one place. Elapsed times of the wait loops are
// taken on the system clock, pauses on the steady clock, heartbeat stamps from the C library's time().
// Stateless; safe from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <thread>

namespace Ombrix
{

class ExchangeClock
{
public:
  using WallTime = std::chrono::system_clock::time_point;

  static WallTime wallNow() { return std::chrono::system_clock::now(); }

  // Whole milliseconds from `start` to now on the system clock, truncated; negative if the clock was set
  // back meanwhile.
  static std::int64_t millisecondsSince(WallTime start)
  {
    return std::chrono::duration_cast<std::chrono::milliseconds>(wallNow() - start).count();
  }

  // Whole seconds since 1970-01-01 UTC.
  static std::int64_t secondsSinceEpoch() { return static_cast<std::int64_t>(std::time(nullptr)); }

  // Blocks the calling thread for at least `duration`, measured on the steady clock, so that setting the
  // system clock does not stretch or cut a pause.
  static void sleep(std::chrono::milliseconds duration)
  {
    std::this_thread::sleep_until(std::chrono::steady_clock::now() + duration);
  }
};

} // namespace Ombrix
