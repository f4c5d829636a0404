// The value sets of three exchange options: how solver iterations are synchronised with the client,
// how the state files are used, and what a reader does when an incoming file cannot be read.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class SyncMode : std::int32_t
{
  Iteration = 0, // exchange at SyncStartIteration and every SyncIterationInterval iterations after it
  TimeStep = 1,  // exchange once per time step of a transient solve
  Disabled = 2,  // no exchange
};

enum class StateFileMode : std::int32_t
{
  Off = 0,          // no state files: the sides follow the data files alone
  WriteOnly = 1,    // each side writes its state but never waits for the other's
  WriteAndWait = 2, // the full handshake: write the own state, wait for the partner's
};

enum class ReadFailureHandling : std::int32_t
{
  LogAndContinue = 0, // a bad row is logged and skipped; the rest of the file is applied
  Fail = 1,           // a bad row fails the whole file, and none of its values is applied
  Retry = 2,          // re-read the file up to InFileTryAttempts times, then fail as Fail does
};

// Texts are the enumerator names; other values give "". The FromString forms match exactly and give
// `fallback` otherwise.
OMBRIX_API std::string syncModeToString(SyncMode mode);
OMBRIX_API SyncMode syncModeFromString(const std::string& text, SyncMode fallback);
OMBRIX_API std::string stateFileModeToString(StateFileMode mode);
OMBRIX_API StateFileMode stateFileModeFromString(const std::string& text, StateFileMode fallback);
OMBRIX_API std::string readFailureHandlingToString(ReadFailureHandling handling);
OMBRIX_API ReadFailureHandling readFailureHandlingFromString(const std::string& text,
                                                             ReadFailureHandling fallback);

// Whether the CSV readers treat a bad row as fatal (throw, apply nothing) under this handling.
inline bool isFatal(ReadFailureHandling handling)
{
  return handling != ReadFailureHandling::LogAndContinue;
}

} // namespace Ombrix
