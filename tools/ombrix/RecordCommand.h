// RecordCommand: `ombrix record DIR --to OUT`, every data file exchanged during a run, both directions,
// recorded as a time-series table (Recording) in CSV or HDF5.
#pragma once

#include "Command.h"

namespace Ombrix::Tools
{

class RecordCommand : public Command
{
public:
  RecordCommand();

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::string m_directory;
  std::string m_output;
  std::string m_format;
  double m_timeout = 0;
  int m_gracePeriod = 30;
};

} // namespace Ombrix::Tools
