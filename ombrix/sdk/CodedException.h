// A mix-in for exceptions of the library that have their own ExceptionType code, so that the host
// facade can report them without knowing their classes (the facade sits below the layers that throw).
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/ExceptionType.h"

namespace KorvanSDK
{

class OMBRIX_API CodedException
{
public:
  virtual ~CodedException() = default;
  virtual ExceptionType exceptionType() const noexcept = 0;

protected:
  CodedException() = default;
  CodedException(const CodedException&) = default;
  CodedException& operator=(const CodedException&) = default;
};

} // namespace KorvanSDK
