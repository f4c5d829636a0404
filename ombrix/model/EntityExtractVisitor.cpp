#include "ombrix/model/EntityExtractVisitor.h"

#include "ombrix/model/Entity.h"

namespace Ombrix::Model
{

std::vector<Entity*> EntityExtractVisitor::extract(Entity& root)
{
  std::vector<Entity*> out;
  extract(root, out);
  return out;
}

void EntityExtractVisitor::extract(Entity& root, std::vector<Entity*>& out)
{
  EntityExtractVisitor visitor(out);
  root.accept(visitor);
}

void EntityExtractVisitor::visit(Entity& entity)
{
  // An entity reachable twice is listed once, at its first position.
  if (m_seen.insert(&entity).second)
    m_out.push_back(&entity);
  visitChildren(entity);
}

} // namespace Ombrix::Model
