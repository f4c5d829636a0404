// An error the host facade raises itself (a null argument, nothing to hand out), carrying its code.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/CodedException.h"

#include <stdexcept>
#include <string>

namespace KorvanSDK
{

class OMBRIX_API FacadeException : public std::runtime_error, public CodedException
{
public:
  FacadeException(ExceptionType code, const std::string& message) : std::runtime_error(message), m_code(code)
  {
  }
  ExceptionType exceptionType() const noexcept override { return m_code; }

private:
  ExceptionType m_code;
};

// Throws FacadeException(NullArgument, "Argument '<name>' is null: pass a valid pointer") for a null
// pointer, else returns it.
template <class T> T* requireArgument(T* pointer, const char* name)
{
  if (!pointer)
    throw FacadeException(ExceptionType::NullArgument,
                          std::string("Argument '") + name + "' is null: pass a valid pointer");
  return pointer;
}

} // namespace KorvanSDK
