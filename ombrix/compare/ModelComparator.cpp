#include "ombrix/compare/ModelComparator.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace Ombrix::Model
{
namespace
{

enum class FloatingVerdict
{
  Equal,
  DiffersNonFinite, // NaN or infinity involved: "Value differs " form
  DiffersFinite,    // "Value differs" form, without the blank
};

template <typename T> constexpr T mantissaScale()
{
  return static_cast<T>(std::numeric_limits<T>::digits == 53 ? 4503599627370496.0 : 8388608.0);
}

template <typename T> FloatingVerdict compareFloating(T a, T b, T t)
{
  if (std::isnan(a) || std::isnan(b))
    return std::isnan(a) && std::isnan(b) ? FloatingVerdict::Equal : FloatingVerdict::DiffersNonFinite;
  if (std::isinf(a) || std::isinf(b))
    return a == b ? FloatingVerdict::Equal : FloatingVerdict::DiffersNonFinite;
  if (a == b)
    return FloatingVerdict::Equal;
  const auto verdict = [](bool equal)
  { return equal ? FloatingVerdict::Equal : FloatingVerdict::DiffersFinite; };
  const T smallest = std::numeric_limits<T>::min();
  const T tiny = (t > std::numeric_limits<T>::epsilon() ? t * mantissaScale<T>() : T(1)) * smallest;
  if (a == 0)
    return verdict(std::fabs(b) < t);
  if (b == 0)
    return verdict(std::fabs(a) < t);
  const T A = std::fabs(a);
  const T B = std::fabs(b);
  if (B < tiny)
    return verdict(A < tiny);
  if (A <= tiny)
    return FloatingVerdict::DiffersFinite;
  // Guard the ratio against overflow and underflow before dividing.
  if (B < 1 && A > B * std::numeric_limits<T>::max())
    return FloatingVerdict::DiffersFinite;
  if (B > 1 && B * smallest > A)
    return FloatingVerdict::DiffersFinite;
  const T r = a / b;
  return verdict(1 - t < r && r < 1 + t);
}

template <typename T> std::string numberText(T value)
{
  if (std::isnan(value))
    return "NaN";
  // A host's global locale would group digits and change the decimal point of the report.
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << value;
  return text.str();
}

std::string boolText(bool value)
{
  return value ? "True" : "False";
}

std::string quotedDifference(const std::string& model, const std::string& reference)
{
  return "Value differs\n\t'" + model + "'\nexpected\n\t'" + reference + "'";
}

std::string valueDifference(int model, int reference)
{
  return "Value differs " + std::to_string(model) + " expected " + std::to_string(reference);
}

std::string valueDifference(bool model, bool reference)
{
  return quotedDifference(boolText(model), boolText(reference));
}

std::string valueDifference(const std::string& model, const std::string& reference)
{
  return quotedDifference(model, reference);
}

template <typename T> std::string floatingDifference(FloatingVerdict verdict, T model, T reference)
{
  const char* lead = verdict == FloatingVerdict::DiffersNonFinite ? "Value differs " : "Value differs";
  return lead + numberText(model) + " expected " + numberText(reference);
}

std::string entityText(const Entity& entity)
{
  return toString(entity.getUniqueID()) + " '" + entity.getName() + "'";
}

// "name:Type" per child, in order, joined by ", ".
std::string childListing(const CompositeAttribute& composite)
{
  std::string listing;
  for (const auto& child : composite)
  {
    if (!child)
      continue;
    if (!listing.empty())
      listing += ", ";
    listing += child->getType() + ":" + KorvanSDK::attributeTypeToString(child->getAttributeType(false));
  }
  return listing;
}

bool sameChildren(const CompositeAttribute& model, const CompositeAttribute& reference)
{
  if (model.size() != reference.size())
    return false;
  return std::equal(model.begin(), model.end(), reference.begin(),
                    [](const auto& a, const auto& b)
                    {
                      if (!a || !b)
                        return !a && !b;
                      return a->getType() == b->getType() &&
                             a->getAttributeType(false) == b->getAttributeType(false);
                    });
}

} // namespace

ModelComparator::ModelComparator() = default;

ModelComparator::~ModelComparator() = default;

bool ModelComparator::nearlyEqual(double a, double b, double tolerance)
{
  return compareFloating(a, b, tolerance) == FloatingVerdict::Equal;
}

bool ModelComparator::nearlyEqual(float a, float b, float tolerance)
{
  return compareFloating(a, b, tolerance) == FloatingVerdict::Equal;
}

void ModelComparator::compareCollection(const EntityCollection& model, const EntityCollection& reference)
{
  m_messages.clear();
  m_compared.clear();
  m_reference = &reference;
  for (const Entity* entity : model)
  {
    if (!entity)
      continue;
    if (const Entity* counterpart = reference.findEntity(entity->getUniqueID()))
      compare(*entity, *counterpart);
    else
      reportDifference(entity, nullptr, "Reference missing entity " + entityText(*entity));
  }
  for (const Entity* entity : reference)
  {
    if (entity && !model.findEntity(entity->getUniqueID()))
      reportDifference(nullptr, entity, "Missing entity " + entityText(*entity));
  }
  m_compared.clear();
  m_reference = nullptr;
}

const Attribute* ModelComparator::getReferenceAttribute(const Attribute& attribute) const
{
  if (!m_reference)
    return nullptr;
  const auto [id, path] = attribute.getEntityIDAndAttributePath();
  const Entity* entity = m_reference->findEntity(id);
  if (!entity || !entity->hasAttribute(path))
    return nullptr;
  return &entity->getAttribute(path);
}

void ModelComparator::reportDifference(const Attribute* attribute, const Attribute* reference,
                                       const std::string& message)
{
  const Attribute* subject = attribute ? attribute : reference;
  if (!subject)
    return;
  auto& messages = m_messages[toString(subject->getEntityIDAndAttributePath())];
  if (std::find(messages.begin(), messages.end(), message) == messages.end())
    messages.push_back(message);
}

void ModelComparator::reportMissingReference(const Attribute& attribute)
{
  reportDifference(&attribute, nullptr,
                   "No child attribute with type " +
                       KorvanSDK::attributeTypeToString(attribute.getAttributeType(false)) + " '" +
                       attribute.getType() + "'");
}

void ModelComparator::compare(const Attribute& model, const Attribute& reference)
{
  const auto modelKind = model.getAttributeType(false);
  const auto referenceKind = reference.getAttributeType(false);
  if (modelKind != referenceKind)
    reportDifference(&model, &reference,
                     "Difference in AttributeType " + KorvanSDK::attributeTypeToString(modelKind) +
                         " expected " + KorvanSDK::attributeTypeToString(referenceKind));
  if (model.type() != reference.type())
    reportDifference(&model, &reference,
                     "Difference in Type " + model.type() + " expected " + reference.type());
  if (model.getAccessType() != reference.getAccessType())
    reportDifference(&model, &reference,
                     "Difference in AccessType " + KorvanSDK::accessTypeToString(model.getAccessType()) +
                         " expected " + KorvanSDK::accessTypeToString(reference.getAccessType()));
}

void ModelComparator::compare(const Entity& model, const Entity& reference)
{
  if (!m_compared.insert(&model).second)
    return;
  if (!(model.getUniqueID() == reference.getUniqueID()))
    reportDifference(&model, &reference,
                     "Difference in Unique ID " + toString(model.getUniqueID()) + " expected " +
                         toString(reference.getUniqueID()));
  if (model.name() != reference.name())
    reportDifference(&model, &reference,
                     "Difference in Name " + model.name() + " expected " + reference.name());
  compare(static_cast<const CompositeAttribute&>(model), static_cast<const CompositeAttribute&>(reference));
}

void ModelComparator::compare(const CompositeAttribute& model, const CompositeAttribute& reference)
{
  compare(static_cast<const Attribute&>(model), static_cast<const Attribute&>(reference));
  if (!sameChildren(model, reference))
    reportDifference(&model, &reference,
                     "Difference in child attributes\n\t'" + childListing(model) + "'\nexpected\n\t'" +
                         childListing(reference) + "'");
  for (const auto& child : model)
  {
    if (child)
      child->accept(*this);
  }
}

void ModelComparator::compare(const EntityLinkAttributeBase& model, const EntityLinkAttributeBase& reference)
{
  compare(static_cast<const Attribute&>(model), static_cast<const Attribute&>(reference));
  if (model.getRelationshipType() != reference.getRelationshipType())
    reportDifference(&model, &reference,
                     "Difference in RelationshipType " + model.getRelationshipType() + " expected " +
                         reference.getRelationshipType());
  if (model.getOwnsEntities() != reference.getOwnsEntities())
    reportDifference(&model, &reference,
                     "Difference in OwnsEntities " + boolText(model.getOwnsEntities()) + " expected " +
                         boolText(reference.getOwnsEntities()));
}

void ModelComparator::compareHeldEntities(const Entity* model, const Entity* reference)
{
  if (model && reference)
    compare(*model, *reference);
  else if (model)
    reportDifference(model, nullptr, "Reference missing entity " + entityText(*model));
  else if (reference)
    reportDifference(nullptr, reference, "Missing entity " + entityText(*reference));
}

void ModelComparator::compare(const LinkAttribute& model, const LinkAttribute& reference)
{
  compare(static_cast<const EntityLinkAttributeBase&>(model),
          static_cast<const EntityLinkAttributeBase&>(reference));
  compareHeldEntities(model.getEntity(false), reference.getEntity(false));
}

template <typename Sequence>
void ModelComparator::compareSequences(const Sequence& model, const Sequence& reference)
{
  compare(static_cast<const EntityLinkAttributeBase&>(model),
          static_cast<const EntityLinkAttributeBase&>(reference));
  const auto modelEntities = model.getEntities(false);
  const auto referenceEntities = reference.getEntities(false);
  const std::size_t count = std::max(modelEntities.size(), referenceEntities.size());
  for (std::size_t i = 0; i < count; ++i)
    compareHeldEntities(i < modelEntities.size() ? modelEntities[i] : nullptr,
                        i < referenceEntities.size() ? referenceEntities[i] : nullptr);
}

void ModelComparator::compare(const ListAttribute& model, const ListAttribute& reference)
{
  compareSequences(model, reference);
}

void ModelComparator::compare(const ArrayAttribute& model, const ArrayAttribute& reference)
{
  compareSequences(model, reference);
}

void ModelComparator::compare(const ShortcutAttribute& model, const ShortcutAttribute& reference)
{
  compare(static_cast<const Attribute&>(model), static_cast<const Attribute&>(reference));
  if (model.shortcuts() != reference.shortcuts())
    reportDifference(&model, &reference, "Difference in shortcuts");
}

template <typename T> void ModelComparator::compareValues(const ValueAttribute<T>& model)
{
  const Attribute* found = getReferenceAttribute(model);
  if (!found)
  {
    reportMissingReference(model);
    return;
  }
  compare(static_cast<const Attribute&>(model), *found);
  if (model.getUnit() != found->getUnit())
    reportDifference(&model, found,
                     "Difference in Unit " + model.getUnit() + " expected " + found->getUnit());
  // Values are compared only between attributes of the same kind (a kind difference is reported above),
  // at the Current chronology, when both hold one.
  const auto* reference = dynamic_cast<const ValueAttribute<T>*>(found);
  if (!reference || !model.container().has(KorvanSDK::Chronology::Current) ||
      !reference->container().has(KorvanSDK::Chronology::Current))
    return;
  const T& a = model.get(KorvanSDK::Chronology::Current);
  const T& b = reference->get(KorvanSDK::Chronology::Current);
  if constexpr (std::is_floating_point_v<T>)
  {
    const T tolerance =
        std::is_same_v<T, float> ? static_cast<T>(m_floatTolerance) : static_cast<T>(m_doubleTolerance);
    const auto verdict = compareFloating(a, b, tolerance);
    if (verdict != FloatingVerdict::Equal)
      reportDifference(&model, reference, floatingDifference(verdict, a, b));
  }
  else if (a != b)
  {
    reportDifference(&model, reference, valueDifference(a, b));
  }
}

void ModelComparator::visit(const ValueAttribute<int>& attribute)
{
  compareValues(attribute);
}

void ModelComparator::visit(const ValueAttribute<bool>& attribute)
{
  compareValues(attribute);
}

void ModelComparator::visit(const ValueAttribute<std::string>& attribute)
{
  compareValues(attribute);
}

void ModelComparator::visit(const ValueAttribute<float>& attribute)
{
  compareValues(attribute);
}

void ModelComparator::visit(const ValueAttribute<double>& attribute)
{
  compareValues(attribute);
}

void ModelComparator::visit(const ShortcutAttribute& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const ShortcutAttribute*>(found))
    compare(attribute, *reference);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

void ModelComparator::visit(const LinkAttribute& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const LinkAttribute*>(found))
    compare(attribute, *reference);
  else if (const auto* other = dynamic_cast<const EntityLinkAttributeBase*>(found))
    compare(static_cast<const EntityLinkAttributeBase&>(attribute), *other);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

void ModelComparator::visit(const ListAttribute& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const ListAttribute*>(found))
    compare(attribute, *reference);
  else if (const auto* other = dynamic_cast<const EntityLinkAttributeBase*>(found))
    compare(static_cast<const EntityLinkAttributeBase&>(attribute), *other);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

void ModelComparator::visit(const ArrayAttribute& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const ArrayAttribute*>(found))
    compare(attribute, *reference);
  else if (const auto* other = dynamic_cast<const EntityLinkAttributeBase*>(found))
    compare(static_cast<const EntityLinkAttributeBase&>(attribute), *other);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

void ModelComparator::visit(const CompositeAttribute& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const CompositeAttribute*>(found))
    compare(attribute, *reference);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

void ModelComparator::visit(const Entity& attribute)
{
  const Attribute* found = getReferenceAttribute(attribute);
  if (!found)
    return reportMissingReference(attribute);
  if (const auto* reference = dynamic_cast<const Entity*>(found))
    compare(attribute, *reference);
  else if (const auto* composite = dynamic_cast<const CompositeAttribute*>(found))
    compare(static_cast<const CompositeAttribute&>(attribute), *composite);
  else
    compare(static_cast<const Attribute&>(attribute), *found);
}

} // namespace Ombrix::Model
