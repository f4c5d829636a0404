// The host's collection of loaded AI modules, implemented by the host's AI runtime. It owns the modules
// and must outlive every functor initialised against it. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/AIModule.h"

#include <cstddef>

namespace AISystem
{

class OMBRIX_API AIModuleCollection
{
public:
  virtual ~AIModuleCollection() = default;

  // The module built from the definition with identifier `definitionId`, or null when there is none.
  virtual AIModule* findModule(std::size_t definitionId) = 0;
};

} // namespace AISystem
