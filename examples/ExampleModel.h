// Model-building shorthand shared by the example programs. Header-only.
#pragma once

#include "ombrix/model/CompositeAttribute.h"

#include <string>

namespace ExampleModel
{

// Creates (or finds) the composite chain of `path` below `entity` and a value attribute at its end.
inline Ombrix::Model::Attribute& addValue(Ombrix::Model::CompositeAttribute& entity,
                                          const Ombrix::Model::AttributePath& path,
                                          KorvanSDK::AttributeType kind, KorvanSDK::AccessType access,
                                          const std::string& unit = "")
{
  using KorvanSDK::AccessType;
  using KorvanSDK::AttributeType;
  Ombrix::Model::CompositeAttribute* parent = &entity;
  for (std::size_t i = 0; i + 1 < path.size(); ++i)
  {
    Ombrix::Model::Attribute* next = parent->findChild(path[i]);
    if (!next)
      next = parent->createAttribute(AttributeType::Composite, path[i], AccessType::ReadOnly);
    parent = static_cast<Ombrix::Model::CompositeAttribute*>(next);
  }
  Ombrix::Model::Attribute* value = parent->createAttribute(kind, path.back(), access);
  if (!unit.empty())
    value->setUnit(unit);
  return *value;
}

} // namespace ExampleModel
