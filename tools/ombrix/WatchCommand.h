// WatchCommand: `ombrix watch DIR`, a live view of `inspect` that refreshes on every change of the
// directory, with the solver's iterations per second.
#pragma once

#include "Command.h"

namespace Ombrix::Tools
{

class WatchCommand : public Command
{
public:
  WatchCommand();

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::string m_directory;
  int m_gracePeriod = 30;
  bool m_untilFinished = false;
  double m_timeout = 0;
};

} // namespace Ombrix::Tools
