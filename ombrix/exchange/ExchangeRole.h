// ExchangeRole: the two sides of an exchange directory. The solver writes def.csv, the out files and
// out.state / out.alive; the client writes the in files and in.state / in.alive.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class ExchangeRole : std::int32_t
{
  Solver = 0,
  Client = 1,
};

// "solver", "client" (as a message names the side); other values give "". The FromString form matches
// exactly and gives `fallback` otherwise.
OMBRIX_API std::string exchangeRoleToString(ExchangeRole role);
OMBRIX_API ExchangeRole exchangeRoleFromString(const std::string& text, ExchangeRole fallback);

// The other side.
inline ExchangeRole partnerOf(ExchangeRole role)
{
  return role == ExchangeRole::Solver ? ExchangeRole::Client : ExchangeRole::Solver;
}

} // namespace Ombrix
