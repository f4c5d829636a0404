// ReplayCommand: `ombrix replay RECORDING DIR`, plays the client's recorded answers back to a live solver
// in DIR, for regression runs: it takes the client's side of the exchange, answers each of the solver's
// data files with the recorded client values of that iteration, and compares the solver's values with the
// recorded ones.
#pragma once

#include "Command.h"

namespace Ombrix::Tools
{

class ReplayCommand : public Command
{
public:
  ReplayCommand();

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::string m_recording;
  std::string m_directory;
  std::string m_mode = "Fixed";
  int m_timeout = 60000;
  int m_heartbeat = 1;
  int m_gracePeriod = 30;
  double m_tolerance = 1e-6;
  std::size_t m_shown = 10;
};

} // namespace Ombrix::Tools
