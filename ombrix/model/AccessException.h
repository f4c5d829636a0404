// Raised when a user of the model reads or writes a value its access type does not allow.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/CodedException.h"

#include <stdexcept>
#include <string>

namespace Ombrix::Model
{

class OMBRIX_API AccessException : public std::runtime_error, public KorvanSDK::CodedException
{
public:
  explicit AccessException(const std::string& message) : std::runtime_error(message) {}
  KorvanSDK::ExceptionType exceptionType() const noexcept override
  {
    return KorvanSDK::ExceptionType::AccessError;
  }
};

} // namespace Ombrix::Model
