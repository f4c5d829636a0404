#include "ombrix/exchange/WaitResult.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto waitEnds = makeNameTable<WaitEnd>({
    {WaitEnd::Reached, "Reached"},
    {WaitEnd::TimedOut, "TimedOut"},
    {WaitEnd::Stopped, "Stopped"},
    {WaitEnd::PartnerDead, "PartnerDead"},
    {WaitEnd::PartnerFailed, "PartnerFailed"},
});

} // namespace

std::string waitEndToString(WaitEnd end)
{
  return std::string(waitEnds.nameOr(end));
}

WaitEnd waitEndFromString(const std::string& text, WaitEnd fallback)
{
  return waitEnds.valueOr(text, fallback);
}

} // namespace Ombrix
