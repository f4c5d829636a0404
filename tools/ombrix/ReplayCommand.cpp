#include "ReplayCommand.h"

#include "ombrix/compare/ModelComparator.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"
#include "ombrix/model/Attribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/platform/Path.h"

#include "ExitCode.h"
#include "Interrupt.h"
#include "ModelFiles.h"
#include "Recording.h"
#include "ToolError.h"

#include <cmath>
#include <cstdio>
#include <filesystem>

namespace Ombrix::Tools
{

using KorvanSDK::AttributeType;
using KorvanSDK::SolveState;

namespace
{

// A recorded value column resolved in the model.
struct Bound
{
  std::size_t column;
  Model::Attribute* attribute;
  KorvanSDK::Chronology chronology;
};

std::vector<Bound> bind(const Recording& recording, Model::EntityCollection& model,
                        const std::string& direction)
{
  std::vector<Bound> bound;
  const auto& columns = recording.getColumns();
  for (std::size_t c = 0; c < columns.size(); ++c)
  {
    if (columns[c].name.rfind(direction + ":", 0) != 0 || columns[c].name == Recording::endColumn)
      continue;
    const Recording::Place place = Recording::parseColumn(columns[c].name);
    Model::Entity* entity = nullptr;
    try
    {
      entity = model.getEntity(Model::EntityID::fromString(place.id));
    }
    catch (const std::exception&)
    {
    }
    Model::Attribute* attribute = entity ? entity->findAttribute(Model::AttributePath(place.path)) : nullptr;
    if (!attribute)
      throw ToolError("the recording's column " + columns[c].name +
                      " names no attribute of the solver's def.csv");
    bound.push_back({c + 2, attribute, place.chronology});
  }
  return bound;
}

void setValue(Model::Attribute& attribute, const std::string& text, KorvanSDK::Chronology chronology)
{
  switch (attribute.getAttributeType(true))
  {
  case AttributeType::Int:
    attribute.setIntValue(Model::parseInt(text), chronology, false);
    break;
  case AttributeType::Bool:
    attribute.setBoolValue(Model::parseBool(text), chronology, false);
    break;
  case AttributeType::Float:
    attribute.setFloatValue(Model::parseFloat(text), chronology, false);
    break;
  case AttributeType::Double:
    attribute.setDoubleValue(Model::parseDouble(text), chronology, false);
    break;
  default:
    attribute.setStringValue(text, chronology, false);
  }
}

bool agrees(const std::string& live, const std::string& recorded, bool numeric, double tolerance)
{
  if (live == recorded || !numeric)
    return live == recorded;
  try
  {
    const double a = Model::parseDouble(live), b = Model::parseDouble(recorded);
    return Model::ModelComparator::nearlyEqual(a, b, tolerance) || std::abs(a - b) <= tolerance;
  }
  catch (const std::exception&)
  {
    return false;
  }
}

} // namespace

ReplayCommand::ReplayCommand()
    : Command(
          "replay",
          "Play the client's recorded answers (a CSV recording made by 'ombrix record') back to a live "
          "solver in DIR, for regression runs. It takes the client's side of the exchange with the example "
          "client's handshake, answers each of the solver's data files with the recorded in: values of the "
          "same iteration (and \"END\" where the client asked to end), and compares the solver's values with "
          "the recorded out: values. Exits 1 when the solver's values differ from the recording or it asks "
          "for an iteration the recording does not have.",
          "  ombrix replay run.csv /tmp/exchange2\n"
          "  (run.csv recorded by 'ombrix record /tmp/exchange --to run.csv' during a reference run; a "
          "solver\n"
          "  started in /tmp/exchange2 before or after)")
{
}

void ReplayCommand::do_addOptions(CLI::App& command)
{
  command.add_option("RECORDING", m_recording, "a CSV recording")->required()->check(CLI::ExistingFile);
  command.add_option("DIR", m_directory, "the exchange directory of the solver")
      ->required()
      ->check(CLI::ExistingDirectory);
  command.add_option("--mode", m_mode, "file mode of the exchange")
      ->capture_default_str()
      ->check(CLI::IsMember({"Fixed", "Sequential"}));
  command
      .add_option("--timeout-ms", m_timeout,
                  "how long each wait for the solver may take (negative: no limit)")
      ->capture_default_str();
  command.add_option("--heartbeat", m_heartbeat, "interval of the replaying client's heartbeat, in seconds")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  command
      .add_option("--grace", m_gracePeriod, "seconds after which the solver's heartbeat counts as stopped")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  command.add_option("--tolerance", m_tolerance, "tolerance, relative and absolute, of the solver's numbers")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command.add_option("--show", m_shown, "how many differing values to list")->capture_default_str();
}

int ReplayCommand::do_run()
{
  const Recording recording = Recording::loadCsv(m_recording);
  const std::string directory = FileSystem::Path::stripTrailingSlash(m_directory);
  Interrupt::install();
  ExchangeSide side(ExchangeRole::Client, directory, ExchangeSideOptions{.notifiedWaits = true});
  side.setHeartbeat(m_heartbeat, m_gracePeriod);
  // What an earlier client left must not pass for this one's answer.
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(directory, ignored))
  {
    const std::string name = entry.path().filename().string();
    if (name == "in.state" || name == "in.alive" ||
        (name.rfind("in", 0) == 0 && entry.path().extension() == ".csv"))
      std::filesystem::remove(entry.path(), ignored);
  }
  const auto stop = [] { return Interrupt::requested(); };
  const auto await = [&](const std::set<SolveState>& states)
  {
    const WaitResult result = side.waitForPartnerState(states, m_timeout, stop);
    if (!result.reached())
      throw ToolError(result.message);
    return result.state;
  };

  std::size_t exchanges = 0, differences = 0;
  std::string missing;
  try
  {
    side.setState(SolveState::WaitFor_Def_CSV_Write);
    side.startHeartbeat();
    if (const WaitResult started = side.waitForPartnerStart(m_timeout, stop); !started.reached())
      throw ToolError(started.message);
    await({SolveState::FinishedWriting_Def_CSV_File});
    side.setState(SolveState::Reading_Def_CSV_File);
    Model::EntityCollection model;
    ModelFiles::readDefinition(side.getFile("def.csv"), model);
    const std::vector<Bound> outputs = bind(recording, model, "out");
    const std::vector<Bound> answers = bind(recording, model, "in");
    std::optional<std::size_t> endColumn;
    for (std::size_t c = 0; c < recording.getColumns().size(); ++c)
      if (recording.getColumns()[c].name == Recording::endColumn)
        endColumn = c + 2;
    CSVDataFileParser::ChronologySet chronologies;
    for (const Bound& answer : answers)
      chronologies.insert(answer.chronology);
    CSVDataFileParser parser(model, chronologies.empty()
                                        ? CSVDataFileParser::ChronologySet{KorvanSDK::Chronology::Current}
                                        : chronologies);
    side.applyTo(parser);
    CSVDataFileParser reader(model, ModelFiles::allChronologies());
    side.setState(SolveState::FinishedReading_Def_CSV_File);

    std::optional<std::size_t> counter;
    if (m_mode == "Sequential")
      counter = 0;
    std::size_t next = 0; // rows are played in order
    while (await({SolveState::CFDSolver_NewDataReady, SolveState::Finished}) != SolveState::Finished)
    {
      ModelFiles::readData(side.getFile(InterfaceCSVCommon::outFile(counter)), reader);
      const CSVSimulationTime time = reader.getFileSimulationTime();
      const auto& rows = recording.getRows();
      while (next < rows.size() && rows[next].iteration != time.getIteration())
        ++next;
      if (next == rows.size())
      {
        missing = "the solver sent iteration " + std::to_string(time.getIteration()) +
                  ", which the recording has no answer for (after the row of the previous answer)";
        side.setState(SolveState::Failed);
        break;
      }
      const Recording::Row& row = rows[next];
      ++exchanges;
      for (const Bound& output : outputs)
      {
        const std::string& recorded = row.values[output.column - 2];
        if (recorded.empty())
          continue;
        const std::string live = ModelFiles::valueText(*output.attribute, output.chronology);
        if (!agrees(live, recorded, recording.getColumns()[output.column - 2].numeric, m_tolerance))
        {
          if (++differences <= m_shown)
            std::printf("iteration %d: %s is %s, recorded %s\n", row.iteration,
                        recording.getColumns()[output.column - 2].name.c_str(), live.c_str(),
                        recorded.c_str());
        }
      }
      for (const Bound& answer : answers)
        if (!row.values[answer.column - 2].empty())
          setValue(*answer.attribute, row.values[answer.column - 2], answer.chronology);
      parser.setIterationWord(endColumn && row.values[*endColumn - 2] == "1" ? CSVDataFileParser::iterationEnd
                                                                             : "");
      if (!parser.saveAs(side.getFile(InterfaceCSVCommon::inFile(counter))))
        throw ToolError("cannot write " + side.getFile(InterfaceCSVCommon::inFile(counter)));
      side.setState(SolveState::Client_NewDataReady);
      await({SolveState::CFDSolver_Solving, SolveState::Finished});
      side.setState(SolveState::Client_WaitForData);
      ++next;
      if (counter)
        ++*counter;
    }
    if (missing.empty())
      side.setState(SolveState::Finished);
  }
  catch (...)
  {
    side.setState(SolveState::Failed);
    throw;
  }
  side.stopHeartbeat();
  if (differences > m_shown)
    std::printf("... and %zu more\n", differences - m_shown);
  std::printf("replayed %zu exchanges from %s; %zu solver values differ from the recording\n", exchanges,
              m_recording.c_str(), differences);
  if (!missing.empty())
    std::printf("stopped: %s\n", missing.c_str());
  return differences == 0 && missing.empty() ? exitFine : exitProblems;
}

} // namespace Ombrix::Tools
