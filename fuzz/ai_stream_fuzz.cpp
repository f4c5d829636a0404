// AI module definitions, their collection, module references and functors, read from a data stream.
#include "ombrix/ai/AIFunctor.h"
#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/ai/AIModuleDefinitionCollection.h"
#include "ombrix/ai/AIModuleReference.h"

#include "StreamRoundTrip.h"

#include <algorithm>

// The collection's own equality is identity; here two collections are the same when their entries are.
template <> struct OmbrixFuzz::Same<Ombrix::AIModuleDefinitionCollection>
{
  bool operator()(const Ombrix::AIModuleDefinitionCollection& a,
                  const Ombrix::AIModuleDefinitionCollection& b) const
  {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y)
                      { return x == y || (x && y && *x == *y && x->getId() == y->getId()); });
  }
};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  return OmbrixFuzz::streamTarget<Ombrix::AIModuleDefinitionCollection, Ombrix::AIModuleDefinition,
                                  Ombrix::AIFunctor, Ombrix::AIModuleReference>(data, size);
}
