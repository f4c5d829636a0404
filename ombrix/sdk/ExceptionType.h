// The codes by which the host-facing interfaces report failures instead of throwing, their text forms,
// and the classification of an exception in flight into a code and a message. Safe for concurrent use.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace KorvanSDK
{

enum class ExceptionType : std::int32_t
{
  Success = 0,
  AccessError = 1,        // Ombrix::Model::AccessException: a user read or write the access type forbids
  AttributeReadError = 2, // Ombrix::AttributeReadError: a value of an exchange file could not be taken
  OutOfRange = 3,         // std::out_of_range: a lookup by index, ID or name found nothing
  InvalidArgument = 4,    // std::invalid_argument
  LogicError = 5,         // other std::logic_error ("Invalid type", "Not implemented", ...)
  RuntimeError = 6,     // other std::runtime_error ("Invalid path ...", "Invalid Unit", "Not Available", ...)
  StdException = 7,     // any other std::exception
  UnknownException = 8, // something that is not a std::exception
  NullHandle = 9,       // the call found no object to hand out (an unresolvable shortcut, ...)
  NullArgument = 10,    // a pointer argument was null
};

// "Success", "AccessError", ..., "NullArgument"; values outside the enumeration give "Unknown".
OMBRIX_API std::string exceptionTypeToString(ExceptionType type);
// Exact, case-sensitive match of the texts above; anything else gives `fallback`.
OMBRIX_API ExceptionType exceptionTypeFromString(const std::string& text, ExceptionType fallback);

// The code and what() text of the exception being handled; call only inside a catch block. An
// exception that derives from CodedException reports its own code; the standard families map as
// listed above, the more specific first. Never throws.
OMBRIX_API ExceptionType currentExceptionType(std::string& message) noexcept;

} // namespace KorvanSDK
