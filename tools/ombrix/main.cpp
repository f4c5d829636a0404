// ombrix: looks into, checks, compares and records the exchange of a solver and its client.
#include "DiffCommand.h"
#include "ExitCode.h"
#include "InspectCommand.h"
#include "RecordCommand.h"
#include "ReplayCommand.h"
#include "ToolError.h"
#include "ValidateCommand.h"
#include "WatchCommand.h"

#include <cstdio>
#include <memory>
#include <vector>

int main(int argc, char** argv)
{
  using namespace Ombrix::Tools;
  CLI::App app(
      "ombrix: look into, check, compare and record the exchange directory of a solver and its client.",
      "ombrix");
  app.require_subcommand(1);
  app.footer("\nRun 'ombrix <command> --help' for a command's options and an example.\n"
             "Exit codes: 0 fine, 1 problems found, 2 bad usage or unreadable input.");
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<InspectCommand>());
  commands.push_back(std::make_unique<ValidateCommand>());
  commands.push_back(std::make_unique<DiffCommand>());
  commands.push_back(std::make_unique<WatchCommand>());
  commands.push_back(std::make_unique<RecordCommand>());
  commands.push_back(std::make_unique<ReplayCommand>());
  for (auto& command : commands)
    command->addTo(app);
  try
  {
    app.parse(argc, argv);
  }
  catch (const CLI::CallForHelp& help)
  {
    return app.exit(help);
  }
  catch (const CLI::ParseError& error)
  {
    app.exit(error);
    return exitError;
  }
  for (auto& command : commands)
  {
    if (!command->isChosen())
      continue;
    try
    {
      return command->run();
    }
    catch (const std::exception& error)
    {
      std::fprintf(stderr, "ombrix %s: %s\n", command->getName().c_str(), error.what());
      return exitError;
    }
  }
  return exitError;
}
