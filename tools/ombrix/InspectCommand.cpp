#include "InspectCommand.h"

#include "DirectoryInspector.h"
#include "ExitCode.h"

#include <cstdio>

namespace Ombrix::Tools
{

InspectCommand::InspectCommand()
    : Command(
          "inspect",
          "Show what an exchange directory holds and where each side stands: each file with its size and "
          "age, whether each CSV file is complete and reads, the entities and attributes of def.csv, the "
          "iteration and time of the latest data files, each side's state, heartbeat age and lock holder. "
          "Exits 1 when something is inconsistent (a broken file, a stopped heartbeat, a failed side).",
          "  ombrix inspect /tmp/exchange --grace 3")
{
}

void InspectCommand::do_addOptions(CLI::App& command)
{
  command.add_option("DIR", m_directory, "the exchange directory")->required();
  command.add_option("--grace", m_gracePeriod, "seconds after which a heartbeat counts as stopped")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
}

int InspectCommand::do_run()
{
  DirectoryInspector inspector(m_directory, m_gracePeriod);
  const DirectoryReport report = inspector.inspect();
  std::fputs(report.render(Console::wantsColour(stdout)).c_str(), stdout);
  return report.isConsistent() ? exitFine : exitProblems;
}

} // namespace Ombrix::Tools
