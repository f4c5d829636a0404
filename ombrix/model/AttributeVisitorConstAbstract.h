// Read-only walk over the attribute tree by double dispatch, descending like AttributeVisitorAbstract.
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

class OMBRIX_API AttributeVisitorConstAbstract
{
public:
  virtual void visit(const Entity& entity);
  virtual void visit(const CompositeAttribute& composite);
  virtual void visit(const ArrayAttribute& array);
  virtual void visit(const ListAttribute& list);
  virtual void visit(const LinkAttribute& link);
  virtual void visit(const ValueAttribute<int>&) {}
  virtual void visit(const ValueAttribute<float>&) {}
  virtual void visit(const ValueAttribute<double>&) {}
  virtual void visit(const ValueAttribute<std::string>&) {}
  virtual void visit(const ValueAttribute<bool>&) {}
  virtual void visit(const ShortcutAttribute&) {}

protected:
  AttributeVisitorConstAbstract() = default;
  virtual ~AttributeVisitorConstAbstract() = default;

  void visitChildren(const ArrayAttribute& array);
  void visitChildren(const LinkAttribute& link);
  void visitChildren(const ListAttribute& list);
  void visitChildren(const CompositeAttribute& composite);
  void visitChildren(const Entity& entity);
};

} // namespace Ombrix::Model
