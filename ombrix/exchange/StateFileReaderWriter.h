// StateFileReaderWriter: writes one state file of the exchange ("out.state" or "in.state"), reads it back
// and waits for the other side's state, polling every 100 ms. Takes no locks: one object, one thread.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/SolveState.h"

#include <functional>
#include <set>
#include <string>

namespace Ombrix
{

// File content, ASCII without a line end: the state's number, a tab, its text, then "\t<END>", for
// example "2016\tCFDSolver_SolveStarted\t<END>". A reader takes a file without "<END>" for one that is
// still being written.
class OMBRIX_API StateFileReaderWriter
{
public:
  StateFileReaderWriter();
  explicit StateFileReaderWriter(const std::string& path);
  StateFileReaderWriter(const StateFileReaderWriter&) = default;
  StateFileReaderWriter(StateFileReaderWriter&&) = default;
  StateFileReaderWriter& operator=(const StateFileReaderWriter&) = default;
  StateFileReaderWriter& operator=(StateFileReaderWriter&&) = default;
  // Not virtual: objects are held by value and never deleted through a base pointer.
  ~StateFileReaderWriter() = default;

  // Replaces the file's content with `state` and records it as the last known state. A write is made
  // once whatever `tries` says, and a stream that fails to open or write is not reported: returns true
  // whenever the path is not empty, false (and does nothing) for an empty path.
  // Throws std::logic_error("Not implemented") for a state without a text (Unknown, or a value outside
  // SolveState), after the file was opened: the file is then left empty and the last state unchanged.
  virtual bool writeState(KorvanSDK::SolveState state, int tries) const;

  // Reads the file, trying up to `tries` times 100 ms apart until its first field is an integer, and
  // records the result as the last known state. Returns NoFile (-1) for a missing file, for `tries` < 1
  // and when no try gave a number; Unknown (0) when the number is not followed by "<END>" (file still being
  // written); otherwise the number, even when it is not a SolveState.
  virtual KorvanSDK::SolveState readState(int tries);

  // Read the file (readState(5)) every 100 ms until it shows one of `states`, `stop` returns true or
  // `timeout` milliseconds have passed (negative: no limit). Returns the last state read, which after a
  // time-out or a stop need not be in `states`: the caller tests it. An empty `stop` never stops.
  virtual KorvanSDK::SolveState waitForState(const std::set<KorvanSDK::SolveState>& states, int timeout);
  virtual KorvanSDK::SolveState waitForState(const std::set<KorvanSDK::SolveState>& states,
                                             std::function<bool()> stop, int timeout);
  virtual KorvanSDK::SolveState waitForState(const KorvanSDK::SolveState& state, int timeout);
  virtual KorvanSDK::SolveState waitForState(const KorvanSDK::SolveState& state, std::function<bool()> stop,
                                             int timeout);

  // The last state read or written (Unknown before any), without touching the file.
  virtual KorvanSDK::SolveState getState();
  virtual bool exists() const;

protected:
  void setState(KorvanSDK::SolveState state) const;

private:
  std::string m_path;
  mutable KorvanSDK::SolveState m_state;
};

} // namespace Ombrix
