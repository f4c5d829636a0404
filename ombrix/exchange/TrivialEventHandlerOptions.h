// The trivial event handler has no settings: an empty group "TrivialEventHandlerOptions" in streams.
#pragma once

#include "ombrix/OmbrixExport.h"

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix
{

struct OMBRIX_API TrivialEventHandlerOptions
{
  friend bool operator==(const TrivialEventHandlerOptions&, const TrivialEventHandlerOptions&)
  {
    return true;
  }
};

OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const TrivialEventHandlerOptions&);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, TrivialEventHandlerOptions&);

} // namespace Ombrix
