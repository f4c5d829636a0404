// The exit codes of every ombrix command.
#pragma once

namespace Ombrix::Tools
{

enum ExitCode : int
{
  exitFine = 0,     // nothing wrong found
  exitProblems = 1, // the command ran and found problems (an inconsistent directory, a bad file, ...)
  exitError = 2,    // bad usage, or a file or directory that cannot be read or written
};

} // namespace Ombrix::Tools
