// A host-side IString backed by std::string.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/IString.h"

#include <string>

namespace KorvanSDK
{

class OMBRIX_API String : public IString
{
public:
  String() = default;
  explicit String(std::string text) : m_text(std::move(text)) {}
  String(const String&) = default;
  String& operator=(const String&) = default;

  const std::string& str() const noexcept { return m_text; }

protected:
  const char* do_c_str() const noexcept override;
  std::size_t do_size() const noexcept override;
  void do_assign(const char* text, std::size_t size) override;

private:
  std::string m_text;
};

} // namespace KorvanSDK
