// Collects an entity and every entity below it (through owned links, lists and arrays) in depth-first
// pre-order, each once: the entity collection's flat list is built from it.
#pragma once

#include "ombrix/model/AttributeVisitorAbstract.h"

#include <unordered_set>
#include <vector>

namespace Ombrix::Model
{

class OMBRIX_API EntityExtractVisitor : public AttributeVisitorAbstract
{
public:
  static std::vector<Entity*> extract(Entity& root);
  // Appends to `out` instead of returning a new vector (the collection's bulk path).
  static void extract(Entity& root, std::vector<Entity*>& out);

  using AttributeVisitorAbstract::visit;
  void visit(Entity& entity) override;

private:
  explicit EntityExtractVisitor(std::vector<Entity*>& out) : m_out(out) {}

  std::vector<Entity*>& m_out;
  std::unordered_set<const Entity*> m_seen; // answers "already listed?" without scanning the output
};

} // namespace Ombrix::Model
