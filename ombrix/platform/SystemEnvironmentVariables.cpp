#include "ombrix/platform/SystemEnvironmentVariables.h"

#include <cstdlib>

namespace FileSystem
{

SystemEnvironmentVariables& SystemEnvironmentVariables::instance()
{
  static SystemEnvironmentVariables variables;
  return variables;
}

std::optional<std::string> SystemEnvironmentVariables::get(const std::string& name) const
{
  if (const char* value = std::getenv(name.c_str()))
    return std::string(value);
  return std::nullopt;
}

std::string SystemEnvironmentVariables::get(const std::string& name, const std::string& fallback) const
{
  return get(name).value_or(fallback);
}

} // namespace FileSystem
