// Interrupt: Ctrl-C (SIGINT) and SIGTERM end the long-running commands (watch, record, replay) in an orderly
// way: they finish what they write, instead of dying in the middle of it.
#pragma once

namespace Ombrix::Tools
{

class Interrupt
{
public:
  // Catches SIGINT and SIGTERM from now on.
  static void install();
  static bool requested();
};

} // namespace Ombrix::Tools
