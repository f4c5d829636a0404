#include "ombrix/exchange/StateFileReaderWriter.h"

#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/platform/File.h"

#include <chrono>
#include <utility>

namespace Ombrix
{
namespace
{

using KorvanSDK::SolveState;

constexpr std::chrono::milliseconds pollPause{100};
// Five tries: an unreadable file costs a waiter at most half a second before it reads as NoFile.
constexpr int waitTries = 5;

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
  FileSystem::ZQofstream out(m_path);
  // Looked up before anything is written, so that a state without a text leaves an empty file rather than
  // a number that a reader could take for a half-written one.
  const std::string text = KorvanSDK::toString(state);
  out << static_cast<int>(state) << '\t' << text << "\t<END>";
  setState(state);
  out.close();
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
      const SolveState state =
          rest.find("<END>") != std::string::npos ? static_cast<SolveState>(number) : SolveState::Unknown;
      setState(state);
      return state;
    }
    in.close();
    ExchangeClock::sleep(pollPause);
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
  const ExchangeClock::WallTime start = ExchangeClock::wallNow();
  SolveState state = readState(waitTries);
  while (true)
  {
    if (states.count(state) != 0)
      return state;
    if (stop && stop())
      return state;
    ExchangeClock::sleep(pollPause);
    state = readState(waitTries);
    if (timeout < 0)
      continue;
    // The state just read is returned untested; the caller checks it against the set.
    if (ExchangeClock::millisecondsSince(start) > timeout)
      return state;
  }
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

bool StateFileReaderWriter::exists() const
{
  return FileSystem::File::exists(m_path);
}

void StateFileReaderWriter::setState(SolveState state) const
{
  m_state = state;
}

} // namespace Ombrix
