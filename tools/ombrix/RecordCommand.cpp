#include "RecordCommand.h"

#include "ombrix/platform/Path.h"

#include "ChangeWaiter.h"
#include "Console.h"
#include "ExchangeFiles.h"
#include "ExitCode.h"
#include "Interrupt.h"
#include "ModelFiles.h"
#include "Recording.h"
#include "ToolError.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <unistd.h>

namespace Ombrix::Tools
{

using Kind = ExchangeFiles::Kind;
using KorvanSDK::SolveState;

namespace
{

// Follows the files of one exchange directory and records each new data file once.
class Recorder
{
public:
  explicit Recorder(std::string directory) : m_directory(std::move(directory)) {}

  // Takes the files present now as already seen (left from an earlier run), except when `takeThem`.
  void start(bool takeThem)
  {
    if (!takeThem)
      for (const auto& entry : ExchangeFiles::list(m_directory))
        m_seen[entry.name] = {entry.changed, entry.size};
  }

  // Records the data files that are new or changed since the last scan, oldest first; a new def.csv
  // rebuilds the model first. Returns how many data files were recorded.
  std::size_t scan()
  {
    std::vector<ExchangeFiles::Entry> changed;
    for (auto& entry : ExchangeFiles::list(m_directory))
    {
      const std::pair version{entry.changed, entry.size};
      if ((entry.kind == Kind::Definition || entry.kind == Kind::Data) && m_seen[entry.name] != version)
      {
        m_seen[entry.name] = version;
        changed.push_back(std::move(entry));
      }
    }
    std::stable_sort(changed.begin(), changed.end(),
                     [](const auto& a, const auto& b)
                     {
                       return (a.kind == Kind::Definition) != (b.kind == Kind::Definition)
                                  ? a.kind == Kind::Definition
                                  : a.changed < b.changed;
                     });
    std::size_t recorded = 0;
    for (const auto& entry : changed)
    {
      const std::string path = m_directory + "/" + entry.name;
      try
      {
        if (entry.kind == Kind::Definition)
          loadModel(path);
        else
        {
          if (!m_haveModel)
            loadModel(m_directory + "/def.csv");
          m_parser.setRecordAppliedValues(true);
          ModelFiles::readData(path, m_parser);
          m_recording.addFile(entry.direction, m_parser);
          ++recorded;
        }
      }
      catch (const ToolError& error)
      {
        std::fprintf(stderr, "ombrix record: %s left out: %s\n", entry.name.c_str(), error.what());
        ++m_skipped;
      }
    }
    return recorded;
  }

  const Recording& recording() const { return m_recording; }
  std::size_t skipped() const { return m_skipped; }

private:
  // The parser keeps reading into the one model, which a new definition replaces whole.
  void loadModel(const std::string& path)
  {
    ModelFiles::readDefinition(path, m_model);
    m_haveModel = true;
  }

  std::string m_directory;
  std::map<std::string, std::pair<std::filesystem::file_time_type, std::uintmax_t>> m_seen;
  Model::EntityCollection m_model;
  bool m_haveModel = false;
  CSVDataFileParser m_parser{m_model, ModelFiles::allChronologies()};
  Recording m_recording;
  std::size_t m_skipped = 0;
};

bool isOver(const std::optional<ExchangeFiles::StateRecord>& state)
{
  return state && (state->number == static_cast<int>(SolveState::Finished) ||
                   state->number == static_cast<int>(SolveState::Failed));
}

} // namespace

RecordCommand::RecordCommand()
    : Command(
          "record",
          "Record every data file exchanged in DIR, both directions, as a time-series table: one row per "
          "iteration (with its simulation time), one column per exchanged value, named "
          "<out|in>:<ID>:<path>; in:end is 1 where the client asked the solver to end. Start it before the "
          "run: it records until the solver has finished or failed, its heartbeat stops, Ctrl-C or "
          "--timeout. On a directory whose run has finished it records the data files there (every exchange "
          "of a run with numbered files, the last one otherwise). Exits 1 when a file could not be read or "
          "an iteration lacks one direction.",
          "  ombrix record /tmp/exchange --to run.csv\n  ombrix record /tmp/exchange --to run.h5 --timeout "
          "600")
{
}

void RecordCommand::do_addOptions(CLI::App& command)
{
  command.add_option("DIR", m_directory, "the exchange directory")->required();
  command.add_option("--to", m_output, "the recording to write")->required();
  command.add_option("--format", m_format, "csv or hdf5 (default: hdf5 for a name ending in .h5 or .hdf5)")
      ->check(CLI::IsMember({"csv", "hdf5"}));
  command.add_option("--timeout", m_timeout, "stop after this many seconds (0: no limit)")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command
      .add_option("--grace", m_gracePeriod, "seconds after which the solver's heartbeat counts as stopped")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
}

int RecordCommand::do_run()
{
  const auto endsWith = [&](const std::string& end)
  {
    return m_output.size() >= end.size() &&
           m_output.compare(m_output.size() - end.size(), end.size(), end) == 0;
  };
  const std::string format = !m_format.empty()                      ? m_format
                             : endsWith(".h5") || endsWith(".hdf5") ? "hdf5"
                                                                    : "csv";
#if !defined(OMBRIX_WITH_HDF5)
  if (format == "hdf5")
    throw ToolError("this ombrix was built without HDF5 (Debian: libhdf5-dev): record with --format csv");
#endif
  // A run recorded for an hour must not be lost to an output that cannot be written.
  const std::filesystem::path folder = std::filesystem::absolute(m_output).parent_path();
  if (::access(folder.c_str(), W_OK) != 0)
    throw ToolError("cannot write " + m_output + ": " + folder.string() + ": " + std::strerror(errno));
  const std::string directory = FileSystem::Path::stripTrailingSlash(m_directory);
  Interrupt::install();
  const std::string stateFile = directory + "/out.state";
  ChangeWaiter waiter(directory);
  Recorder recorder(directory);
  const bool finished = isOver(ExchangeFiles::readState(stateFile));
  const auto stamp = ExchangeFiles::readAliveStamp(directory + "/out.alive");
  const auto now = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
  const bool underway = !finished && stamp && *stamp + m_gracePeriod > now();
  recorder.start(finished || underway);

  const bool progress = Console::isTerminal(stderr);
  const auto start = std::chrono::steady_clock::now();
  std::string ending = "the solver finished";
  while (true)
  {
    recorder.scan();
    if (progress)
      std::fprintf(stderr, "\rrecording %s: %zu iterations", directory.c_str(),
                   recorder.recording().getRows().size());
    if (finished)
      break;
    if (isOver(ExchangeFiles::readState(stateFile)))
    {
      recorder.scan(); // what came just before the last state
      break;
    }
    if (Interrupt::requested())
    {
      ending = "interrupted";
      break;
    }
    if (m_timeout > 0 && std::chrono::steady_clock::now() - start >= std::chrono::duration<double>(m_timeout))
    {
      ending = "time-out";
      break;
    }
    const auto alive = ExchangeFiles::readAliveStamp(directory + "/out.alive");
    if (!recorder.recording().getRows().empty() && alive && *alive + m_gracePeriod <= now())
    {
      ending = "the solver's heartbeat stopped";
      break;
    }
    waiter.waitForChange(std::chrono::milliseconds(500));
  }
  if (progress)
    std::fputs("\n", stderr);

  const Recording& recording = recorder.recording();
  if (format == "hdf5")
    recording.saveHdf5(m_output);
  else
    recording.saveCsv(m_output);
  std::size_t incomplete = 0;
  for (const auto& row : recording.getRows())
    incomplete += row.hasOut && row.hasIn ? 0 : 1;
  std::printf("recorded %zu iterations, %zu values each, from %s to %s (%s)\n", recording.getRows().size(),
              recording.getColumns().size(), directory.c_str(), m_output.c_str(), ending.c_str());
  if (incomplete)
    std::printf("%zu iterations lack the solver's or the client's data file (replaced before it was read, or "
                "the run had not reached it)\n",
                incomplete);
  if (recorder.skipped())
    std::printf("%zu data files could not be read (see above)\n", recorder.skipped());
  if (recording.getRows().empty())
    std::printf("nothing was exchanged\n");
  return incomplete || recorder.skipped() || recording.getRows().empty() ? exitProblems : exitFine;
}

} // namespace Ombrix::Tools
