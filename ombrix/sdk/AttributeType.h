// The kinds of attribute the host SDK knows; the numbers tie each attribute class to its type.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace KorvanSDK
{

enum class AttributeType : std::int32_t
{
  Unknown = 0,
  Int = 1,
  Bool = 2,
  String = 3,
  Float = 4,
  Composite = 5,
  Entity = 6,
  Link = 7,
  List = 8,
  Shortcut = 9,
  Array = 10,
  Double = 11,
};

// "Int", "Bool", ...; every value outside 1..11 is "Unknown".
OMBRIX_API std::string attributeTypeToString(AttributeType type);
// Exact, case-sensitive match of the texts above; anything else gives `fallback`.
OMBRIX_API AttributeType attributeTypeFromString(const std::string& text,
                                                 AttributeType fallback = AttributeType::Unknown);

} // namespace KorvanSDK
