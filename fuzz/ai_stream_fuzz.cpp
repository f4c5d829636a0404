// AI module definitions, their collection, module references and functors, read from a data stream.
#include "ombrix/ai/AIFunctor.h"
#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/ai/AIModuleDefinitionCollection.h"
#include "ombrix/ai/AIModuleReference.h"

#include "StreamRoundTrip.h"

#include <algorithm>

namespace
{

// The collection's own equality is identity; here two collections are the same when their entries are.
bool sameEntries(const Ombrix::AIModuleDefinitionCollection& a, const Ombrix::AIModuleDefinitionCollection& b)
{
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& x, const auto& y)
                    { return x == y || (x && y && *x == *y && x->getId() == y->getId()); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view input = OmbrixFuzz::asText(data, size);
  if (input.empty())
    return 0;
  FileSystem::DataStreamKind kind{};
  switch (OmbrixFuzz::splitSelector(input, kind, 4))
  {
  case 0:
    OmbrixFuzz::streamRoundTrip<Ombrix::AIModuleDefinitionCollection>(input, kind, sameEntries);
    break;
  case 1:
    OmbrixFuzz::streamRoundTrip<Ombrix::AIModuleDefinition>(input, kind);
    break;
  case 2:
    OmbrixFuzz::streamRoundTrip<Ombrix::AIFunctor>(input, kind);
    break;
  default:
    OmbrixFuzz::streamRoundTrip<Ombrix::AIModuleReference>(input, kind);
    break;
  }
  return 0;
}
