// Compares a model with a reference model and prints every difference per attribute.
// Run without arguments; the two small models are built in memory.
#include "ombrix/compare/ModelComparator.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include <iostream>
#include <memory>

using namespace Ombrix::Model;

// One pump 1-1 with a pressure in Pa and a speed.
static EntityCollection makePump(double pressure, const char* unit, int speed)
{
  auto pump = std::make_unique<Entity>("Pump", "P1");
  pump->setUniqueID(EntityID(1, 1));
  auto* p = static_cast<DoubleAttribute*>(
      pump->createAttribute(KorvanSDK::AttributeType::Double, "Pressure", KorvanSDK::AccessType::ReadWrite));
  p->setUnit(unit);
  p->set(pressure);
  static_cast<IntAttribute*>(
      pump->createAttribute(KorvanSDK::AttributeType::Int, "Speed", KorvanSDK::AccessType::ReadWrite))
      ->set(speed);
  return EntityCollection(std::move(pump));
}

int main()
{
  const EntityCollection reference = makePump(101325.0, "Pa", 1450);
  const EntityCollection model = makePump(101325.5, "bar", 1500); // pressure within tolerance

  ModelComparator comparator;
  comparator.compareCollection(model, reference);
  for (const auto& [key, messages] : comparator.getMessages())
  {
    for (const auto& message : messages)
      std::cout << key << "\t" << message << "\n";
  }
  return comparator.getMessages().empty() ? 0 : 1;
}
