#include "ombrix/exchange/ExchangeModes.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto syncModes = makeNameTable<SyncMode>({
    {SyncMode::Iteration, "Iteration"},
    {SyncMode::TimeStep, "TimeStep"},
    {SyncMode::Disabled, "Disabled"},
});

constexpr auto stateFileModes = makeNameTable<StateFileMode>({
    {StateFileMode::Off, "Off"},
    {StateFileMode::WriteOnly, "WriteOnly"},
    {StateFileMode::WriteAndWait, "WriteAndWait"},
});

constexpr auto readFailureHandlings = makeNameTable<ReadFailureHandling>({
    {ReadFailureHandling::LogAndContinue, "LogAndContinue"},
    {ReadFailureHandling::Fail, "Fail"},
    {ReadFailureHandling::Retry, "Retry"},
});

} // namespace

std::string syncModeToString(SyncMode mode)
{
  return std::string(syncModes.nameOr(mode));
}

SyncMode syncModeFromString(const std::string& text, SyncMode fallback)
{
  return syncModes.valueOr(text, fallback);
}

std::string stateFileModeToString(StateFileMode mode)
{
  return std::string(stateFileModes.nameOr(mode));
}

StateFileMode stateFileModeFromString(const std::string& text, StateFileMode fallback)
{
  return stateFileModes.valueOr(text, fallback);
}

std::string readFailureHandlingToString(ReadFailureHandling handling)
{
  return std::string(readFailureHandlings.nameOr(handling));
}

ReadFailureHandling readFailureHandlingFromString(const std::string& text, ReadFailureHandling fallback)
{
  return readFailureHandlings.valueOr(text, fallback);
}

} // namespace Ombrix
