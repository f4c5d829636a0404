#include "FrameCheck.h"

#include <stdexcept>

namespace Ombrix::Tools
{

std::string FrameCheck::problem(const std::string& path)
{
  FrameCheck check;
  try
  {
    return check.parseFile(path) ? "" : path + " does not exist";
  }
  catch (const std::exception& error)
  {
    return error.what();
  }
}

} // namespace Ombrix::Tools
