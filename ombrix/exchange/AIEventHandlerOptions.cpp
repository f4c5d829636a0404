#include "ombrix/exchange/AIEventHandlerOptions.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <cstdint>

namespace Ombrix
{

bool operator==(const AIEventHandlerOptions& a, const AIEventHandlerOptions& b)
{
  return a.functors == b.functors;
}

bool operator!=(const AIEventHandlerOptions& a, const AIEventHandlerOptions& b)
{
  return !(a == b);
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AIEventHandlerOptions& options)
{
  out.beginSection("AIEventHandlerOptions");
  out << static_cast<std::uint64_t>(options.functors.size());
  for (const auto& functor : options.functors)
    out << functor;
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIEventHandlerOptions& options)
{
  in.beginSection("AIEventHandlerOptions");
  std::uint64_t count = 0;
  in >> count;
  // Every functor takes more than one byte of the stream, so a larger count can only be corrupt.
  if (in && count > in.remaining())
    in.setFailed();
  std::vector<AIFunctor> functors;
  for (std::uint64_t i = 0; i < count && in; ++i)
  {
    AIFunctor functor;
    in >> functor;
    functors.push_back(std::move(functor));
  }
  in.endSection();
  if (in)
    options.functors = std::move(functors);
  return in;
}

} // namespace Ombrix
