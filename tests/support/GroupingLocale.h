// GroupingLocale: for the life of the object, a global locale that groups digits by three with '.' and
// writes ',' as the decimal point, as a host application might set; the previous one comes back after.
// It is the named "de_DE.UTF-8" when installed (which also switches the C library's locale), otherwise the
// classic locale with such a numpunct facet (C++ streams only).
#pragma once

#include <locale>
#include <stdexcept>
#include <string>

namespace OmbrixTest
{

struct GroupingPunctuation : std::numpunct<char>
{
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class GroupingLocale
{
public:
  GroupingLocale() : m_previous(std::locale::global(make())) {}
  ~GroupingLocale() { std::locale::global(m_previous); }
  GroupingLocale(const GroupingLocale&) = delete;
  GroupingLocale& operator=(const GroupingLocale&) = delete;

  // True when the C library's locale is switched as well.
  static bool named() { return std::locale().name() != "*"; }

private:
  static std::locale make()
  {
    try
    {
      return std::locale("de_DE.UTF-8");
    }
    catch (const std::runtime_error&)
    {
      return std::locale(std::locale::classic(), new GroupingPunctuation);
    }
  }

  std::locale m_previous;
};

} // namespace OmbrixTest
