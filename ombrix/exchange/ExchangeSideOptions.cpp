#include "ombrix/exchange/ExchangeSideOptions.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto judgements = makeNameTable<HeartbeatJudgement>({
    {HeartbeatJudgement::SharedClock, "SharedClock"},
    {HeartbeatJudgement::StampChanges, "StampChanges"},
});

} // namespace

std::string heartbeatJudgementToString(HeartbeatJudgement judgement)
{
  return std::string(judgements.nameOr(judgement));
}

HeartbeatJudgement heartbeatJudgementFromString(const std::string& text, HeartbeatJudgement fallback)
{
  return judgements.valueOr(text, fallback);
}

} // namespace Ombrix
