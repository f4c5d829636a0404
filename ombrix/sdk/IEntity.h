// The host SDK's view of an entity: a composite attribute with a name and a unique ID. Results and
// failures as in IAttribute.
#pragma once

#include "ombrix/sdk/ICompositeAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IEntity : public ICompositeAttribute
{
public:
  // The own name, or with `full` the names of the entity and its entity ancestors joined by "->".
  ExceptionType getName(bool full, IString& name) { return do_getName(full, name); }
  ExceptionType getUniqueID(EntityID& id) { return do_getUniqueID(id); }

protected:
  virtual ExceptionType do_getName(bool full, IString& name) = 0;
  virtual ExceptionType do_getUniqueID(EntityID& id) = 0;
};

} // namespace KorvanSDK::Model
