// The points of a solve at which a value is kept.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace KorvanSDK
{

enum class Chronology : std::int32_t
{
  Initial = 0,
  Continue = 1,
  TimeStepStart = 2,
  Current = 3,
  Next = 4,
};

// "Initial", "Continue", "TimeStepStart", "Current", "Next"; throws std::logic_error("Not implemented")
// for any other value.
OMBRIX_API std::string chronologyToString(Chronology chronology);
// Exact, case-sensitive match; anything else gives `fallback`.
OMBRIX_API Chronology chronologyFromString(const std::string& text, Chronology fallback);

} // namespace KorvanSDK
