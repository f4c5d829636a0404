// Time per iteration of a solver-client exchange, each side a process of its own, all in one run:
//   (a) the library's exchange pair with notified waits (the example's handshake, a small model),
//   (b) the same with the 100-ms polling of the state files,
//   (c) a bare reference: the same handshake and the same file bytes with plain write-temporary-and-rename,
//       inotify and nothing of the library,
//   (d) the library's pair with notified waits and a large model (10^5 values), against the file work of
//       its two sides.
// (a) and (c) take turns in rounds, so that a change of the machine's load meets both alike. A plain
// program rather than a Google Benchmark one: a figure needs two processes, and the ratios between the
// runs are what it is for. Usage:
//   exchange_bench [--iterations 1000] [--rounds 5] [--polling-iterations 10] [--large-iterations 10]
//                  [--large-entities 10000] [--dir <where the exchange directories go, default $TMPDIR or
//                  /tmp>]
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <poll.h>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using KorvanSDK::SolveState;
using Clock = std::chrono::steady_clock;

constexpr int timeoutMs = 60000;
constexpr int valuesPerLargeEntity = 10;

double millisecondsSince(Clock::time_point start)
{
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
  if (values.empty())
    return 0;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// `entities` entities of `values` double attributes each: 4 x 5 stands for the example's small model
// (4 entities, 18 values), 10^4 x 10 for its large one.
void buildModel(EntityCollection& model, int entities, int values)
{
  for (int e = 0; e < entities; ++e)
  {
    auto entity = std::make_unique<Entity>("Cell", "C" + std::to_string(e), AccessType::ReadWrite, nullptr);
    entity->setUniqueID(EntityID(e, 100));
    for (int a = 0; a < values; ++a)
    {
      auto* value = static_cast<DoubleAttribute*>(
          entity->createAttribute(AttributeType::Double, "T" + std::to_string(a), AccessType::ReadWrite));
      value->setUnit("K");
      value->set(300.0 + e * 0.001 + a, Chronology::Current);
    }
    model.addRootEntity(std::move(entity));
  }
}

// Times of one run, in milliseconds per iteration.
struct Run
{
  std::vector<double> iterations;  // solver: out.csv written to the client's acknowledgement seen
  std::vector<double> solverFiles; // solver: writing out.csv and reading in.csv
  std::vector<double> clientFiles; // client: reading out.csv and writing in.csv
};

// The client's file times travel to the solver through a pipe when the client is done.
void sendTimes(int fd, const std::vector<double>& times)
{
  const std::size_t count = times.size();
  if (::write(fd, &count, sizeof count) != static_cast<ssize_t>(sizeof count) ||
      ::write(fd, times.data(), count * sizeof(double)) != static_cast<ssize_t>(count * sizeof(double)))
    std::_Exit(3);
}

std::vector<double> receiveTimes(int fd)
{
  std::size_t count = 0;
  std::vector<double> times;
  if (::read(fd, &count, sizeof count) == static_cast<ssize_t>(sizeof count) && count < (1u << 24))
  {
    times.resize(count);
    std::size_t got = 0;
    while (got < count * sizeof(double))
    {
      const ssize_t part =
          ::read(fd, reinterpret_cast<char*>(times.data()) + got, count * sizeof(double) - got);
      if (part <= 0)
        throw std::runtime_error("the client's times did not arrive");
      got += static_cast<std::size_t>(part);
    }
  }
  return times;
}

int finishChild(pid_t child)
{
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void expect(const Ombrix::WaitResult& result)
{
  if (!result.reached())
    throw std::runtime_error(result.message);
}

// The client of the library's pair: the example client's handshake, answering each out.csv with in.csv.
[[noreturn]] void libraryClient(const std::string& directory, const Ombrix::ExchangeSideOptions& options,
                                int pipe)
{
  int code = 0;
  try
  {
    Ombrix::ExchangeSide side(Ombrix::ExchangeRole::Client, directory, options);
    side.startHeartbeat();
    side.setState(SolveState::WaitFor_Def_CSV_Write);
    expect(side.waitForPartnerState({SolveState::FinishedWriting_Def_CSV_File}, timeoutMs));
    EntityCollection model;
    Ombrix::CSVDefinitionFileParser(model).parseFile(side.getFile("def.csv"));
    side.setState(SolveState::FinishedReading_Def_CSV_File);
    Ombrix::CSVDataFileParser parser(model, {Chronology::Current});
    parser.setKorvanSDK(true);
    side.applyTo(parser);
    std::vector<double> files;
    while (true)
    {
      const Ombrix::WaitResult data =
          side.waitForPartnerState({SolveState::CFDSolver_NewDataReady, SolveState::Finished}, timeoutMs);
      expect(data);
      if (data.state == SolveState::Finished)
        break;
      const Clock::time_point start = Clock::now();
      if (!parser.parseFile(side.getFile("out.csv")) || !parser.saveAs(side.getFile("in.csv")))
        throw std::runtime_error("client: cannot exchange the data files");
      files.push_back(millisecondsSince(start));
      side.setState(SolveState::Client_NewDataReady);
      expect(side.waitForPartnerState({SolveState::CFDSolver_Solving}, timeoutMs));
      side.setState(SolveState::Client_WaitForData);
    }
    sendTimes(pipe, files);
    side.stopHeartbeat();
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "exchange_bench client: %s\n", error.what());
    code = 1;
  }
  std::fflush(stderr);
  std::_Exit(code);
}

Run runLibrary(const std::string& directory, const Ombrix::ExchangeSideOptions& options, int entities,
               int values, int iterations)
{
  std::filesystem::create_directories(directory);
  int fds[2];
  if (::pipe(fds) != 0)
    throw std::runtime_error("no pipe");
  // Forked before either side starts a thread.
  const pid_t child = ::fork();
  if (child == 0)
  {
    ::close(fds[0]);
    libraryClient(directory, options, fds[1]);
  }
  ::close(fds[1]);
  Run run;
  {
    Ombrix::ExchangeSide side(Ombrix::ExchangeRole::Solver, directory, options);
    side.setState(SolveState::Initializing);
    side.startHeartbeat();
    EntityCollection model;
    buildModel(model, entities, values);
    Ombrix::CSVDefinitionFileParser definition(model);
    definition.setChronologies({Chronology::Current});
    side.applyTo(definition);
    if (!definition.saveAs(side.getFile("def.csv")))
      throw std::runtime_error("cannot write def.csv");
    side.setState(SolveState::FinishedWriting_Def_CSV_File);
    expect(side.waitForPartnerState({SolveState::FinishedReading_Def_CSV_File}, timeoutMs));

    Ombrix::CSVDataFileParser parser(model, {Chronology::Current});
    side.applyTo(parser);
    for (int i = 0; i < iterations; ++i)
    {
      const Clock::time_point start = Clock::now();
      if (!parser.saveAs(side.getFile("out.csv")))
        throw std::runtime_error("cannot write out.csv");
      double files = millisecondsSince(start);
      side.setState(SolveState::CFDSolver_NewDataReady);
      expect(side.waitForPartnerState({SolveState::Client_NewDataReady}, timeoutMs));
      const Clock::time_point reading = Clock::now();
      if (!parser.parseFile(side.getFile("in.csv")))
        throw std::runtime_error("cannot read in.csv");
      files += millisecondsSince(reading);
      side.setState(SolveState::CFDSolver_Solving);
      expect(side.waitForPartnerState({SolveState::Client_WaitForData}, timeoutMs));
      run.iterations.push_back(millisecondsSince(start));
      run.solverFiles.push_back(files);
    }
    side.setState(SolveState::Finished);
  }
  run.clientFiles = receiveTimes(fds[0]);
  ::close(fds[0]);
  if (finishChild(child) != 0)
    throw std::runtime_error("the client of the library's pair failed");
  return run;
}

// The bare reference: the same handshake and bytes with system calls alone.
class BareSide
{
public:
  explicit BareSide(std::string directory) : m_directory(std::move(directory))
  {
    m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0 || ::inotify_add_watch(m_fd, m_directory.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO) < 0)
      throw std::runtime_error("no inotify");
  }
  ~BareSide() { ::close(m_fd); }

  void write(const char* name, const std::string& content) const
  {
    const std::string temporary = m_directory + "/." + name + ".tmp";
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0 || ::write(fd, content.data(), content.size()) != static_cast<ssize_t>(content.size()) ||
        ::close(fd) != 0 || std::rename(temporary.c_str(), (m_directory + "/" + name).c_str()) != 0)
      throw std::runtime_error(std::string("cannot write ") + name);
  }

  std::string read(const char* name) const
  {
    std::string content;
    const int fd = ::open((m_directory + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
      return content;
    char buffer[1 << 16];
    ssize_t got;
    while ((got = ::read(fd, buffer, sizeof buffer)) > 0)
      content.append(buffer, static_cast<std::size_t>(got));
    ::close(fd);
    return content;
  }

  void setState(const char* name, SolveState state) const
  {
    write(name, std::to_string(static_cast<int>(state)) + "\t" + KorvanSDK::toString(state) + "\t<END>");
  }

  // Reads the state file after every notification about it, and every 100 ms at least.
  SolveState waitFor(const char* name, std::set<SolveState> states)
  {
    drain(name);
    while (true)
    {
      const std::string content = read(name);
      if (content.find("<END>") != std::string::npos)
      {
        const auto state = static_cast<SolveState>(std::atoi(content.c_str()));
        if (states.count(state))
          return state;
      }
      pollfd watched{m_fd, POLLIN, 0};
      if (::poll(&watched, 1, 100) > 0)
        drain(name);
    }
  }

private:
  void drain(const char*)
  {
    alignas(inotify_event) char buffer[4096];
    while (::read(m_fd, buffer, sizeof buffer) > 0)
    {
    }
  }

  std::string m_directory;
  int m_fd;
};

Run runBare(const std::string& directory, const std::string& out, const std::string& in, int iterations)
{
  std::filesystem::create_directories(directory);
  const pid_t child = ::fork();
  if (child == 0)
  {
    int code = 0;
    try
    {
      BareSide side(directory);
      while (side.waitFor("out.state", {SolveState::CFDSolver_NewDataReady, SolveState::Finished}) !=
             SolveState::Finished)
      {
        if (side.read("out.csv").size() != out.size())
          throw std::runtime_error("torn out.csv");
        side.write("in.csv", in);
        side.setState("in.state", SolveState::Client_NewDataReady);
        side.waitFor("out.state", {SolveState::CFDSolver_Solving});
        side.setState("in.state", SolveState::Client_WaitForData);
      }
    }
    catch (const std::exception& error)
    {
      std::fprintf(stderr, "exchange_bench bare client: %s\n", error.what());
      code = 1;
    }
    std::_Exit(code);
  }
  Run run;
  BareSide side(directory);
  for (int i = 0; i < iterations; ++i)
  {
    const Clock::time_point start = Clock::now();
    side.write("out.csv", out);
    side.setState("out.state", SolveState::CFDSolver_NewDataReady);
    side.waitFor("in.state", {SolveState::Client_NewDataReady});
    if (side.read("in.csv").size() != in.size())
      throw std::runtime_error("torn in.csv");
    side.setState("out.state", SolveState::CFDSolver_Solving);
    side.waitFor("in.state", {SolveState::Client_WaitForData});
    run.iterations.push_back(millisecondsSince(start));
  }
  side.setState("out.state", SolveState::Finished);
  if (finishChild(child) != 0)
    throw std::runtime_error("the bare client failed");
  return run;
}

std::string readAll(const std::string& path)
{
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

// What the library's pair writes for the small model, for the bare reference to write as it is.
std::pair<std::string, std::string> smallModelFiles(const std::string& directory, int entities, int values)
{
  std::filesystem::create_directories(directory);
  EntityCollection model;
  buildModel(model, entities, values);
  Ombrix::CSVDataFileParser parser(model, {Chronology::Current});
  const std::string path = directory + "/sample.csv";
  parser.saveAs(path);
  const std::string out = readAll(path);
  parser.parseFile(path);
  parser.saveAs(path);
  return {out, readAll(path)};
}

// Appends `run` without its first tenth of iterations (start-up, caches).
void addSettled(Run& all, const Run& run)
{
  const auto append = [](std::vector<double>& to, const std::vector<double>& from)
  { to.insert(to.end(), from.begin() + static_cast<std::ptrdiff_t>(from.size() / 10), from.end()); };
  append(all.iterations, run.iterations);
  append(all.solverFiles, run.solverFiles);
  append(all.clientFiles, run.clientFiles);
}

} // namespace

int main(int argc, char** argv)
{
  std::map<std::string, int> settings = {{"iterations", 1000},
                                         {"rounds", 5},
                                         {"polling-iterations", 10},
                                         {"large-iterations", 10},
                                         {"large-entities", 10000}};
  const char* temporary = std::getenv("TMPDIR");
  std::string where = temporary && *temporary ? temporary : "/tmp";
  for (int i = 1; i < argc; i += 2)
  {
    const std::string option = argv[i];
    const std::string name = option.rfind("--", 0) == 0 ? option.substr(2) : "";
    if (i + 1 < argc && name == "dir")
      where = argv[i + 1];
    else if (i + 1 < argc && settings.count(name) && std::atoi(argv[i + 1]) >= 1)
      settings[name] = std::atoi(argv[i + 1]);
    else
    {
      std::fprintf(stderr, "usage: exchange_bench [--iterations N] [--rounds N] [--polling-iterations N] "
                           "[--large-iterations N] [--large-entities N] [--dir DIRECTORY]\n");
      return 2;
    }
  }
  std::string pattern = where + "/ombrix_exchange_bench.XXXXXX";
  if (!::mkdtemp(pattern.data()))
  {
    std::fprintf(stderr, "exchange_bench: cannot make a directory in %s\n", where.c_str());
    return 2;
  }
  const std::string base = pattern;
  int status = 0;
  try
  {
    constexpr int smallEntities = 4;
    constexpr int smallValues = 5;
    Ombrix::ExchangeSideOptions notified;
    notified.notifiedWaits = true;
    const Ombrix::ExchangeSideOptions polling;
    const auto [out, in] = smallModelFiles(base + "/sample", smallEntities, smallValues);

    Run a, b, c, d;
    const int rounds = settings["rounds"];
    const int perRound = std::max(1, settings["iterations"] / rounds);
    for (int round = 0; round < rounds; ++round)
    {
      const std::string suffix = std::to_string(round);
      addSettled(a, runLibrary(base + "/notified" + suffix, notified, smallEntities, smallValues, perRound));
      addSettled(c, runBare(base + "/bare" + suffix, out, in, perRound));
    }
    addSettled(b, runLibrary(base + "/polling", polling, smallEntities, smallValues,
                             settings["polling-iterations"]));
    addSettled(d, runLibrary(base + "/large", notified, settings["large-entities"], valuesPerLargeEntity,
                             settings["large-iterations"]));

    const double ma = median(a.iterations), mb = median(b.iterations), mc = median(c.iterations);
    std::vector<double> largeFiles(std::min(d.solverFiles.size(), d.clientFiles.size()));
    for (std::size_t i = 0; i < largeFiles.size(); ++i)
      largeFiles[i] = d.solverFiles[i] + d.clientFiles[i];
    const double md = median(d.iterations), mf = median(largeFiles);
    std::printf("exchange directories in %s; median time per iteration (each run without its first tenth):\n",
                where.c_str());
    std::printf("  (a) library, notified waits, %d values       %10.3f ms  (%zu iterations)\n",
                smallEntities * smallValues, ma, a.iterations.size());
    std::printf("  (b) library, 100-ms polling, %d values       %10.3f ms  (%zu iterations)\n",
                smallEntities * smallValues, mb, b.iterations.size());
    std::printf("  (c) bare reference, same bytes              %10.3f ms  (%zu iterations)\n", mc,
                c.iterations.size());
    std::printf("  (d) library, notified waits, %d values   %10.3f ms  (%zu iterations); file work of both "
                "sides %.3f ms\n",
                settings["large-entities"] * valuesPerLargeEntity, md, d.iterations.size(), mf);
    std::printf("ratios: (a)/(c) = %.2f   (b)/(a) = %.0f   (d)/its file work = %.3f\n", ma / mc, mb / ma,
                md / mf);
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "exchange_bench: %s\n", error.what());
    status = 1;
  }
  std::error_code ignored;
  std::filesystem::remove_all(base, ignored);
  return status;
}
