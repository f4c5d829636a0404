// The activation functions of a dense network's layers, with their text forms ("Identity", "Relu",
// "Tanh", "Sigmoid"). The numbers are part of the network's binary format.
#pragma once

#include "ombrix/OmbrixAIExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class Activation : std::uint32_t
{
  Identity = 0,
  Relu = 1,
  Tanh = 2,
  Sigmoid = 3,
};

// The name of `activation`; "" for a value without a name.
OMBRIX_AI_API std::string activationToString(Activation activation);
// Exact, case-sensitive match of a name; `fallback` for any other text.
OMBRIX_AI_API Activation activationFromString(const std::string& text, Activation fallback);
// Whether `value` is the number of an activation.
OMBRIX_AI_API bool isActivation(std::uint32_t value);

} // namespace Ombrix
