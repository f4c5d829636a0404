// DiffCommand: `ombrix diff A B`, the model comparator on two definition files, or on two data files
// applied to their definition.
#pragma once

#include "Command.h"

namespace Ombrix::Tools
{

class DiffCommand : public Command
{
public:
  DiffCommand();

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::string m_reference;
  std::string m_model;
  std::string m_definition;
  double m_tolerance = 1e-5;
  bool m_json = false;
};

} // namespace Ombrix::Tools
