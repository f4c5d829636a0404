// How serious a problem found on one entity is, from a note to a failure that stops the exchange,
// with its text forms ("Information", "Warning", "Error", "Fatal").
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix::Model
{

enum class EntityErrorLevel : std::int32_t
{
  Information = 0,
  Warning = 1,
  Error = 2,
  Fatal = 3,
};

// The name of `level`; "" for a value without a name.
OMBRIX_API std::string entityErrorLevelToString(EntityErrorLevel level);
// Exact, case-sensitive match of a name; `fallback` for any other text.
OMBRIX_API EntityErrorLevel entityErrorLevelFromString(const std::string& text, EntityErrorLevel fallback);

} // namespace Ombrix::Model
