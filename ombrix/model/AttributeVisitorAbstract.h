// Mutable walk over the attribute tree by double dispatch. The defaults descend into composites,
// entities and the entities owned by links, lists and arrays; leaves do nothing. Override what you
// look at.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>

namespace Ombrix::Model
{

class Entity;
class CompositeAttribute;
class ArrayAttribute;
class ListAttribute;
class LinkAttribute;
class ShortcutAttribute;
template <typename T> class ValueAttribute;

class OMBRIX_API AttributeVisitorAbstract
{
public:
  virtual void visit(Entity& entity);
  virtual void visit(CompositeAttribute& composite);
  virtual void visit(ArrayAttribute& array);
  virtual void visit(ListAttribute& list);
  virtual void visit(LinkAttribute& link);
  virtual void visit(ValueAttribute<int>&) {}
  virtual void visit(ValueAttribute<float>&) {}
  virtual void visit(ValueAttribute<double>&) {}
  virtual void visit(ValueAttribute<std::string>&) {}
  virtual void visit(ValueAttribute<bool>&) {}
  virtual void visit(ShortcutAttribute&) {}

protected:
  AttributeVisitorAbstract() = default;
  virtual ~AttributeVisitorAbstract() = default;

  virtual void visitChildren(ArrayAttribute& array);
  virtual void visitChildren(LinkAttribute& link);
  virtual void visitChildren(ListAttribute& list);
  virtual void visitChildren(CompositeAttribute& composite);
  virtual void visitChildren(Entity& entity);
};

} // namespace Ombrix::Model
