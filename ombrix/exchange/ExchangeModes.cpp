#include "ombrix/exchange/ExchangeModes.h"

#include <array>
#include <string_view>
#include <utility>

namespace Ombrix
{
namespace
{

template <typename E, std::size_t N>
std::string nameOf(const std::array<std::pair<E, std::string_view>, N>& table, E value)
{
  for (const auto& [e, name] : table)
  {
    if (e == value)
      return std::string(name);
  }
  return std::string();
}

template <typename E, std::size_t N>
E valueOf(const std::array<std::pair<E, std::string_view>, N>& table, const std::string& text, E fallback)
{
  for (const auto& [e, name] : table)
  {
    if (name == text)
      return e;
  }
  return fallback;
}

constexpr std::array<std::pair<SyncMode, std::string_view>, 3> syncModes{{
    {SyncMode::Iteration, "Iteration"},
    {SyncMode::TimeStep, "TimeStep"},
    {SyncMode::Disabled, "Disabled"},
}};

constexpr std::array<std::pair<StateFileMode, std::string_view>, 3> stateFileModes{{
    {StateFileMode::Off, "Off"},
    {StateFileMode::WriteOnly, "WriteOnly"},
    {StateFileMode::WriteAndWait, "WriteAndWait"},
}};

constexpr std::array<std::pair<ReadFailureHandling, std::string_view>, 3> readFailureHandlings{{
    {ReadFailureHandling::LogAndContinue, "LogAndContinue"},
    {ReadFailureHandling::Fail, "Fail"},
    {ReadFailureHandling::Retry, "Retry"},
}};

} // namespace

std::string syncModeToString(SyncMode mode)
{
  return nameOf(syncModes, mode);
}

SyncMode syncModeFromString(const std::string& text, SyncMode fallback)
{
  return valueOf(syncModes, text, fallback);
}

std::string stateFileModeToString(StateFileMode mode)
{
  return nameOf(stateFileModes, mode);
}

StateFileMode stateFileModeFromString(const std::string& text, StateFileMode fallback)
{
  return valueOf(stateFileModes, text, fallback);
}

std::string readFailureHandlingToString(ReadFailureHandling handling)
{
  return nameOf(readFailureHandlings, handling);
}

ReadFailureHandling readFailureHandlingFromString(const std::string& text, ReadFailureHandling fallback)
{
  return valueOf(readFailureHandlings, text, fallback);
}

} // namespace Ombrix
