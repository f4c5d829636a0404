// The part shared by every object handed to the host: the code and message of the last call. Calls
// on a handle never throw; a failed call returns its ExceptionType and keeps the message here until
// the next call on the same handle, which clears it on success. One thread at a time per handle.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/ExceptionType.h"

namespace KorvanSDK
{

class OMBRIX_API IHandle
{
public:
  virtual ~IHandle() = default;

  // Success after a successful call, else the code the last call returned.
  ExceptionType getLastError() const noexcept { return do_getLastError(); }
  // The failed call's message (for model errors exactly the model's text); "" after success. Valid
  // until the next call on this handle.
  const char* getLastErrorMessage() const noexcept { return do_getLastErrorMessage(); }

protected:
  IHandle() = default;
  IHandle(const IHandle&) = default;
  IHandle& operator=(const IHandle&) = default;

  virtual ExceptionType do_getLastError() const noexcept = 0;
  virtual const char* do_getLastErrorMessage() const noexcept = 0;
};

} // namespace KorvanSDK
