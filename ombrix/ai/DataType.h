// The value types an AI module reads and writes, with their text forms ("Int", "Bool", "String",
// "Float", "Double"). The numbers are part of the stream format; 0 has no name.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class DataType : std::int32_t
{
  Int = 1,
  Bool = 2,
  String = 3,
  Float = 4,
  Double = 5,
};

// The name of `type`; "" for a value without a name.
OMBRIX_API std::string dataTypeToString(DataType type);
// Exact, case-sensitive match of a name (nothing trimmed); `fallback` for any other text. The name
// keeps its historical "datat" spelling.
OMBRIX_API DataType datatTypeFromString(const std::string& text, DataType fallback);

} // namespace Ombrix
