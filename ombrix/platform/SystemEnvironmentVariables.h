// Read access to the process environment. Reading is safe from any thread as long as nobody changes
// the environment at the same time.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <optional>
#include <string>

namespace FileSystem
{

class OMBRIX_API SystemEnvironmentVariables
{
public:
  static SystemEnvironmentVariables& instance();

  // The variable's value, or nothing when it is not set.
  std::optional<std::string> get(const std::string& name) const;
  // The variable's value, or `fallback` when it is not set (a variable set to "" counts as set).
  std::string get(const std::string& name, const std::string& fallback) const;

private:
  SystemEnvironmentVariables() = default;
};

} // namespace FileSystem
