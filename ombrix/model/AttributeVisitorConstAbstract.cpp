#include "ombrix/model/AttributeVisitorConstAbstract.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"

namespace Ombrix::Model
{
namespace
{

template <typename Sequence, typename Visitor>
void visitOwnedEntities(const Sequence& sequence, Visitor& visitor)
{
  if (!sequence.getOwnsEntities())
    return;
  for (const auto& entity : sequence)
  {
    if (entity)
      static_cast<const Entity&>(*entity).accept(visitor);
  }
}

} // namespace

void AttributeVisitorConstAbstract::visit(const Entity& entity)
{
  visitChildren(entity);
}

void AttributeVisitorConstAbstract::visit(const CompositeAttribute& composite)
{
  visitChildren(composite);
}

void AttributeVisitorConstAbstract::visit(const ArrayAttribute& array)
{
  visitChildren(array);
}

void AttributeVisitorConstAbstract::visit(const ListAttribute& list)
{
  visitChildren(list);
}

void AttributeVisitorConstAbstract::visit(const LinkAttribute& link)
{
  visitChildren(link);
}

void AttributeVisitorConstAbstract::visitChildren(const ArrayAttribute& array)
{
  visitOwnedEntities(array, *this);
}

void AttributeVisitorConstAbstract::visitChildren(const ListAttribute& list)
{
  visitOwnedEntities(list, *this);
}

void AttributeVisitorConstAbstract::visitChildren(const LinkAttribute& link)
{
  if (link.getNumberOfEntities(false) == 1 && link.getOwnsEntities())
  {
    if (const Entity* entity = link.getEntity(false))
      entity->accept(*this);
  }
}

void AttributeVisitorConstAbstract::visitChildren(const CompositeAttribute& composite)
{
  for (const auto& child : composite)
    static_cast<const Attribute&>(*child).accept(*this);
}

void AttributeVisitorConstAbstract::visitChildren(const Entity& entity)
{
  visitChildren(static_cast<const CompositeAttribute&>(entity));
}

} // namespace Ombrix::Model
