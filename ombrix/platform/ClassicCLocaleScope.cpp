#include "ombrix/platform/ClassicCLocaleScope.h"

#include <locale.h>

namespace FileSystem
{
namespace
{

// Made once and kept for the life of the process; the "C" locale always exists.
locale_t classicLocale()
{
  static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return classic;
}

} // namespace

ClassicCLocaleScope::ClassicCLocaleScope() : m_previous(nullptr)
{
  if (const locale_t classic = classicLocale())
    m_previous = uselocale(classic);
}

ClassicCLocaleScope::~ClassicCLocaleScope()
{
  if (m_previous)
    uselocale(static_cast<locale_t>(m_previous));
}

} // namespace FileSystem
