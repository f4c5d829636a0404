#include "ombrix/model/AttributeVisitorAbstract.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"

namespace Ombrix::Model
{
namespace
{

// Lists and arrays hand their owned entities to the walk, in order; entities they merely refer to
// are not part of this tree.
template <typename Sequence, typename Visitor> void visitOwnedEntities(Sequence& sequence, Visitor& visitor)
{
  if (!sequence.getOwnsEntities())
    return;
  for (auto& entity : sequence)
  {
    if (entity)
      entity->accept(visitor);
  }
}

} // namespace

void AttributeVisitorAbstract::visit(Entity& entity)
{
  visitChildren(entity);
}

void AttributeVisitorAbstract::visit(CompositeAttribute& composite)
{
  visitChildren(composite);
}

void AttributeVisitorAbstract::visit(ArrayAttribute& array)
{
  visitChildren(array);
}

void AttributeVisitorAbstract::visit(ListAttribute& list)
{
  visitChildren(list);
}

void AttributeVisitorAbstract::visit(LinkAttribute& link)
{
  visitChildren(link);
}

void AttributeVisitorAbstract::visitChildren(ArrayAttribute& array)
{
  visitOwnedEntities(array, *this);
}

void AttributeVisitorAbstract::visitChildren(ListAttribute& list)
{
  visitOwnedEntities(list, *this);
}

void AttributeVisitorAbstract::visitChildren(LinkAttribute& link)
{
  if (link.getOwnsEntities() && link.getNumberOfEntities(false) == 1)
  {
    if (Entity* entity = link.getEntity(false))
      entity->accept(*this);
  }
}

void AttributeVisitorAbstract::visitChildren(CompositeAttribute& composite)
{
  for (auto& child : composite)
    child->accept(*this);
}

void AttributeVisitorAbstract::visitChildren(Entity& entity)
{
  visitChildren(static_cast<CompositeAttribute&>(entity));
}

} // namespace Ombrix::Model
