#include "ombrix/model/ModelBuilding.h"

#include "ombrix/model/ValueAttribute.h"

#include <stdexcept>

namespace Ombrix::Model
{

using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

Attribute& addAttributeAt(CompositeAttribute& parent, const AttributePath& path, AttributeType kind,
                          AccessType access, const std::string& unit)
{
  if (path.empty())
    throw std::invalid_argument("Cannot add an attribute at an empty path");
  CompositeAttribute* composite = &parent;
  for (std::size_t i = 0; i + 1 < path.size(); ++i)
  {
    Attribute* next = composite->findChild(path[i]);
    if (!next)
      next = composite->createAttribute(AttributeType::Composite, path[i], AccessType::ReadOnly);
    else if (!next->isComposite())
      throw std::invalid_argument("Cannot add the attribute " + path.toString() + ": '" + path[i] +
                                  "' is not a composite");
    composite = static_cast<CompositeAttribute*>(next);
  }
  Attribute* created = composite->createAttribute(kind, path.back(), access);
  if (!created)
    throw std::invalid_argument("Cannot add the attribute " + path.toString() + ": it exists already");
  if (!unit.empty())
    created->setUnit(unit);
  return *created;
}

namespace
{

template <typename T>
void addValue(Entity& entity, const AttributePath& path, AttributeType kind, AccessType access, T value,
              const std::string& unit = "")
{
  static_cast<ValueAttribute<T>&>(addAttributeAt(entity, path, kind, access, unit))
      .set(value, Chronology::Initial);
}

} // namespace

std::unique_ptr<Entity> makeSolutionControlEntity(const SolutionControlDefinition& d, const EntityID& id)
{
  auto entity = std::make_unique<Entity>(d.getSolutionControlType(), d.getSolutionControlName(), id,
                                         AccessType::ReadWrite);
  const AccessType solver = AccessType::ReadOnly;
  addValue(*entity, d.getIterationPath(), AttributeType::Int, solver, 0);
  addValue(*entity, d.getNumberOfIterationsPath(), AttributeType::Int, solver, 0);
  addValue(*entity, d.getIsFirstIterationPath(), AttributeType::Bool, solver, true);
  addValue(*entity, d.getIsLastIterationPath(), AttributeType::Bool, solver, false);
  addValue(*entity, d.getIsTransientPath(), AttributeType::Bool, solver, false);
  addValue(*entity, d.getTimePath(), AttributeType::Double, solver, 0.0, "s");
  addValue(*entity, d.getTimeStepPath(), AttributeType::Double, solver, 0.0, "s");
  addValue(*entity, d.getTimeStepNumberOfIterationsPath(), AttributeType::Int, solver, 0);
  addValue(*entity, d.getTotalSimulationTimePath(), AttributeType::Double, solver, 0.0, "s");
  addValue(*entity, d.getIsFirstTimeStepPath(), AttributeType::Bool, solver, true);
  addValue(*entity, d.getIsLastTimeStepPath(), AttributeType::Bool, solver, false);
  addValue(*entity, d.getIsConvergedPath(), AttributeType::Bool, solver, false);
  addValue(*entity, d.getStopOnConvergence(), AttributeType::Bool, AccessType::ReadWrite, false);
  return entity;
}

} // namespace Ombrix::Model
