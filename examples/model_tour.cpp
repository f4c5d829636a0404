// A tour of the data model: builds a small collection, sets values as a user with the log on, and
// prints the tree (kinds, units, access, values per chronology) followed by the log's lines.
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/SolutionControl.h"
#include "ombrix/model/ValueAttribute.h"

#include "ExampleModel.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

namespace
{

using ExampleModel::addValue;

std::unique_ptr<Entity> makeSolutionControl(const SolutionControlDefinition& d)
{
  auto control = std::make_unique<Entity>(d.getSolutionControlType(), d.getSolutionControlName());
  control->setUniqueID(EntityID(1, 1));
  addValue(*control, d.getIterationPath(), AttributeType::Int, AccessType::ReadOnly);
  addValue(*control, d.getNumberOfIterationsPath(), AttributeType::Int, AccessType::ReadWrite);
  addValue(*control, d.getIsFirstIterationPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsLastIterationPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsTransientPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getTimePath(), AttributeType::Double, AccessType::ReadOnly, "s");
  addValue(*control, d.getTimeStepPath(), AttributeType::Double, AccessType::ReadWrite, "s");
  addValue(*control, d.getTimeStepNumberOfIterationsPath(), AttributeType::Int, AccessType::ReadWrite);
  addValue(*control, d.getTotalSimulationTimePath(), AttributeType::Double, AccessType::ReadWrite, "s");
  addValue(*control, d.getIsFirstTimeStepPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsLastTimeStepPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsConvergedPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getStopOnConvergence(), AttributeType::Bool, AccessType::ReadWrite);
  return control;
}

std::unique_ptr<Entity> makeRack()
{
  auto rack = std::make_unique<Entity>("Rack", "Rack 1");
  rack->setUniqueID(EntityID(2, 1));
  addValue(*rack, "Inlet.Temperature", AttributeType::Double, AccessType::ReadOnly, "K");
  auto* servers = static_cast<ListAttribute*>(
      rack->createAttribute(AttributeType::List, "Servers", AccessType::ReadOnly));
  servers->setOwnsEntities(true);
  servers->setRelationShipType("Contains");
  for (int i = 1; i <= 2; ++i)
  {
    auto server = std::make_unique<Entity>("Server", "Server " + std::to_string(i));
    server->setUniqueID(EntityID(3, i));
    addValue(*server, "Fan Speed", AttributeType::Double, AccessType::ReadWrite, "rpm");
    addValue(*server, "Power", AttributeType::Double, AccessType::ReadOnly, "W");
    servers->addEntity(std::move(server));
  }
  // One value that stands for both servers' fan speeds.
  auto* fans = static_cast<ShortcutAttribute*>(
      rack->createAttribute(AttributeType::Shortcut, "All Fans", AccessType::ReadWrite));
  fans->addShortcut(AttributePath("Servers.0.Fan Speed"));
  fans->addShortcut(AttributePath("Servers.1.Fan Speed"));
  return rack;
}

std::string valuesText(const Attribute& attribute)
{
  std::string text;
  for (int c = 0; c <= 4; ++c)
  {
    const auto chronology = static_cast<Chronology>(c);
    if (!attribute.hasValue(chronology, false))
      continue;
    text +=
        " " + KorvanSDK::chronologyToString(chronology) + "=" + attribute.getStringValue(chronology, false);
  }
  return text;
}

void print(const Attribute& attribute, int depth)
{
  const std::string indent(static_cast<std::size_t>(depth) * 2, ' ');
  std::cout << indent << attribute.type() << " <"
            << KorvanSDK::attributeTypeToString(attribute.getAttributeType()) << ", "
            << KorvanSDK::accessTypeToString(attribute.getAccessType());
  if (attribute.hasUnits())
    std::cout << ", " << attribute.getUnit();
  std::cout << ">";
  if (attribute.isEntity())
  {
    const auto& entity = static_cast<const Entity&>(attribute);
    std::cout << " '" << entity.getName(true) << "' [" << toString(entity.getUniqueID()) << "]";
  }
  if (attribute.isShortcut())
  {
    const auto& shortcut = static_cast<const ShortcutAttribute&>(attribute);
    std::cout << " ->";
    for (const auto& path : shortcut.shortcuts())
      std::cout << " " << path.toString();
    std::cout << " :" << valuesText(attribute);
  }
  else if (attribute.hasValue(Chronology::Initial, false) || attribute.hasValue(Chronology::Current, false))
  {
    std::cout << " :" << valuesText(attribute);
  }
  std::cout << '\n';
  if (attribute.isComposite())
  {
    for (const auto& child : static_cast<const CompositeAttribute&>(attribute))
      print(*child, depth + 1);
  }
  if (attribute.isList())
  {
    for (const auto& entity : static_cast<const ListAttribute&>(attribute))
      print(*entity, depth + 1);
  }
}

} // namespace

int main()
{
  const auto logPath = (std::filesystem::temp_directory_path() / "ombrix-model-tour.log").string();
  Ombrix::LogManager::instance().initialize(logPath, Ombrix::LogLevel::Informational);

  EntityCollection collection;
  collection.addRootEntity(makeSolutionControl(collection.getSolutionControlDefinition()));
  collection.addRootEntity(makeRack());

  // The solver's own (internal) writes: not access-checked, not logged.
  SolutionControl control(collection);
  Entity& controlEntity = *control.get();
  controlEntity.getAttribute("Results.Iteration").setIntValue(0, Chronology::Initial, false);
  controlEntity.getAttribute("Results.Iteration").setIntValue(12, Chronology::Current, false);
  controlEntity.getAttribute("Transient.Time Varying").setBoolValue(true, Chronology::Initial, false);
  controlEntity.getAttribute("Results.Time").setDoubleValue(0.25, Chronology::Current, false);
  control.setTimeStep(0.05f, Chronology::Initial, false);

  // A user's writes: checked against access and unit, and recorded in the log.
  Entity& rack = *collection.getEntity("Rack", "Rack 1");
  rack.getAttribute("All Fans").setDoubleValue(1200.0, Chronology::Current, true);
  collection.getEntity("Server", "Rack 1->Server 2")
      ->getAttribute("Fan Speed")
      .setDoubleValue(1500.0, "rpm", Chronology::Next, true);
  try
  {
    rack.getAttribute("Inlet.Temperature").setDoubleValue(300.0, Chronology::Current, true);
  }
  catch (const std::exception& error)
  {
    std::cout << "Refused write to Inlet.Temperature: " << error.what() << "\n";
  }
  try
  {
    rack.getAttribute("Servers.0.Fan Speed").setDoubleValue(900.0, "rad/s", Chronology::Current, true);
  }
  catch (const std::exception& error)
  {
    std::cout << "Refused write to Servers.0.Fan Speed: " << error.what() << "\n";
  }

  std::cout << "\nCollection: " << collection.size() << " entities, " << collection.getNumberOfRootEntities()
            << " roots; iteration " << control.getIteration() << ", time " << control.getTime()
            << " s, time step " << control.getTimeStep(Chronology::Current) << " s\n\n";
  for (const auto& root : collection.getRootEntitites())
    print(*root, 0);

  Ombrix::LogManager::instance().terminate();
  std::cout << "\nLog (" << logPath << "):\n";
  std::ifstream log(logPath);
  for (std::string line; std::getline(log, line);)
    std::cout << "  " << line << '\n';
  std::filesystem::remove(logPath);
  return 0;
}
