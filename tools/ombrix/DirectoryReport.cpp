#include "DirectoryReport.h"

#include "TextTable.h"

#include <algorithm>
#include <cmath>

namespace Ombrix::Tools
{

using Tone = Console::Tone;

namespace
{

std::string describeSide(const DirectoryReport::Side& side, int gracePeriod)
{
  std::string text = side.state ? "state " + std::to_string(*side.state) +
                                      (side.stateName.empty() ? "" : " " + side.stateName)
                                : "no state file";
  if (side.heartbeatAge)
    text += "; heartbeat " + Console::duration(*side.heartbeatAge) + " old" +
            (*side.heartbeatAge >= gracePeriod ? " (stopped)" : "");
  else
    text += "; no heartbeat";
  if (!side.latestFile.empty())
  {
    text += "; " + side.latestFile;
    if (side.latestTime)
    {
      text += ": iteration " + std::to_string(side.latestTime->getIteration());
      if (side.latestTime->isTransient())
      {
        char time[48];
        std::snprintf(time, sizeof time, ", time %g s", side.latestTime->getTime());
        text += time;
      }
    }
  }
  return text;
}

} // namespace

bool DirectoryReport::isConsistent() const
{
  return std::none_of(findings.begin(), findings.end(),
                      [](const Finding& finding) { return finding.tone == Tone::Problem; });
}

std::string DirectoryReport::render(bool colour) const
{
  std::string out =
      "Exchange directory " + directory + " (grace period " + std::to_string(gracePeriod) + " s)\n\n";
  TextTable files({"File", "Size", "Age", "Holds"});
  for (const auto& entry : entries)
  {
    const auto detail = details.find(entry.name);
    TextTable::Cell holds;
    if (detail != details.end())
      holds = {detail->second.text, detail->second.tone};
    files.addRow({{entry.name}, {Console::size(entry.size)}, {Console::duration(entry.age)}, holds});
  }
  out += files.render(colour) + "\n";
  TextTable sides({"Side", "Where it stands"});
  for (const Side* side : {&solver, &client})
    sides.addRow({{side->role}, {describeSide(*side, gracePeriod)}});
  out += sides.render(colour);

  std::size_t problems = 0;
  if (!findings.empty())
    out += "\n";
  for (const auto& finding : findings)
  {
    problems += finding.tone == Tone::Problem ? 1 : 0;
    const std::string label = finding.tone == Tone::Problem ? "problem" : "note";
    out += Console::paint(label, finding.tone, colour) + ": " +
           (finding.file.empty() ? "" : finding.file + ": ") + finding.text + "\n";
  }
  out +=
      "\n" +
      (problems == 0 ? Console::paint("consistent", Tone::Good, colour)
                     : Console::paint(std::to_string(problems) + (problems == 1 ? " problem" : " problems"),
                                      Tone::Problem, colour)) +
      "\n";
  return out;
}

std::string DirectoryReport::summary() const
{
  std::string text;
  for (const Side* side : {&solver, &client})
  {
    text += (text.empty() ? "" : " | ") + side->role + " " +
            (side->state ? std::to_string(*side->state) + " " + side->stateName : std::string("-"));
    if (side->latestTime)
      text += ", iteration " + std::to_string(side->latestTime->getIteration());
  }
  const std::size_t problems = static_cast<std::size_t>(
      std::count_if(findings.begin(), findings.end(),
                    [](const Finding& finding) { return finding.tone == Tone::Problem; }));
  return text + (problems ? " | " + std::to_string(problems) + " problem" + (problems == 1 ? "" : "s") : "");
}

} // namespace Ombrix::Tools
