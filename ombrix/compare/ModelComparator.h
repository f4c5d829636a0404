// Compares a model (an entity collection) with a reference model and collects every difference as a
// human-readable message, filed under the "ID:path" key of the attribute concerned. Differences are
// never thrown. One thread at a time; the two collections must not change during a comparison.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/AttributeVisitorConstAbstract.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Ombrix::Model
{

class Attribute;
class EntityCollection;
class EntityLinkAttributeBase;

class OMBRIX_API ModelComparator : public AttributeVisitorConstAbstract
{
public:
  using Messages = std::map<std::string, std::vector<std::string>>;

  ModelComparator();
  ~ModelComparator() override;

  // Relative tolerances of floating values (both 1e-05 at construction).
  double getDoubleTolerance() const { return m_doubleTolerance; }
  void setDoubleTolerance(double tolerance) { m_doubleTolerance = tolerance; }
  float getFloatTolerance() const { return m_floatTolerance; }
  void setFloatTolerance(float tolerance) { m_floatTolerance = tolerance; }

  // Pairs the entities of both collections by ID and compares each pair; an entity without counterpart
  // is reported under its own key ("Reference missing entity ..." for one only in `model`, "Missing
  // entity ..." for one only in `reference`). Starts from an empty message map.
  void compareCollection(const EntityCollection& model, const EntityCollection& reference);
  // The messages per attribute key, each list in the order reported.
  const Messages& getMessages() const { return m_messages; }

  // The floating rules: NaN equals only NaN, an infinity only itself, zero is within `tolerance` of
  // values strictly smaller in magnitude, other values agree when their ratio lies strictly within
  // 1 +- `tolerance` (so values of opposite sign always differ).
  static bool nearlyEqual(double a, double b, double tolerance);
  static bool nearlyEqual(float a, float b, float tolerance);

  void visit(const ValueAttribute<int>& attribute) override;
  void visit(const ValueAttribute<bool>& attribute) override;
  void visit(const ValueAttribute<std::string>& attribute) override;
  void visit(const ValueAttribute<float>& attribute) override;
  void visit(const ValueAttribute<double>& attribute) override;
  void visit(const ShortcutAttribute& attribute) override;
  void visit(const LinkAttribute& attribute) override;
  void visit(const ListAttribute& attribute) override;
  void visit(const ArrayAttribute& attribute) override;
  void visit(const CompositeAttribute& attribute) override;
  void visit(const Entity& attribute) override;

protected:
  void compare(const Entity& model, const Entity& reference);
  void compare(const CompositeAttribute& model, const CompositeAttribute& reference);
  void compare(const Attribute& model, const Attribute& reference);
  void compare(const EntityLinkAttributeBase& model, const EntityLinkAttributeBase& reference);
  void compare(const LinkAttribute& model, const LinkAttribute& reference);
  void compare(const ListAttribute& model, const ListAttribute& reference);
  void compare(const ArrayAttribute& model, const ArrayAttribute& reference);
  void compare(const ShortcutAttribute& model, const ShortcutAttribute& reference);

private:
  // The reference attribute at the same place (entity ID and path), or null.
  const Attribute* getReferenceAttribute(const Attribute& attribute) const;
  // Files `message` under the key of `attribute`, else of `reference`; nothing when both are null. A
  // message already filed under that key is not repeated.
  void reportDifference(const Attribute* attribute, const Attribute* reference, const std::string& message);
  void reportMissingReference(const Attribute& attribute);
  template <typename T> void compareValues(const ValueAttribute<T>& model);
  template <typename Sequence> void compareSequences(const Sequence& model, const Sequence& reference);
  void compareHeldEntities(const Entity* model, const Entity* reference);

  double m_doubleTolerance = 1e-05;
  float m_floatTolerance = 1e-05f;
  const EntityCollection* m_reference = nullptr;
  Messages m_messages;
  // Entities already compared, so that an entity held by a link is not compared twice (through its
  // link and through the collection's flat list).
  std::set<const Entity*> m_compared;
};

} // namespace Ombrix::Model
