// StateFileReaderWriter: writes one state file of the exchange ("out.state" or "in.state"), reads it back
// and waits for the other side's state, polling every 100 ms (or, with notified waits, also woken when the
// file is replaced). Takes no locks: one object, one thread.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/ExchangeSideOptions.h"
#include "ombrix/exchange/ExchangeWaiter.h"
#include "ombrix/exchange/WaitResult.h"
#include "ombrix/sdk/SolveState.h"

#include <functional>
#include <set>
#include <string>

namespace Ombrix
{

class AliveFileReaderWriter;

// File content, ASCII without a line end: the state's number, a tab, its text, then "\t<END>", for
// example "2016\tCFDSolver_SolveStarted\t<END>". A reader takes a file without "<END>" for one that is
// still being written.
class OMBRIX_API StateFileReaderWriter final
{
public:
  StateFileReaderWriter();
  explicit StateFileReaderWriter(const std::string& path);
  StateFileReaderWriter(const StateFileReaderWriter&) = default;
  StateFileReaderWriter(StateFileReaderWriter&&) = default;
  StateFileReaderWriter& operator=(const StateFileReaderWriter&) = default;
  StateFileReaderWriter& operator=(StateFileReaderWriter&&) = default;
  // Not virtual: objects are held by value, and the class is final, so none is deleted through a base.
  ~StateFileReaderWriter() = default;

  // Replaces the file's content with `state` and records it as the last known state. The content goes to
  // a temporary file that is renamed over the old one, so that a reader never sees a torn file and a
  // crash keeps the previous state. A write is made once whatever `tries` says, and a file that cannot be
  // written is not reported: returns true whenever the path is not empty, false (and does nothing) for an
  // empty path.
  // Throws std::logic_error("Not implemented") for a state without a text (Unknown, or a value outside
  // SolveState), after the file was replaced by an empty one; the last state stays unchanged.
  virtual bool writeState(KorvanSDK::SolveState state, int tries) const;

  // Reads the file, trying up to `tries` times 100 ms apart until its first field is an integer, and
  // records the result as the last known state. Returns NoFile (-1) for a missing file, for `tries` < 1
  // and when no try gave a number; Unknown (0) when the number is not followed by "<END>" (file still being
  // written), or the rest of its line holds a NUL byte (a file zero-filled by a power loss); otherwise the
  // number, even when it is not a SolveState. With notified waits a retry comes as soon as the file
  // changes.
  virtual KorvanSDK::SolveState readState(int tries);

  // Read the file (readState(5)) every 100 ms until it shows one of `states`, `stop` returns true or
  // `timeout` milliseconds have passed (negative: no limit). Returns the last state read, which after a
  // time-out or a stop need not be in `states`: the caller tests it. An empty `stop` never stops. With
  // notified waits a read also follows each replacement of the file, and the last pause ends when the
  // time-out passes.
  virtual KorvanSDK::SolveState waitForState(const std::set<KorvanSDK::SolveState>& states, int timeout);
  virtual KorvanSDK::SolveState waitForState(const std::set<KorvanSDK::SolveState>& states,
                                             std::function<bool()> stop, int timeout);
  virtual KorvanSDK::SolveState waitForState(const KorvanSDK::SolveState& state, int timeout);
  virtual KorvanSDK::SolveState waitForState(const KorvanSDK::SolveState& state, std::function<bool()> stop,
                                             int timeout);

  // The wait of waitForState, telling why it ended: Reached (the state read is one of `states`, also when
  // read as the time-out passed), TimedOut, Stopped (by `stop`), or PartnerDead when `partner`, the other
  // side's heartbeat, is checked (before `stop`, after every read) and judged dead. Null `partner` and
  // empty `stop` are never asked. The message names the file, the states awaited and the last one read.
  WaitResult waitFor(const std::set<KorvanSDK::SolveState>& states, const std::function<bool()>& stop,
                     int timeout, const AliveFileReaderWriter* partner = nullptr);

  // The options of the side this file belongs to: notified waits and durable writes. The defaults keep
  // the behaviour described here.
  void setSideOptions(const ExchangeSideOptions& options);
  const ExchangeSideOptions& getSideOptions() const { return m_sideOptions; }

  // The last state read or written (Unknown before any), without touching the file.
  virtual KorvanSDK::SolveState getState();
  virtual bool exists() const;

protected:
  void setState(KorvanSDK::SolveState state) const;

private:
  std::string m_path;
  mutable KorvanSDK::SolveState m_state;
  ExchangeSideOptions m_sideOptions;
  ExchangeWaiter m_waiter;
};

} // namespace Ombrix
