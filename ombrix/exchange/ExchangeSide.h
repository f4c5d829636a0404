// ExchangeSide: one side of an exchange directory as a host runs it. Claims the side (one owner per side),
// holds the side's own state file and heartbeat and the partner's, all set up with one ExchangeSideOptions,
// and waits for the partner with results that say why a wait ended. One thread at a time; the own
// heartbeat's writer runs on its own thread.
//
// A solver, for example:
//   Ombrix::ExchangeSide side(Ombrix::ExchangeRole::Solver, directory, {.notifiedWaits = true});
//   side.setHeartbeat(options.solverHeartBeatInterval, options.clientHeartBeatGracePeriod);
//   side.startHeartbeat();
//   side.setState(SolveState::CFDSolver_NewDataReady);
//   const Ombrix::WaitResult answer = side.waitForPartnerState({SolveState::Client_NewDataReady}, timeout);
//   if (!answer.reached())
//     throw std::runtime_error(answer.message);
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/ExchangeRole.h"
#include "ombrix/exchange/ExchangeSideLock.h"
#include "ombrix/exchange/ExchangeSideOptions.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/exchange/WaitResult.h"

#include <functional>
#include <set>
#include <string>

namespace Ombrix
{

class CSVFileParserBase;

class OMBRIX_API ExchangeSide
{
public:
  // Claims `role`'s side of `directory` (see ExchangeSideLock; throws std::runtime_error naming the
  // holder when the side is taken, or the reason when the directory cannot hold the lock file), removes
  // the temporaries that a crashed predecessor left of this side's files, and sets up the state files and
  // heartbeats with `options`. Nothing else is written yet.
  ExchangeSide(ExchangeRole role, const std::string& directory, const ExchangeSideOptions& options = {});
  ExchangeSide(const ExchangeSide&) = delete;
  ExchangeSide& operator=(const ExchangeSide&) = delete;
  // Stops the own heartbeat, then releases the side.
  ~ExchangeSide() = default;

  ExchangeRole getRole() const { return m_role; }
  // The directory without its trailing slash.
  const std::string& getDirectory() const { return m_directory; }
  const ExchangeSideOptions& getOptions() const { return m_options; }
  // The directory, "/", `name`.
  std::string getFile(const std::string& name) const;

  // The interval of the own heartbeat and the grace period granted to the partner's, in seconds; before
  // startHeartbeat().
  void setHeartbeat(int interval, int gracePeriod);
  void startHeartbeat() { m_ownHeartbeat.start(); }
  void stopHeartbeat() { m_ownHeartbeat.stop(); }
  // Writes the own state file.
  void setState(KorvanSDK::SolveState state) const { m_ownState.writeState(state, 1); }

  StateFileReaderWriter& ownState() { return m_ownState; }
  StateFileReaderWriter& partnerState() { return m_partnerState; }
  AliveFileReaderWriter& ownHeartbeat() { return m_ownHeartbeat; }
  AliveFileReaderWriter& partnerHeartbeat() { return m_partnerHeartbeat; }

  // Each wait below ends Reached, TimedOut after `timeout` milliseconds (negative: none), Stopped when
  // `stop` returns true, or PartnerDead when the partner's heartbeat is judged dead (checked after every
  // read). Messages name the partner: "the client did not start: no heartbeat in <path> within 300 ms",
  // "timed out after 500 ms waiting for the client to reach Client_NewDataReady (last seen: 1002)",
  // "the client stopped answering: its heartbeat in <path> is older than 3 s" (with the judgement by
  // changes: "has not changed for 3 s"), "the client reports that it failed".

  // Waits for the partner's first heartbeat (no PartnerDead).
  WaitResult waitForPartnerStart(int timeout, const std::function<bool()>& stop = {});
  // Waits until the partner's state is one of `states`. A partner that writes Failed, when Failed is not
  // awaited, ends the wait with PartnerFailed.
  WaitResult waitForPartnerState(const std::set<KorvanSDK::SolveState>& states, int timeout,
                                 const std::function<bool()>& stop = {});
  // Waits until the partner's CSV file `name` (def.csv, a data file) is in the directory and complete,
  // ending in its footer row. A file left from an earlier run counts too: wait for it only where the
  // partner removes it first, or wait for the partner's state instead.
  WaitResult waitForFile(const std::string& name, int timeout, const std::function<bool()>& stop = {});

  // Gives a CSV parser of this side the side's write options (durable writes).
  void applyTo(CSVFileParserBase& parser) const;

private:
  // Fills the message of a finished wait for the partner to do `awaited`, with the last state seen when
  // `withState`.
  void describe(WaitResult& result, const std::string& awaited, int timeout, bool withState) const;

  ExchangeRole m_role;
  std::string m_directory;
  ExchangeSideOptions m_options;
  ExchangeSideLock m_lock;
  StateFileReaderWriter m_ownState;
  StateFileReaderWriter m_partnerState;
  AliveFileReaderWriter m_partnerHeartbeat;
  // Declared last, so that its writer stops first.
  AliveFileReaderWriter m_ownHeartbeat;
};

} // namespace Ombrix
