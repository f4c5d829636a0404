// ExchangeSideOptions: how one side of the exchange waits, writes and judges its partner, beyond the
// fixed behaviour of the state and alive files. The defaults keep that behaviour exactly: waits that
// poll every 100 ms and a heartbeat judged against the reader's own clock. A plain value.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

// How a reader decides that the partner's heartbeat is alive.
enum class HeartbeatJudgement : std::int32_t
{
  // The stamp in the alive file plus the grace period lies in the future of the reader's clock. Needs
  // the two sides' clocks to agree within the grace period.
  SharedClock = 0,
  // The stamp has changed within the grace period, measured on the reader's steady clock. Needs no
  // shared clock: for sides on different hosts.
  StampChanges = 1,
};

// "SharedClock", "StampChanges"; other values give "". The FromString form matches exactly and gives
// `fallback` otherwise.
OMBRIX_API std::string heartbeatJudgementToString(HeartbeatJudgement judgement);
OMBRIX_API HeartbeatJudgement heartbeatJudgementFromString(const std::string& text,
                                                           HeartbeatJudgement fallback);

struct ExchangeSideOptions
{
  // Waits also wake on the system's notification that the awaited file was replaced or finished. The
  // 100-ms polls stay as the longest time between two reads, so a partner whose changes bring no
  // notification (one on another host of a network file system) is still seen at the polling pace.
  bool notifiedWaits = false;
  // Every file written is synced to disk before it replaces the old one, and its directory after, so
  // that the last complete file survives a power loss. Costs a disk flush per file.
  bool durableWrites = false;
  HeartbeatJudgement heartbeatJudgement = HeartbeatJudgement::SharedClock;
  // Notified waits receive, but disregard, every notification: the behaviour on a file system that
  // delivers none. For tests of the polling bound.
  bool ignoreNotifications = false;
};

} // namespace Ombrix
