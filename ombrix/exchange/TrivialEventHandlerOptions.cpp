#include "ombrix/exchange/TrivialEventHandlerOptions.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

namespace Ombrix
{

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const TrivialEventHandlerOptions&)
{
  out.beginSection("TrivialEventHandlerOptions");
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, TrivialEventHandlerOptions&)
{
  in.beginSection("TrivialEventHandlerOptions");
  in.endSection();
  return in;
}

} // namespace Ombrix
