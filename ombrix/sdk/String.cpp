#include "ombrix/sdk/String.h"

namespace KorvanSDK
{

const char* String::do_c_str() const noexcept
{
  return m_text.c_str();
}

std::size_t String::do_size() const noexcept
{
  return m_text.size();
}

void String::do_assign(const char* text, std::size_t size)
{
  if (size == 0)
    m_text.clear();
  else
    m_text.assign(text, size);
}

} // namespace KorvanSDK
