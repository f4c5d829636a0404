#include "ombrix/model/EntityLink.h"

#include "ombrix/model/Entity.h"

namespace Ombrix::Model
{

void EntityLink::attachToEntity(Entity& entity)
{
  entity.setParentLink(this);
}

void EntityLink::attachToEntity(Attribute& attribute)
{
  if (attribute.isEntity())
    static_cast<Entity&>(attribute).setParentLink(this);
}

} // namespace Ombrix::Model
