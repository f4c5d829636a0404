// ClassicCLocaleScope: while it lives, the C library's number formatting on the calling thread uses the
// classic "C" conventions, whatever locale the host made global (std::locale::global with a named locale
// also sets the C library's). Affects the calling thread only; safe on any thread.
#pragma once

#include "ombrix/OmbrixExport.h"

namespace FileSystem
{

class OMBRIX_API ClassicCLocaleScope
{
public:
  ClassicCLocaleScope();
  ~ClassicCLocaleScope();
  ClassicCLocaleScope(const ClassicCLocaleScope&) = delete;
  ClassicCLocaleScope& operator=(const ClassicCLocaleScope&) = delete;

private:
  // The thread's previous locale (a POSIX locale_t), put back by the destructor; null when nothing changed.
  void* m_previous;
};

} // namespace FileSystem
