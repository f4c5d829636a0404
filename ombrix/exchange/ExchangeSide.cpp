#include "ombrix/exchange/ExchangeSide.h"

#include "ombrix/csv/CSVFileParserBase.h"
#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/exchange/ExchangeWaiter.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"
#include "ombrix/platform/AtomicFileWriter.h"
#include "ombrix/platform/FileCloser.h"
#include "ombrix/platform/Path.h"

#include <chrono>
#include <stdexcept>

namespace Ombrix
{

namespace
{

using KorvanSDK::SolveState;

constexpr std::chrono::milliseconds pollPause{100};

std::string stateFile(ExchangeRole role)
{
  return role == ExchangeRole::Solver ? InterfaceCSVCommon::outStateFile()
                                      : InterfaceCSVCommon::inStateFile();
}

std::string aliveFile(ExchangeRole role)
{
  return role == ExchangeRole::Solver ? InterfaceCSVCommon::outAliveFile()
                                      : InterfaceCSVCommon::inAliveFile();
}

// "out.csv", "out7.csv" for the stem "out".
bool isDataFile(const std::string& name, const std::string& stem)
{
  const std::string suffix = ".csv";
  if (name.size() < stem.size() + suffix.size() || name.compare(0, stem.size(), stem) != 0 ||
      name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
    return false;
  const std::string number = name.substr(stem.size(), name.size() - stem.size() - suffix.size());
  return number.find_first_not_of("0123456789") == std::string::npos;
}

bool isOwnFile(ExchangeRole role, const std::string& name)
{
  if (name == stateFile(role) || name == aliveFile(role))
    return true;
  if (role == ExchangeRole::Solver)
    return name == InterfaceCSVCommon::defFile() || isDataFile(name, "out");
  return isDataFile(name, "in");
}

// A CSV exchange file is complete when its last line is a footer row ("<<,END,CSV,VER04,>>"): only the
// tail is read, whatever the size of the file.
bool isCompleteCSVFile(const std::string& path)
{
  FileSystem::FilePtr file = FileSystem::fopen(path, "rb");
  if (!file || std::fseek(file.get(), 0, SEEK_END) != 0)
    return false;
  const long size = std::ftell(file.get());
  char tail[128];
  const long length = std::min<long>(size, static_cast<long>(sizeof tail));
  if (length <= 0 || std::fseek(file.get(), size - length, SEEK_SET) != 0 ||
      std::fread(tail, 1, static_cast<std::size_t>(length), file.get()) != static_cast<std::size_t>(length))
    return false;
  std::string text(tail, static_cast<std::size_t>(length));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
    text.pop_back();
  const std::string line = text.substr(text.rfind('\n') == std::string::npos ? 0 : text.rfind('\n') + 1);
  return line.rfind("<<,END,CSV,", 0) == 0 && line.size() > 2 &&
         line.compare(line.size() - 2, 2, ">>") == 0 && line.find('\0') == std::string::npos;
}

std::string namesOf(const std::set<SolveState>& states)
{
  std::string names;
  for (SolveState state : states)
  {
    std::string name;
    try
    {
      name = KorvanSDK::toString(state);
    }
    catch (const std::logic_error&)
    {
      name = std::to_string(static_cast<int>(state));
    }
    names += (names.empty() ? "" : " or ") + name;
  }
  return names;
}

} // namespace

ExchangeSide::ExchangeSide(ExchangeRole role, const std::string& directory,
                           const ExchangeSideOptions& options)
    : m_role(role), m_directory(FileSystem::Path::stripTrailingSlash(directory)), m_options(options),
      m_lock(role, m_directory), m_ownState(getFile(stateFile(role))),
      m_partnerState(getFile(stateFile(partnerOf(role)))),
      m_partnerHeartbeat(getFile(aliveFile(partnerOf(role)))), m_ownHeartbeat(getFile(aliveFile(role)))
{
  // The side is ours now: whatever temporaries of its files are there, a crashed holder left them.
  FileSystem::AtomicFileWriter::removeTemporaries(m_directory, [role](const std::string& name)
                                                  { return isOwnFile(role, name); });
  m_ownState.setSideOptions(options);
  m_partnerState.setSideOptions(options);
  m_ownHeartbeat.setSideOptions(options);
  m_partnerHeartbeat.setSideOptions(options);
}

std::string ExchangeSide::getFile(const std::string& name) const
{
  return m_directory + "/" + name;
}

void ExchangeSide::setHeartbeat(int interval, int gracePeriod)
{
  m_ownHeartbeat.setInterval(interval);
  m_partnerHeartbeat.setGracePeriod(gracePeriod);
}

WaitResult ExchangeSide::waitForPartnerStart(int timeout, const std::function<bool()>& stop)
{
  WaitResult result = m_partnerHeartbeat.waitUntilAlive(stop, timeout);
  const std::string partner = exchangeRoleToString(partnerOf(m_role));
  if (result.end == WaitEnd::TimedOut)
    result.message = "the " + partner + " did not start: " + result.message;
  else if (result.end == WaitEnd::Reached)
    result.message = "the " + partner + " is alive";
  return result;
}

WaitResult ExchangeSide::waitForPartnerState(const std::set<SolveState>& states, int timeout,
                                             const std::function<bool()>& stop)
{
  std::set<SolveState> ending = states;
  ending.insert(SolveState::Failed);
  WaitResult result = m_partnerState.waitFor(ending, stop, timeout, &m_partnerHeartbeat);
  if (result.end == WaitEnd::Reached && states.count(result.state) == 0)
    result.end = WaitEnd::PartnerFailed;
  describe(result, "reach " + namesOf(states), timeout, true);
  if (result.end == WaitEnd::Reached)
    result.message = "the " + exchangeRoleToString(partnerOf(m_role)) + " reached " + namesOf({result.state});
  return result;
}

WaitResult ExchangeSide::waitForFile(const std::string& name, int timeout, const std::function<bool()>& stop)
{
  const std::string path = getFile(name);
  const auto steadyStart = std::chrono::steady_clock::now();
  const ExchangeClock::WallTime start = ExchangeClock::wallNow();
  ExchangeWaiter waiter(path, m_options);
  waiter.arm();
  WaitResult result;
  while (true)
  {
    if (isCompleteCSVFile(path))
    {
      result.end = WaitEnd::Reached;
      break;
    }
    if (!m_partnerHeartbeat.checkAlive())
    {
      result.end = WaitEnd::PartnerDead;
      break;
    }
    if (stop && stop())
    {
      result.end = WaitEnd::Stopped;
      break;
    }
    if (timeout >= 0 && ExchangeClock::millisecondsSince(start) > timeout)
    {
      result.end = WaitEnd::TimedOut;
      break;
    }
    waiter.pause(waiter.pauseFor(pollPause, start, timeout));
  }
  result.elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - steadyStart)
          .count();
  describe(result, "write " + path, timeout, false);
  if (result.end == WaitEnd::Reached)
    result.message = path + " is complete";
  return result;
}

void ExchangeSide::describe(WaitResult& result, const std::string& awaited, int timeout, bool withState) const
{
  const std::string partner = "the " + exchangeRoleToString(partnerOf(m_role));
  const std::string lastSeen =
      withState ? " (last seen: " + std::to_string(static_cast<int>(result.state)) + ")" : std::string();
  switch (result.end)
  {
  case WaitEnd::TimedOut:
    result.message = "timed out after " + std::to_string(timeout) + " ms waiting for " + partner + " to " +
                     awaited + lastSeen;
    break;
  case WaitEnd::Stopped:
    result.message = "stopped after " + std::to_string(result.elapsed) + " ms waiting for " + partner +
                     " to " + awaited + lastSeen;
    break;
  case WaitEnd::PartnerDead:
    result.message =
        partner + " stopped answering: its heartbeat in " + m_partnerHeartbeat.getPath() +
        (m_options.heartbeatJudgement == HeartbeatJudgement::StampChanges ? " has not changed for "
                                                                          : " is older than ") +
        std::to_string(m_partnerHeartbeat.getGracePeriod()) + " s";
    break;
  case WaitEnd::PartnerFailed:
    result.message = partner + " reports that it failed";
    break;
  case WaitEnd::Reached:
    break;
  }
}

void ExchangeSide::applyTo(CSVFileParserBase& parser) const
{
  parser.setDurableWrites(m_options.durableWrites);
}

} // namespace Ombrix
