// What a user of the model may do with an attribute's value.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace KorvanSDK
{

enum class AccessType : std::int32_t
{
  None = 0,
  ReadOnly = 1,
  WriteOnly = 2,
  ReadWrite = 3,
};

// "None", "ReadOnly", "WriteOnly", "ReadWrite"; throws std::logic_error("Not implemented") for other values.
OMBRIX_API std::string accessTypeToString(AccessType access);
// Exact, case-sensitive match; anything else gives `fallback`.
OMBRIX_API AccessType accessTypeFromString(const std::string& text, AccessType fallback = AccessType::None);

inline bool hasReadAccess(AccessType access)
{
  return access == AccessType::ReadOnly || access == AccessType::ReadWrite;
}
inline bool hasWriteAccess(AccessType access)
{
  return access == AccessType::WriteOnly || access == AccessType::ReadWrite;
}

} // namespace KorvanSDK
