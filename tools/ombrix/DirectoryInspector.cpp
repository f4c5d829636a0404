#include "DirectoryInspector.h"

#include "ombrix/model/Attribute.h"
#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/platform/Path.h"

#include "FrameCheck.h"
#include "ModelFiles.h"
#include "ToolError.h"

#include <chrono>
#include <cmath>
#include <functional>

namespace Ombrix::Tools
{

using Tone = Console::Tone;
using Kind = ExchangeFiles::Kind;

namespace
{

std::size_t countAttributes(const Model::CompositeAttribute& composite)
{
  std::size_t count = 0;
  for (const auto& child : composite)
  {
    ++count;
    if (child->isComposite())
      count += countAttributes(static_cast<const Model::CompositeAttribute&>(*child));
  }
  return count;
}

std::string describeTime(const CSVSimulationTime& time)
{
  std::string text = "iteration " + std::to_string(time.getIteration());
  if (time.isTransient())
  {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, ", time %g s", time.getTime());
    text += buffer;
  }
  return text;
}

} // namespace

DirectoryInspector::DirectoryInspector(std::string directory, int gracePeriod)
    : m_directory(FileSystem::Path::stripTrailingSlash(directory)), m_gracePeriod(gracePeriod)
{
  ExchangeFiles::list(m_directory);
}

DirectoryReport DirectoryInspector::inspect()
{
  DirectoryReport report;
  report.directory = m_directory;
  report.gracePeriod = m_gracePeriod;
  report.entries = ExchangeFiles::list(m_directory);

  const ExchangeFiles::Entry* definition = nullptr;
  bool anyExchangeFile = false;
  bool anyData = false;
  for (const auto& entry : report.entries)
  {
    anyExchangeFile = anyExchangeFile || (entry.kind != Kind::Other && entry.kind != Kind::OtherCsv);
    anyData = anyData || entry.kind == Kind::Data;
    if (entry.kind == Kind::Definition)
      definition = &entry;
  }
  if (definition)
    inspectDefinition(*definition, report);
  else
  {
    m_model.reset();
    m_modelVersion.reset();
  }
  for (const std::string direction : {"out", "in"})
  {
    const ExchangeFiles::Entry* latest = ExchangeFiles::latestData(report.entries, direction);
    for (const auto& entry : report.entries)
      if (entry.kind == Kind::Data && entry.direction == direction)
        inspectData(entry, &entry == latest, report);
  }
  for (const auto& entry : report.entries)
  {
    const std::string file = path(entry.name);
    DirectoryReport::Finding& detail = report.details[entry.name];
    detail.file = entry.name;
    switch (entry.kind)
    {
    case Kind::State:
      if (const auto state = ExchangeFiles::readState(file))
        detail.text =
            std::to_string(state->number) + " " + state->text + (state->complete ? "" : " (incomplete)");
      else
        detail = {entry.name, Tone::Problem, "holds no state number"};
      break;
    case Kind::Alive:
      if (const auto stamp = ExchangeFiles::readAliveStamp(file))
        detail.text = "stamp " + std::to_string(*stamp);
      else
        detail = {entry.name, Tone::Problem, "incomplete: no stamp followed by the end marker"};
      break;
    case Kind::Lock:
      if (const auto lock = ExchangeFiles::readLock(file))
      {
        detail.text = "process " + std::to_string(lock->pid) + " on host " + lock->host;
        if (lock->running == false)
        {
          detail.tone = Tone::Note;
          detail.text += ", no longer running";
        }
      }
      else
        detail.text = "no holder recorded";
      break;
    case Kind::Temporary:
      detail = {entry.name, Tone::Note,
                entry.age > 10
                    ? "a replacement left by a writer that crashed (removed when that side starts again)"
                    : "a replacement being written"};
      break;
    case Kind::OtherCsv:
    {
      const std::string problem = FrameCheck::problem(file);
      detail = problem.empty() ? DirectoryReport::Finding{entry.name, Tone::Plain, "complete frame"}
                               : DirectoryReport::Finding{entry.name, Tone::Problem, problem};
      break;
    }
    default:
      break;
    }
    if (detail.tone == Tone::Problem || detail.tone == Tone::Note)
      if (entry.kind != Kind::Definition && entry.kind != Kind::Data)
        report.findings.push_back(detail);
  }
  inspectSide(report.solver, "out", report);
  inspectSide(report.client, "in", report);
  if (!anyExchangeFile)
    report.findings.push_back(
        {"", Tone::Problem,
         "holds none of the exchange files (def.csv, out.csv, in.csv, out.state, in.state, "
         "out.alive, in.alive): is it the exchange directory?"});
  else if (anyData && !definition)
    report.findings.push_back({"def.csv", Tone::Problem, "missing, while data files are there"});
  return report;
}

void DirectoryInspector::inspectDefinition(const ExchangeFiles::Entry& entry, DirectoryReport& report)
{
  const Version version{entry.changed, entry.size};
  if (m_modelVersion != version)
  {
    // Every data file is read against this model: a new definition makes their details stale.
    m_cache.clear();
    m_modelVersion = version;
    m_model = std::make_unique<Model::EntityCollection>();
    try
    {
      ModelFiles::readDefinition(path(entry.name), *m_model);
      m_entities = m_model->size();
      m_attributes = 0;
      for (const Model::Entity* entity : *m_model)
        m_attributes += countAttributes(*entity);
      m_cache[entry.name] = {
          version,
          {entry.name, Tone::Plain,
           std::to_string(m_entities) + " entities, " + std::to_string(m_attributes) + " attributes"},
          std::nullopt};
    }
    catch (const ToolError& error)
    {
      m_model.reset();
      m_cache[entry.name] = {version, {entry.name, Tone::Problem, error.what()}, std::nullopt};
    }
  }
  const Cached& cached = m_cache[entry.name];
  report.details[entry.name] = cached.detail;
  if (cached.detail.tone == Tone::Problem)
    report.findings.push_back(cached.detail);
  report.entities = m_model ? m_entities : 0;
  report.attributes = m_model ? m_attributes : 0;
}

void DirectoryInspector::inspectData(const ExchangeFiles::Entry& entry, bool latest, DirectoryReport& report)
{
  const Version version{entry.changed, entry.size};
  auto found = m_cache.find(entry.name);
  if (found == m_cache.end() || !(found->second.version == version))
  {
    Cached cached{version, {entry.name, Tone::Plain, "complete frame"}, std::nullopt};
    if (latest && m_model)
    {
      CSVDataFileParser parser(*m_model, ModelFiles::allChronologies());
      try
      {
        ModelFiles::readData(path(entry.name), parser);
        if (parser.hasFileSimulationTime())
        {
          cached.time = parser.getFileSimulationTime();
          cached.detail.text =
              describeTime(*cached.time) + (parser.isEndRequested() ? ", END requested" : "");
        }
        else
          cached.detail.text = "no simulation time";
      }
      catch (const ToolError& error)
      {
        cached.detail = {entry.name, Tone::Problem, error.what()};
      }
    }
    else if (const std::string problem = FrameCheck::problem(path(entry.name)); !problem.empty())
      cached.detail = {entry.name, Tone::Problem, problem};
    found = m_cache.insert_or_assign(entry.name, cached).first;
  }
  report.details[entry.name] = found->second.detail;
  if (found->second.detail.tone == Tone::Problem)
    report.findings.push_back(found->second.detail);
  if (latest)
  {
    DirectoryReport::Side& side = entry.direction == "out" ? report.solver : report.client;
    side.latestFile = entry.name;
    side.latestTime = found->second.time;
  }
}

void DirectoryInspector::inspectSide(DirectoryReport::Side& side, const std::string& direction,
                                     DirectoryReport& report)
{
  const std::string stateFile = direction + ".state";
  const std::string aliveFile = direction + ".alive";
  if (const auto state = ExchangeFiles::readState(path(stateFile)))
  {
    side.state = state->number;
    side.stateName = ExchangeFiles::stateName(state->number);
    if (!state->complete)
      report.findings.push_back(
          {stateFile, Tone::Problem,
           "has no end marker \"<END>\": the " + side.role + "'s partner reads it as 0"});
    else if (side.stateName.empty())
      report.findings.push_back({stateFile, Tone::Problem,
                                 std::to_string(state->number) + " is not a solve state of the exchange"});
    side.finished = state->number == static_cast<int>(KorvanSDK::SolveState::Finished) ||
                    state->number == static_cast<int>(KorvanSDK::SolveState::Failed);
    if (state->number == static_cast<int>(KorvanSDK::SolveState::Failed))
      report.findings.push_back({stateFile, Tone::Problem, "the " + side.role + " reports that it failed"});
  }
  if (const auto stamp = ExchangeFiles::readAliveStamp(path(aliveFile)))
  {
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    side.heartbeatAge = static_cast<double>(now - *stamp);
    if (*side.heartbeatAge >= report.gracePeriod && !side.finished)
      report.findings.push_back(
          {aliveFile, Tone::Problem,
           "the " + side.role + "'s heartbeat is " + Console::duration(*side.heartbeatAge) +
               " old, beyond the grace period of " + std::to_string(report.gracePeriod) + " s: the " +
               side.role + " stopped answering" +
               (side.state ? " (last state " + std::to_string(*side.state) + ")" : "")});
  }
  else if (side.state && !side.finished && !report.details.count(aliveFile))
    report.findings.push_back({aliveFile, Tone::Note, "missing: the " + side.role + " writes no heartbeat"});
}

} // namespace Ombrix::Tools
