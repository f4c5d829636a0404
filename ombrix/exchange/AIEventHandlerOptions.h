// The settings of an exchange with AI models: the functors that bind modules to the model, kept by the
// host in its project data and streamed as the group "AIEventHandlerOptions". A plain value.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/ai/AIFunctor.h"

#include <vector>

namespace AISystem
{
class AIModuleCollection;
}

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix
{

struct OMBRIX_API AIEventHandlerOptions
{
  // The loaded modules the functors are initialised against in this process. A run-time binding set by
  // the host (not owned): it takes no part in equality and is never streamed.
  AISystem::AIModuleCollection* modules = nullptr;
  std::vector<AIFunctor> functors;
};

// Same number of functors, pairwise equal in order.
OMBRIX_API bool operator==(const AIEventHandlerOptions& a, const AIEventHandlerOptions& b);
OMBRIX_API bool operator!=(const AIEventHandlerOptions& a, const AIEventHandlerOptions& b);

// The group holds the number of functors (64-bit) followed by each functor's own stream form.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const AIEventHandlerOptions& options);
// Replaces the functors only when the whole group was read; a failed read leaves them unchanged.
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIEventHandlerOptions& options);

} // namespace Ombrix
