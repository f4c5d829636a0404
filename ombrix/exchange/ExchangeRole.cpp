#include "ombrix/exchange/ExchangeRole.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto roles = makeNameTable<ExchangeRole>({
    {ExchangeRole::Solver, "solver"},
    {ExchangeRole::Client, "client"},
});

} // namespace

std::string exchangeRoleToString(ExchangeRole role)
{
  return std::string(roles.nameOr(role));
}

ExchangeRole exchangeRoleFromString(const std::string& text, ExchangeRole fallback)
{
  return roles.valueOr(text, fallback);
}

} // namespace Ombrix
