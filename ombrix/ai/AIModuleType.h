// Text forms of the host's AI module types ("Trivial", "NeuralNetwork", "TorchScript", "ONNX", "Python",
// "Transformed").
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/ModuleType.h"

#include <string>

namespace Ombrix
{

// The name of `type`; "" for a value without a name.
OMBRIX_API std::string aiModuleTypeToString(AISystem::ModuleType type);
// Exact, case-sensitive match of a name (nothing trimmed); `fallback` for any other text.
OMBRIX_API AISystem::ModuleType aiModuleTypeFromString(const std::string& text,
                                                       AISystem::ModuleType fallback);

} // namespace Ombrix
