// WaitResult: how a wait for the other side of the exchange ended (the awaited state or file, a time-out,
// the caller's stop request, a dead or failed partner), the last state seen and a sentence saying what
// happened, so that a host can report it as it is. A plain value.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/SolveState.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class WaitEnd : std::int32_t
{
  Reached = 0,       // the awaited state, heartbeat or file is there
  TimedOut = 1,      // the time-out passed first
  Stopped = 2,       // the caller's stop function asked to end
  PartnerDead = 3,   // the partner's heartbeat was judged dead
  PartnerFailed = 4, // the partner wrote the state Failed, which was not awaited
};

// The enumerator names; other values give "". The FromString form matches exactly and gives `fallback`
// otherwise.
OMBRIX_API std::string waitEndToString(WaitEnd end);
OMBRIX_API WaitEnd waitEndFromString(const std::string& text, WaitEnd fallback);

struct WaitResult
{
  WaitEnd end = WaitEnd::TimedOut;
  // The last state read (Unknown for waits that read no state file).
  KorvanSDK::SolveState state = KorvanSDK::SolveState::Unknown;
  // Milliseconds from the start of the wait to its end, on the steady clock.
  std::int64_t elapsed = 0;
  // What happened, in words, for example "timed out after 500 ms waiting for the client to reach
  // FinishedReading_Def_CSV_File (last seen: -1)".
  std::string message;

  bool reached() const { return end == WaitEnd::Reached; }
};

} // namespace Ombrix
