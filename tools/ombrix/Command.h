// Command: one subcommand of ombrix. Each registers its options on the command line and runs when chosen;
// run() returns the exit code (ExitCode) and throws ToolError when it cannot do its work.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Ombrix::Tools
{

class Command
{
public:
  virtual ~Command() = default;

  // Adds the subcommand, with its options, help text and example, to `app`.
  void addTo(CLI::App& app);
  // Whether the command line chose this command.
  bool isChosen() const { return m_subcommand && m_subcommand->parsed(); }
  const std::string& getName() const { return m_name; }
  int run() { return do_run(); }

protected:
  Command(std::string name, std::string description, std::string example)
      : m_name(std::move(name)), m_description(std::move(description)), m_example(std::move(example))
  {
  }

  virtual void do_addOptions(CLI::App& command) = 0;
  virtual int do_run() = 0;

private:
  std::string m_name;
  std::string m_description;
  std::string m_example;
  CLI::App* m_subcommand = nullptr;
};

} // namespace Ombrix::Tools
