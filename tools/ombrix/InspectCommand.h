// InspectCommand: `ombrix inspect DIR`, what an exchange directory holds and where each side stands.
#pragma once

#include "Command.h"

namespace Ombrix::Tools
{

class InspectCommand : public Command
{
public:
  InspectCommand();

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::string m_directory;
  int m_gracePeriod = 30;
};

} // namespace Ombrix::Tools
