// How a value is stored: one value (Simple) or one per point of the chronology (Chronological).
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix::Model
{

enum class ValueType : std::int32_t
{
  Simple = 1,
  Chronological = 2,
};

// "Simple", "Chronological"; other values give "".
OMBRIX_API std::string valueTypeToString(ValueType type);
// Exact, case-sensitive match; anything else gives `fallback`.
OMBRIX_API ValueType valueTypeFromString(const std::string& text, ValueType fallback);

} // namespace Ombrix::Model
