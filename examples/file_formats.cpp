// Prints the definition file and a data file that the library writes for a small model with every
// attribute kind; docs/file-formats.md shows this program's output.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/CSVParser.h"

#include <iostream>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

template <typename T>
T& add(CompositeAttribute& parent, AttributeType kind, const std::string& name, AccessType access)
{
  return static_cast<T&>(*parent.createAttribute(kind, name, access));
}

std::unique_ptr<Entity> entity(const std::string& type, const std::string& name, EntityID id)
{
  auto result = std::make_unique<Entity>(type, name, AccessType::ReadWrite, nullptr);
  result->setUniqueID(id);
  return result;
}

void build(EntityCollection& collection)
{
  auto control = entity("Solution Control", "Solution Control", EntityID(1, 1));
  auto& results =
      add<CompositeAttribute>(*control, AttributeType::Composite, "Results", AccessType::ReadOnly);
  add<IntAttribute>(results, AttributeType::Int, "Iteration", AccessType::ReadOnly)
      .set(12, Chronology::Initial);
  auto& time = add<DoubleAttribute>(results, AttributeType::Double, "Time", AccessType::ReadOnly);
  time.setUnit("s");
  time.set(0.5, Chronology::Initial);
  auto& transient =
      add<CompositeAttribute>(*control, AttributeType::Composite, "Transient", AccessType::ReadOnly);
  add<BoolAttribute>(transient, AttributeType::Bool, "Time Varying", AccessType::ReadOnly)
      .set(true, Chronology::Initial);
  collection.addRootEntity(std::move(control));

  auto pump = entity("Pump", "P1, main", EntityID(3, 17));
  auto& speed = add<DoubleAttribute>(*pump, AttributeType::Double, "Speed", AccessType::ReadWrite);
  speed.setUnit("rpm");
  speed.set(1450.0, Chronology::Initial);
  speed.set(1500.0, Chronology::Current);
  add<IntAttribute>(*pump, AttributeType::Int, "Stages", AccessType::WriteOnly).set(3, Chronology::Initial);
  add<BoolAttribute>(*pump, AttributeType::Bool, "On", AccessType::ReadWrite).set(true, Chronology::Initial);
  add<StringAttribute>(*pump, AttributeType::String, "Note", AccessType::ReadWrite)
      .set("says \"hi\",\nthen stops", Chronology::Initial);
  auto& ratio = add<FloatAttribute>(*pump, AttributeType::Float, "Ratio", AccessType::ReadOnly);
  ratio.set(0.25f, Chronology::Initial);
  auto& geometry =
      add<CompositeAttribute>(*pump, AttributeType::Composite, "Geometry", AccessType::ReadWrite);
  auto& diameter = add<DoubleAttribute>(geometry, AttributeType::Double, "Diameter", AccessType::ReadWrite);
  diameter.setUnit("m");
  diameter.set(0.3, Chronology::Initial);
  add<ShortcutAttribute>(*pump, AttributeType::Shortcut, "Size", AccessType::ReadWrite)
      .addShortcut(AttributePath("Geometry.Diameter"));
  auto& servers = add<ListAttribute>(*pump, AttributeType::List, "Servers", AccessType::ReadWrite);
  servers.setRelationShipType("R");
  servers.setOwnsEntities(true);
  auto server = entity("Server", "S1", EntityID(4, 17));
  add<DoubleAttribute>(*server, AttributeType::Double, "Load", AccessType::ReadWrite)
      .set(2.5, Chronology::Initial);
  servers.addEntity(std::move(server));
  auto& backup = add<LinkAttribute>(*pump, AttributeType::Link, "Backup", AccessType::ReadOnly);
  backup.setRelationShipType("Spare");
  backup.setOwnsEntities(true);
  auto spare = entity("Server", "B", EntityID(5, 17));
  add<DoubleAttribute>(*spare, AttributeType::Double, "Load", AccessType::ReadWrite)
      .set(0.0, Chronology::Initial);
  backup.addEntity(std::move(spare));
  auto& slots = add<ArrayAttribute>(*pump, AttributeType::Array, "Slots", AccessType::ReadWrite);
  slots.setRelationShipType("Slot");
  slots.setOwnsEntities(true);
  auto slot = entity("Slot", "A1", EntityID(6, 17));
  add<StringAttribute>(*slot, AttributeType::String, "Part", AccessType::ReadOnly)
      .set("X-2", Chronology::Initial);
  slots.addEntity(std::move(slot));
  collection.addRootEntity(std::move(pump));
}

void print(const Ombrix::CSVFileParserBase& parser)
{
  FileSystem::CSVParser csv(',', false, false, '\n', true);
  csv.rows() = parser.generateData();
  std::cout << csv.toText();
}

} // namespace

int main()
{
  EntityCollection collection;
  build(collection);

  Ombrix::CSVDefinitionFileParser definition(collection);
  definition.setChronologies({Chronology::Initial, Chronology::Current});
  std::cout << "def.csv (chronologies Initial and Current):\n";
  print(definition);

  Ombrix::CSVDataFileParser data(collection, {Chronology::Current});
  std::cout << "\nout.csv (chronology Current):\n";
  print(data);
  return 0;
}
