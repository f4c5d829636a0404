// Shared by the CSV tests: a model with every attribute kind (values of the five types, simple and
// chronological storage, units, every access type, composites, shortcuts, a link, a list and an array)
// plus a solution-control entity, and a fixture that logs to a scratch file.
#pragma once

#include "ombrix/csv/CSVSimulationTime.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/CSVParser.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace CSVTest
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

template <typename T>
T& add(CompositeAttribute& parent, AttributeType kind, const std::string& name, AccessType access)
{
  Attribute* created = parent.createAttribute(kind, name, access);
  EXPECT_NE(created, nullptr) << name;
  return static_cast<T&>(*created);
}

// A value attribute of the kind of `T`, holding `value` at Initial.
template <typename T>
ValueAttribute<T>& addValue(CompositeAttribute& parent, const std::string& name, AccessType access, T value,
                            const std::string& unit = "")
{
  constexpr AttributeType kind = std::is_same_v<T, int>           ? AttributeType::Int
                                 : std::is_same_v<T, bool>        ? AttributeType::Bool
                                 : std::is_same_v<T, std::string> ? AttributeType::String
                                 : std::is_same_v<T, float>       ? AttributeType::Float
                                                                  : AttributeType::Double;
  auto& attribute = add<ValueAttribute<T>>(parent, kind, name, access);
  attribute.set(value, Chronology::Initial);
  attribute.setUnit(unit);
  return attribute;
}

inline std::unique_ptr<Entity> makeEntity(const std::string& type, const std::string& name, EntityID id)
{
  return std::make_unique<Entity>(type, name, id, AccessType::ReadWrite, nullptr);
}

inline std::unique_ptr<Entity> makeSolutionControl(int iteration, bool transient, double time,
                                                   double timeStep)
{
  auto entity = makeEntity("Solution Control", "Solution Control", EntityID(1, 1));
  auto& results = add<CompositeAttribute>(*entity, AttributeType::Composite, "Results", AccessType::ReadOnly);
  addValue(results, "Iteration", AccessType::ReadOnly, iteration);
  addValue(results, "Time", AccessType::ReadOnly, time, "s");
  addValue(results, "IsConverged", AccessType::ReadOnly, false);
  auto& transientGroup =
      add<CompositeAttribute>(*entity, AttributeType::Composite, "Transient", AccessType::ReadOnly);
  addValue(transientGroup, "Time Varying", AccessType::ReadOnly, transient);
  auto& definition =
      add<CompositeAttribute>(transientGroup, AttributeType::Composite, "Definition", AccessType::ReadOnly);
  addValue(definition, "Time Step", AccessType::ReadWrite, timeStep, "s");
  auto& control =
      add<CompositeAttribute>(*entity, AttributeType::Composite, "Ombrix Control", AccessType::ReadWrite);
  addValue(control, "Stop On Convergence", AccessType::ReadWrite, true);
  return entity;
}

// Solution control, then a pump holding servers (list), a backup (link) and slots (array): everything
// that the definition file carries.
inline void buildModel(EntityCollection& collection)
{
  collection.addRootEntity(makeSolutionControl(12, true, 0.5, 0.25));
  auto pump = makeEntity("Pump", "P1, \"main\"", EntityID(3, 17));
  auto& speed = addValue(*pump, "Speed", AccessType::ReadWrite, 1.5, "rpm");
  speed.set(2.25, Chronology::Current); // chronological storage
  addValue(*pump, "Count", AccessType::WriteOnly, -7);
  addValue(*pump, "On", AccessType::ReadWrite, true);
  addValue(*pump, "Label", AccessType::ReadWrite, std::string("line1\nline2, \"quoted\""));
  addValue(*pump, "Ratio", AccessType::ReadWrite, 0.125f, "-");
  addValue(*pump, "Name", AccessType::ReadOnly, std::string("P1"));
  auto& geometry =
      add<CompositeAttribute>(*pump, AttributeType::Composite, "Geometry", AccessType::ReadWrite);
  addValue(geometry, "Diameter", AccessType::ReadWrite, 0.3, "m");
  addValue(geometry, "Length", AccessType::ReadOnly, 2.0, "m");
  addValue(geometry, "Height", AccessType::None, 1.0, "m");
  auto& targets =
      add<ShortcutAttribute>(*pump, AttributeType::Shortcut, "Both Diameters", AccessType::ReadWrite);
  targets.addShortcut(AttributePath("Geometry.Diameter"));
  addValue(*pump, "Inlet Diameter", AccessType::ReadWrite, 0.3, "m");
  targets.addShortcut(AttributePath("Inlet Diameter"));

  auto& servers = add<ListAttribute>(*pump, AttributeType::List, "Servers", AccessType::ReadWrite);
  servers.setRelationShipType("R");
  servers.setOwnsEntities(true);
  for (int i : {4, 5})
  {
    auto server = makeEntity("Server", "S" + std::to_string(i), EntityID(i, 17));
    addValue(*server, "Load", AccessType::ReadWrite, i * 1.25, "W");
    servers.addEntity(std::move(server));
  }
  auto& backup = add<LinkAttribute>(*pump, AttributeType::Link, "Backup", AccessType::ReadOnly);
  backup.setRelationShipType("Spare");
  backup.setOwnsEntities(true);
  auto spare = makeEntity("Server", "B", EntityID(6, 17));
  addValue(*spare, "Load", AccessType::ReadWrite, 0.0, "W");
  backup.addEntity(std::move(spare));
  auto& slots = add<ArrayAttribute>(*pump, AttributeType::Array, "Slots", AccessType::ReadWrite);
  slots.setRelationShipType("Slot");
  slots.setOwnsEntities(true);
  auto slot = makeEntity("Slot", "A1", EntityID(7, 17));
  addValue(*slot, "Value", AccessType::ReadOnly, 9);
  slots.addEntity(std::move(slot));
  collection.addRootEntity(std::move(pump));
}

// `count` more root entities of ten doubles each (IDs from 100), enough rows for several write batches;
// every seventh name needs quotes in a file.
inline void addCells(EntityCollection& collection, int count)
{
  for (int e = 0; e < count; ++e)
  {
    auto cell = makeEntity("Cell", e % 7 == 0 ? "C," + std::to_string(e) : "C" + std::to_string(e),
                           EntityID(100 + e, 17));
    for (int a = 0; a < 10; ++a)
      addValue(*cell, "Value" + std::to_string(a), AccessType::ReadWrite, e * 0.001 + a, "Pa");
    collection.addRootEntity(std::move(cell));
  }
}

// The text that a file of exactly these rows has.
inline std::string joined(const std::vector<std::vector<std::string>>& rows)
{
  FileSystem::CSVParser parser(',', false, false, '\n', true);
  parser.rows() = rows;
  return parser.toText();
}

// A file of the given content rows between the frame rows.
inline std::string framed(const std::string& content)
{
  return "<<,START,CSV,VER04,>>\n" + content + "<<,END,CSV,VER04,>>\n";
}

// "<iteration> <transient 0|1> <time> <time step>", NaN as "nan": one comparison for the whole value.
inline std::string timeText(const Ombrix::CSVSimulationTime& t)
{
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << t.getIteration() << ' ' << t.isTransient() << ' ' << t.getTime() << ' ' << t.getTimeStep();
  return out.str();
}

// Each test gets its own log file at level Informational; the log is switched off afterwards.
class LoggedTest : public ::testing::Test
{
protected:
  void SetUp() override
  {
    Ombrix::LogManager::instance().initialize(logPath, Ombrix::LogLevel::Informational);
  }
  void TearDown() override
  {
    Ombrix::LogManager::instance().terminate();
    Ombrix::LogManager::instance().initialize("", Ombrix::LogLevel::Error);
  }

  // Whether a log line ends with `text`.
  bool logged(const std::string& text) const
  {
    return OmbrixTest::readFile(logPath).find(text + "\n") != std::string::npos;
  }

  OmbrixTest::TempDir dir;
  std::string logPath = dir.file("csv.log");
};

} // namespace CSVTest
