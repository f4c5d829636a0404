// The host's view of one loaded AI module, implemented by the host's AI runtime; this library only
// calls it (through Ombrix::AIFunctor). Calls come from one thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>
#include <vector>

// The model types of the call signatures; the AI runtime sees them only through these declarations.
namespace Ombrix::Model
{
class Entity;
class Attribute;
template <class T> class AttributeReference;
class EntityError;
} // namespace Ombrix::Model

namespace AISystem
{

class OMBRIX_API AIModule
{
public:
  using References = std::vector<Ombrix::Model::AttributeReference<Ombrix::Model::Attribute>>;

  virtual ~AIModule() = default;

  // Prepares the module for execution; what `flag` means is the runtime's business.
  virtual void initialise(bool flag) = 0;
  // Runs the module for the functor `name` on behalf of `owner` (may be null): reads `inputs`, writes
  // `outputs`, in the order the module expects them. Problems found per entity are returned; a failure
  // of the module itself is thrown.
  virtual std::vector<Ombrix::Model::EntityError> execute(const std::string& name,
                                                          Ombrix::Model::Entity* owner,
                                                          const References& inputs, References& outputs) = 0;
  // Releases what initialise prepared; the module may be initialised again afterwards.
  virtual void terminate() = 0;
  // Called by Ombrix::AIFunctor::initialize after initialise, once the functor's references are
  // re-attached, so that a module can refuse references that do not fit it before the first execute
  // rather than at it. Throws to refuse; the default accepts anything.
  virtual void checkReferences(const std::string& /*name*/, Ombrix::Model::Entity* /*owner*/,
                               const References& /*inputs*/, const References& /*outputs*/)
  {
  }
};

} // namespace AISystem
