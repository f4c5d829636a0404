// Builds a small model and prints it the way a host application sees it: only through the host
// interfaces (IEntityCollection, IEntity, IAttribute, ...), checking the code of every call.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/sdk/String.h"

#include <cstdio>
#include <memory>
#include <string>

using namespace KorvanSDK;
using namespace KorvanSDK::Model;

namespace
{

// The model a solver would build: a rack with results, a list of servers and a shortcut.
Ombrix::Model::EntityCollection buildModel()
{
  namespace M = Ombrix::Model;
  auto rack = std::make_unique<M::Entity>("Rack", "Rack 1");
  rack->setUniqueID(M::EntityID(1, 1));
  auto* results = static_cast<M::CompositeAttribute*>(
      rack->createAttribute(AttributeType::Composite, "Results", AccessType::ReadWrite));
  auto* time = results->createAttribute(AttributeType::Double, "Time", AccessType::ReadWrite);
  time->setUnit("s");
  time->setDoubleValue(0.25, Chronology::Current, false);
  auto* servers = static_cast<M::ListAttribute*>(
      rack->createAttribute(AttributeType::List, "Servers", AccessType::ReadWrite));
  servers->setOwnsEntities(true);
  for (int i = 1; i <= 2; ++i)
  {
    auto server = std::make_unique<M::Entity>("Server", "S" + std::to_string(i));
    server->setUniqueID(M::EntityID(2, i));
    server->createAttribute(AttributeType::Int, "Fans", AccessType::ReadOnly)
        ->setIntValue(4, Chronology::Current, false);
    servers->addEntity(std::move(server));
  }
  static_cast<M::ShortcutAttribute*>(
      rack->createAttribute(AttributeType::Shortcut, "AllFans", AccessType::ReadWrite))
      ->addShortcut({M::AttributePath("Servers.0.Fans"), M::AttributePath("Servers.1.Fans")});
  return M::EntityCollection(std::move(rack));
}

// Reports a failed call with the message the handle keeps, and tells whether it succeeded.
bool ok(ExceptionType code, const IHandle& handle)
{
  if (code != ExceptionType::Success)
    std::printf("  !! %s: %s\n", exceptionTypeToString(code).c_str(), handle.getLastErrorMessage());
  return code == ExceptionType::Success;
}

void printEntity(IEntity& entity, int depth);

void printAttribute(IAttribute& attribute, int depth)
{
  String name;
  AttributeType kind = AttributeType::Unknown;
  if (!ok(attribute.getType(name), attribute) || !ok(attribute.getAttributeType(true, kind), attribute))
    return;
  std::printf("%*s%s (%s)", depth * 2, "", name.c_str(), attributeTypeToString(kind).c_str());

  if (ICompositeAttribute* composite = attribute.asComposite())
  {
    std::printf("\n");
    std::uint64_t count = 0;
    if (!ok(composite->getNumberOfAttributes(false, count), *composite))
      return;
    for (std::uint64_t i = 0; i < count; ++i)
    {
      IAttribute* child = nullptr;
      if (ok(composite->getAttribute(i, false, child), *composite))
        printAttribute(*child, depth + 1);
    }
  }
  else if (IEntityLinkAttribute* link = attribute.asEntityLink())
  {
    std::printf("\n");
    std::uint64_t count = 0;
    if (!ok(link->getNumberOfEntities(count), *link))
      return;
    for (std::uint64_t i = 0; i < count; ++i)
    {
      IEntity* entity = nullptr;
      if (ok(link->getEntity(i, entity), *link))
        printEntity(*entity, depth + 1);
    }
  }
  else
  {
    // Values (and shortcuts, which read their targets' common value) print as text with their unit.
    String value;
    String unit;
    if (ok(attribute.getStringValue(Chronology::Current, value), attribute) &&
        ok(attribute.getUnit(unit), attribute))
      std::printf(" = %s%s%s", value.c_str(), unit.size() ? " " : "", unit.c_str());
    std::printf("\n");
  }
}

void printEntity(IEntity& entity, int depth)
{
  String name;
  EntityID id;
  if (!ok(entity.getName(true, name), entity) || !ok(entity.getUniqueID(id), entity))
    return;
  std::printf("%*sentity '%s' [%d-%d]\n", depth * 2, "", name.c_str(), id[0], id[1]);
  std::uint64_t count = 0;
  if (!ok(entity.getNumberOfAttributes(false, count), entity))
    return;
  for (std::uint64_t i = 0; i < count; ++i)
  {
    IAttribute* child = nullptr;
    if (ok(entity.getAttribute(i, false, child), entity))
      printAttribute(*child, depth + 1);
  }
}

} // namespace

int main()
{
  Ombrix::Model::EntityCollection model = buildModel();
  IEntityCollection& collection = *model.getSDKInterface();

  std::uint64_t roots = 0;
  if (!ok(collection.getNumberOfRootEntities(roots), collection))
    return 1;
  for (std::uint64_t i = 0; i < roots; ++i)
  {
    IEntity* root = nullptr;
    if (ok(collection.getRootEntity(i, root), collection))
      printEntity(*root, 0);
  }

  // A user write through the facade, and one the access type refuses: the code and the model's
  // message come back, nothing is thrown.
  IEntity* rack = nullptr;
  IAttribute* time = nullptr;
  IAttribute* fans = nullptr;
  if (!ok(collection.getEntityByName("Rack", "Rack 1", rack), collection) ||
      !ok(rack->getAttributeByPath("Results.Time", time), *rack) ||
      !ok(rack->getAttributeByPath("Servers.1.Fans", fans), *rack))
    return 1;
  ok(time->setDoubleValue(0.5, "s", Chronology::Current), *time);
  double now = 0;
  if (ok(time->getDoubleValue(Chronology::Current, now), *time))
    std::printf("Results.Time is now %g s\n", now);
  std::printf("writing Servers.1.Fans:\n");
  ok(fans->setIntValue(6, Chronology::Current), *fans);
  return 0;
}
