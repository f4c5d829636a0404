// Base of every object handed to the host: the interface I, a handle type number N, and the code and
// message of the last call, kept for the caller to read. `guard` runs a call's body and turns anything
// it throws into the returned code, so nothing crosses the library boundary. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/ExceptionType.h"

#include <string>
#include <utility>

namespace KorvanSDK
{

// The handle type numbers N of the library's handles.
namespace HandleType
{
inline constexpr int Attribute = 1;
inline constexpr int CompositeAttribute = 2;
inline constexpr int Entity = 3;
inline constexpr int LinkAttribute = 4;
inline constexpr int ShortcutAttribute = 5;
inline constexpr int EntityCollection = 6;
inline constexpr int ListAttribute = 7;
inline constexpr int ArrayAttribute = 8;
} // namespace HandleType

template <class I, int N> class OMBRIX_API Handle : public I
{
public:
  static constexpr int handleType = N;

protected:
  ExceptionType do_getLastError() const noexcept override { return m_error; }
  const char* do_getLastErrorMessage() const noexcept override { return m_message.c_str(); }

  // Runs `body`; Success clears the last error, an exception becomes the returned code and the kept
  // message (see currentExceptionType).
  template <class F> ExceptionType guard(F&& body) noexcept
  {
    try
    {
      std::forward<F>(body)();
      m_error = ExceptionType::Success;
      m_message.clear();
    }
    catch (...)
    {
      m_error = currentExceptionType(m_message);
    }
    return m_error;
  }

private:
  ExceptionType m_error = ExceptionType::Success;
  std::string m_message;
};

} // namespace KorvanSDK
