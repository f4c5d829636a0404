#include "ombrix/exchange/StateFileReaderWriter.h"

#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/platform/AtomicFileWriter.h"
#include "ombrix/platform/File.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace Ombrix
{
namespace
{

using KorvanSDK::SolveState;

constexpr std::chrono::milliseconds pollPause{100};
// Five tries: an unreadable file costs a waiter at most half a second before it reads as NoFile.
constexpr int waitTries = 5;

// The state's text, or its number when it has none.
std::string nameOf(SolveState state)
{
  try
  {
    return KorvanSDK::toString(state);
  }
  catch (const std::logic_error&)
  {
    return std::to_string(static_cast<int>(state));
  }
}

std::string namesOf(const std::set<SolveState>& states)
{
  std::string names;
  for (SolveState state : states)
    names += (names.empty() ? "" : " or ") + nameOf(state);
  return names;
}

} // namespace

StateFileReaderWriter::StateFileReaderWriter() : m_state(SolveState::Unknown) {}

StateFileReaderWriter::StateFileReaderWriter(const std::string& path)
    : m_path(path), m_state(SolveState::Unknown)
{
}

bool StateFileReaderWriter::writeState(SolveState state, int /*tries*/) const
{
  if (m_path.empty())
    return false;
  // Looked up before anything is written, so that a state without a text leaves an empty file rather than
  // a number that a reader could take for a half-written one.
  std::string text;
  try
  {
    text = KorvanSDK::toString(state);
  }
  catch (...)
  {
    FileSystem::AtomicFileWriter::replace(m_path, {}, m_sideOptions.durableWrites);
    throw;
  }
  // Digits of the classic locale whatever the global one says, as the format wants.
  FileSystem::AtomicFileWriter::replace(
      m_path, std::to_string(static_cast<int>(state)) + '\t' + text + "\t<END>", m_sideOptions.durableWrites);
  setState(state);
  return true;
}

SolveState StateFileReaderWriter::readState(int tries)
{
  if (!FileSystem::File::exists(m_path) || tries < 1)
  {
    setState(SolveState::NoFile);
    return SolveState::NoFile;
  }
  int failed = 0;
  while (true)
  {
    FileSystem::ZQifstream in(m_path);
    int number = 0;
    if (in >> number)
    {
      std::string rest;
      std::getline(in, rest);
      // A NUL byte is what a file zero-filled by a power loss holds: as incomplete as a missing marker.
      const bool complete = rest.find("<END>") != std::string::npos && rest.find('\0') == std::string::npos;
      const SolveState state = complete ? static_cast<SolveState>(number) : SolveState::Unknown;
      setState(state);
      return state;
    }
    in.close();
    m_waiter.pause(pollPause);
    if (++failed >= tries)
    {
      setState(SolveState::NoFile);
      return SolveState::NoFile;
    }
  }
}

SolveState StateFileReaderWriter::waitForState(const std::set<SolveState>& states, int timeout)
{
  return waitForState(states, std::function<bool()>(), timeout);
}

SolveState StateFileReaderWriter::waitForState(const std::set<SolveState>& states, std::function<bool()> stop,
                                               int timeout)
{
  return waitFor(states, stop, timeout).state;
}

WaitResult StateFileReaderWriter::waitFor(const std::set<SolveState>& states,
                                          const std::function<bool()>& stop, int timeout,
                                          const AliveFileReaderWriter* partner)
{
  const auto steadyStart = std::chrono::steady_clock::now();
  const ExchangeClock::WallTime start = ExchangeClock::wallNow();
  m_waiter.arm();
  WaitResult result;
  result.state = readState(waitTries);
  while (true)
  {
    if (states.count(result.state) != 0)
    {
      result.end = WaitEnd::Reached;
      break;
    }
    if (partner && !partner->checkAlive())
    {
      result.end = WaitEnd::PartnerDead;
      break;
    }
    if (stop && stop())
    {
      result.end = WaitEnd::Stopped;
      break;
    }
    m_waiter.pause(m_waiter.pauseFor(pollPause, start, timeout));
    result.state = readState(waitTries);
    if (timeout < 0)
      continue;
    // The state just read is not tested against the set by waitForState; the caller does that.
    if (ExchangeClock::millisecondsSince(start) > timeout)
    {
      result.end = states.count(result.state) != 0 ? WaitEnd::Reached : WaitEnd::TimedOut;
      break;
    }
  }
  result.elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - steadyStart)
          .count();
  const std::string awaited = m_path + " to show " + namesOf(states) +
                              " (last seen: " + std::to_string(static_cast<int>(result.state)) + ")";
  switch (result.end)
  {
  case WaitEnd::Reached:
    result.message = m_path + " shows " + nameOf(result.state);
    break;
  case WaitEnd::TimedOut:
    result.message = "timed out after " + std::to_string(timeout) + " ms waiting for " + awaited;
    break;
  case WaitEnd::Stopped:
    result.message = "stopped after " + std::to_string(result.elapsed) + " ms waiting for " + awaited;
    break;
  default:
    result.message = "the partner's heartbeat stopped while waiting for " + awaited;
    break;
  }
  return result;
}

SolveState StateFileReaderWriter::waitForState(const SolveState& state, int timeout)
{
  return waitForState(std::set<SolveState>{state}, std::function<bool()>(), timeout);
}

SolveState StateFileReaderWriter::waitForState(const SolveState& state, std::function<bool()> stop,
                                               int timeout)
{
  return waitForState(std::set<SolveState>{state}, std::move(stop), timeout);
}

SolveState StateFileReaderWriter::getState()
{
  return m_state;
}

void StateFileReaderWriter::setSideOptions(const ExchangeSideOptions& options)
{
  m_sideOptions = options;
  m_waiter = ExchangeWaiter(m_path, options);
}

bool StateFileReaderWriter::exists() const
{
  return FileSystem::File::exists(m_path);
}

void StateFileReaderWriter::setState(SolveState state) const
{
  m_state = state;
}

} // namespace Ombrix
