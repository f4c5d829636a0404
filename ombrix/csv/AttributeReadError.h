// AttributeReadError: the exception thrown for a content row of a CSV exchange file that names or
// describes an attribute that cannot be read into the model. The host facade reports it as
// ExceptionType::AttributeReadError.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/CodedException.h"

#include <stdexcept>
#include <string>

namespace Ombrix
{

class OMBRIX_API AttributeReadError : public std::runtime_error, public KorvanSDK::CodedException
{
public:
  explicit AttributeReadError(const std::string& message) : std::runtime_error(message) {}
  KorvanSDK::ExceptionType exceptionType() const noexcept override
  {
    return KorvanSDK::ExceptionType::AttributeReadError;
  }
};

} // namespace Ombrix
