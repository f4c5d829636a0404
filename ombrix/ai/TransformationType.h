// The transformations an AI module may apply to its values, with their text forms ("Inverse",
// "Identity", "Curve", "PowerLaw", "SimpleScaling", "MeanStdDevScaling"). Applying them is the module's
// business. The numbers are part of the stream format; 0 has no name.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class TransformationType : std::int32_t
{
  Inverse = -1,
  Identity = 1,
  Curve = 2,
  PowerLaw = 3,
  SimpleScaling = 4,
  MeanStdDevScaling = 5,
};

// The name of `type`; "" for a value without a name.
OMBRIX_API std::string transformationTypeToString(TransformationType type);
// Exact, case-sensitive match of a name (nothing trimmed); `fallback` for any other text.
OMBRIX_API TransformationType transformationTypeFromString(const std::string& text,
                                                           TransformationType fallback);

} // namespace Ombrix
