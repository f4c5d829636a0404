// ToolError: a command cannot do its work at all (a missing directory, an unreadable file, a bad option
// value). main prints "ombrix <command>: <message>" on stderr and exits with exitError.
#pragma once

#include <stdexcept>

namespace Ombrix::Tools
{

class ToolError : public std::runtime_error
{
public:
  using std::runtime_error::runtime_error;
};

} // namespace Ombrix::Tools
