// A text the library fills for the host (names, paths, units, string values) without handing a
// std::string across the library boundary. KorvanSDK::String is a ready-made implementation.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstddef>

namespace KorvanSDK
{

class OMBRIX_API IString
{
public:
  virtual ~IString() = default;

  // Null-terminated; valid until the next assign.
  const char* c_str() const noexcept { return do_c_str(); }
  // Length in bytes without the terminator.
  std::size_t size() const noexcept { return do_size(); }
  // Replaces the text by `size` bytes from `text` (which may be null when `size` is 0).
  void assign(const char* text, std::size_t size) { do_assign(text, size); }

protected:
  IString() = default;
  IString(const IString&) = default;
  IString& operator=(const IString&) = default;

  virtual const char* do_c_str() const noexcept = 0;
  virtual std::size_t do_size() const noexcept = 0;
  virtual void do_assign(const char* text, std::size_t size) = 0;
};

} // namespace KorvanSDK
