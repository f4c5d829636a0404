// What the example solver (exchange_solver.cpp) and client (exchange_client.cpp) share: the command line,
// the exchange directory's paths, the side of the exchange with its heartbeats and waits, and the
// per-exchange time accounts. Header-only; each program includes it once.
#pragma once

#include "ombrix/csv/CSVFileParserBase.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"
#include "ombrix/exchange/InterfaceCSVCommonSolver.h"
#include "ombrix/model/Attribute.h"
#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/sdk/SolveState.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace ExchangeExample
{

using KorvanSDK::SolveState;

// Exit codes of both programs.
constexpr int exitSuccess = 0;
constexpr int exitUsage = 1;
constexpr int exitExchangeFailed = 2;

// The exchange could not go on: the partner died, failed or timed out, or a file was bad.
class ExchangeFailure : public std::runtime_error
{
public:
  using std::runtime_error::runtime_error;
};

// The command line: "--name value" pairs, each name one of `known`.
class Arguments
{
public:
  Arguments(int argc, char** argv, const std::map<std::string, std::string>& known) : m_values(known)
  {
    for (int i = 1; i < argc; ++i)
    {
      const std::string name = argv[i];
      if (name == "--help")
        throw std::invalid_argument("");
      if (name.rfind("--", 0) != 0 || !m_values.count(name.substr(2)))
        throw std::invalid_argument("unknown option '" + name + "'");
      if (i + 1 >= argc)
        throw std::invalid_argument("option '" + name + "' needs a value");
      m_values[name.substr(2)] = argv[++i];
    }
  }

  const std::string& text(const std::string& name) const { return m_values.at(name); }

  long number(const std::string& name) const
  {
    const std::string& value = text(name);
    char* end = nullptr;
    const long result = std::strtol(value.c_str(), &end, 10);
    if (value.empty() || *end != '\0')
      throw std::invalid_argument("option '--" + name + "' wants a whole number, not '" + value + "'");
    return result;
  }

  double real(const std::string& name) const
  {
    const std::string& value = text(name);
    char* end = nullptr;
    const double result = std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0')
      throw std::invalid_argument("option '--" + name + "' wants a number, not '" + value + "'");
    return result;
  }

  static std::string usage(const std::map<std::string, std::string>& known)
  {
    std::string text;
    for (const auto& [name, fallback] : known)
      text += "  --" + name + " <value>" + (fallback.empty() ? "" : " (default " + fallback + ")") + "\n";
    return text;
  }

private:
  std::map<std::string, std::string> m_values;
};

// Options both sides take, with the defaults of the example (short heartbeat so that a dead partner is
// noticed within seconds; waits woken by file notifications).
inline std::map<std::string, std::string> commonOptions()
{
  return {{"dir", ""},
          {"mode", "Fixed"},
          {"timeout-ms", "60000"},
          {"heartbeat", "1"},
          {"grace", "3"},
          {"crash-at", "0"},
          {"verbose", "0"},
          {"waits", "Notified"},
          {"durable", "0"},
          {"heartbeat-judgement", "SharedClock"}};
}

// How this side waits, writes and judges its partner: "--waits Polling" goes back to the plain 100-ms
// polls, "--durable 1" syncs every file to disk, "--heartbeat-judgement StampChanges" needs no clock shared
// with the partner (sides on two hosts).
inline Ombrix::ExchangeSideOptions sideOptions(const Arguments& arguments)
{
  Ombrix::ExchangeSideOptions options;
  const std::string& waits = arguments.text("waits");
  if (waits != "Notified" && waits != "Polling")
    throw std::invalid_argument("option '--waits' is Notified or Polling, not '" + waits + "'");
  options.notifiedWaits = waits == "Notified";
  options.durableWrites = arguments.number("durable") != 0;
  const std::string& judgement = arguments.text("heartbeat-judgement");
  options.heartbeatJudgement =
      Ombrix::heartbeatJudgementFromString(judgement, Ombrix::HeartbeatJudgement::SharedClock);
  if (Ombrix::heartbeatJudgementToString(options.heartbeatJudgement) != judgement)
    throw std::invalid_argument("option '--heartbeat-judgement' is SharedClock or StampChanges, not '" +
                                judgement + "'");
  return options;
}

// The exchange options record filled from the common command-line options.
inline Ombrix::CSVEventHandlerOptions exchangeOptions(const Arguments& arguments)
{
  Ombrix::CSVEventHandlerOptions options;
  options.ombrixDirectory = arguments.text("dir");
  if (options.ombrixDirectory.empty())
    throw std::invalid_argument("option '--dir' is required");
  const std::string& mode = arguments.text("mode");
  options.fileMode = Ombrix::csvFileModeFromString(mode, Ombrix::CSVFileMode::Automatic);
  if (options.fileMode != Ombrix::CSVFileMode::Fixed && options.fileMode != Ombrix::CSVFileMode::Sequential)
    throw std::invalid_argument("option '--mode' is Fixed or Sequential, not '" + mode + "'");
  options.readFailureHandling = Ombrix::ReadFailureHandling::Retry;
  options.inFileTryAttempts = 5;
  options.solverHeartBeatInterval = static_cast<std::int32_t>(arguments.number("heartbeat"));
  options.clientHeartBeatGracePeriod = static_cast<std::int32_t>(arguments.number("grace"));
  // Stamps are whole seconds and a stamp is rewritten a little after each interval, so a live partner's
  // stamp can look up to interval + 1 s old: a shorter grace period would judge it dead.
  if (options.solverHeartBeatInterval < 1 ||
      options.clientHeartBeatGracePeriod < options.solverHeartBeatInterval + 2)
    throw std::invalid_argument(
        "the heartbeat must be at least 1 s and the grace period at least 2 s longer");
  return options;
}

// The protected paths of the exchange interface, opened up for the example programs.
template <typename Interface> class ExchangeFiles : public Interface
{
public:
  using Interface::getDefFile;
  using Interface::getInAliveFile;
  using Interface::getInFile;
  using Interface::getInStateFile;
  using Interface::getOmbrixPath;
  using Interface::getOutAliveFile;
  using Interface::getOutFile;
  using Interface::getOutStateFile;
  using Interface::Interface;
};

// Removes what an earlier run of this side left, so that the partner never mistakes it for news.
template <typename Interface>
void removeOwnFiles(ExchangeFiles<Interface>& files, const std::vector<std::string>& fixedNames,
                    const std::string& dataPrefix)
{
  namespace fs = std::filesystem;
  std::error_code error;
  for (const auto& name : fixedNames)
    fs::remove(files.getOmbrixPath() + "/" + name, error);
  for (const auto& entry : fs::directory_iterator(files.getOmbrixPath(), error))
  {
    const std::string name = entry.path().filename().string();
    if (name.rfind(dataPrefix, 0) == 0 && entry.path().extension() == ".csv")
      fs::remove(entry.path(), error);
  }
}

// Wall-clock accounts of one side, in seconds.
struct TimeAccount
{
  double waiting = 0; // in state waits for the partner
  double files = 0;   // writing and reading the data files
  double compute = 0; // the side's own work
};

class Stopwatch
{
public:
  double lap()
  {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::chrono::duration<double>(now - m_last).count();
    m_last = now;
    return seconds;
  }

private:
  std::chrono::steady_clock::time_point m_last = std::chrono::steady_clock::now();
};

// One side of the handshake: the library's exchange side (its own state file and heartbeat, the partner's,
// the claim on the directory) with the example's time-out and time accounts.
class Side
{
public:
  Side(Ombrix::ExchangeRole role, const std::string& directory, const Arguments& arguments,
       const Ombrix::CSVEventHandlerOptions& options)
      : m_side(role, directory, sideOptions(arguments)),
        m_timeout(static_cast<int>(arguments.number("timeout-ms")))
  {
    m_side.setHeartbeat(options.solverHeartBeatInterval, options.clientHeartBeatGracePeriod);
  }

  // Runs `body`; if it throws, writes the state Failed before passing the error on, so that the partner
  // stops at once instead of waiting for the heartbeat to go stale.
  template <typename Body> int reportingFailure(Body&& body)
  {
    try
    {
      return body();
    }
    catch (...)
    {
      setState(SolveState::Failed);
      throw;
    }
  }

  void startHeartbeat() { m_side.startHeartbeat(); }
  void stopHeartbeat() { m_side.stopHeartbeat(); }

  void setState(SolveState state) const { m_side.setState(state); }

  // Gives a parser that writes this side's files the side's write options.
  // The side's write options, and the reading and writing of numbers that a coupling wants: a value not
  // entirely a number ("50OO") is refused instead of read as 50, and numbers travel with every digit.
  void prepare(Ombrix::CSVFileParserBase& parser) const
  {
    m_side.applyTo(parser);
    parser.setStrictNumbers(true);
    parser.setNumberFormat(Ombrix::Model::NumberFormat::RoundTrip);
  }

  // Waits for the partner's first heartbeat.
  void waitForPartner()
  {
    const Ombrix::WaitResult started = m_side.waitForPartnerStart(m_timeout);
    if (!started.reached())
      throw ExchangeFailure(started.message);
  }

  // Waits until the partner's state is one of `wanted` and returns it. Throws ExchangeFailure, saying why,
  // when the partner's heartbeat stops, it reports Failed, or the time-out passes.
  SolveState waitFor(const std::set<SolveState>& wanted, TimeAccount& account)
  {
    Stopwatch watch;
    const Ombrix::WaitResult result = m_side.waitForPartnerState(wanted, m_timeout);
    account.waiting += watch.lap();
    if (!result.reached())
      throw ExchangeFailure(result.message);
    return result.state;
  }

private:
  Ombrix::ExchangeSide m_side;
  int m_timeout;
};

// Ends the process at once, as a crash or `kill -9` would: no destructor runs, the heartbeat thread dies
// with the process and the partner must notice through the alive file alone.
[[noreturn]] inline void crash(const char* who, long exchange)
{
  std::printf("%s: crashing on purpose at exchange %ld\n", who, exchange);
  std::fflush(stdout);
  std::_Exit(137);
}

// The programs' main: builds `Program` from the command line and runs it; a bad command line gives the
// usage and exitUsage, a failed exchange its message and exitExchangeFailed.
template <typename Program>
int runProgram(const char* name, int argc, char** argv, const std::map<std::string, std::string>& known)
{
  try
  {
    const Arguments arguments(argc, argv, known);
    Program program(arguments);
    return program.run();
  }
  catch (const std::invalid_argument& error)
  {
    if (*error.what())
      std::fprintf(stderr, "%s: %s\n", name, error.what());
    std::fprintf(stderr, "usage: %s --dir <exchange directory> [options]\n%s", name,
                 Arguments::usage(known).c_str());
    return exitUsage;
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
    return exitExchangeFailed;
  }
}

inline double valueOf(const Ombrix::Model::CompositeAttribute& entity, const char* path)
{
  return entity.getAttribute(Ombrix::Model::AttributePath(path))
      .getDoubleValue(KorvanSDK::Chronology::Current, false);
}

} // namespace ExchangeExample
