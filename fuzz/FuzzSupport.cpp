#include "FuzzSupport.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace OmbrixFuzz
{

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

// Created on first use, removed with everything in it when the process ends normally.
struct ScratchDirectory
{
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("ombrix-fuzz-" + std::to_string(::getpid()));
  ScratchDirectory() { std::filesystem::create_directories(path); }
  ~ScratchDirectory()
  {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
};

const std::filesystem::path& scratchDirectory()
{
  static const ScratchDirectory directory;
  return directory.path;
}

} // namespace

void buildModel(EntityCollection& collection)
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
  auto& step = add<DoubleAttribute>(transient, AttributeType::Double, "Time Step", AccessType::ReadOnly);
  step.setUnit("s");
  step.set(0.1, Chronology::Initial);
  collection.addRootEntity(std::move(control));

  auto pump = entity("Pump", "P1, main", EntityID(3, 17));
  auto& speed = add<DoubleAttribute>(*pump, AttributeType::Double, "Speed", AccessType::ReadWrite);
  speed.setUnit("rpm");
  speed.set(1450.0, Chronology::Initial);
  speed.set(1500.0, Chronology::Current);
  speed.set(-2.5e-300, Chronology::Next);
  add<IntAttribute>(*pump, AttributeType::Int, "Stages", AccessType::WriteOnly).set(3, Chronology::Initial);
  add<BoolAttribute>(*pump, AttributeType::Bool, "On", AccessType::ReadWrite).set(true, Chronology::Initial);
  add<StringAttribute>(*pump, AttributeType::String, "Note", AccessType::ReadWrite)
      .set("says \"hi\",\nthen stops", Chronology::Initial);
  add<FloatAttribute>(*pump, AttributeType::Float, "Ratio", AccessType::ReadOnly)
      .set(0.25f, Chronology::Initial);
  add<DoubleAttribute>(*pump, AttributeType::Double, "Hidden", AccessType::None)
      .set(1.0, Chronology::Initial);
  auto& geometry =
      add<CompositeAttribute>(*pump, AttributeType::Composite, "Geometry", AccessType::ReadWrite);
  auto& inner = add<CompositeAttribute>(geometry, AttributeType::Composite, "Inlet", AccessType::ReadWrite);
  auto& diameter = add<DoubleAttribute>(inner, AttributeType::Double, "Diameter", AccessType::ReadWrite);
  diameter.setUnit("m");
  diameter.set(0.3, Chronology::Initial);
  diameter.set(0.31, Chronology::TimeStepStart);
  add<ShortcutAttribute>(*pump, AttributeType::Shortcut, "Size", AccessType::ReadWrite)
      .addShortcut(AttributePath("Geometry.Inlet.Diameter"));
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
  add<IntAttribute>(*spare, AttributeType::Int, "Hours", AccessType::ReadWrite).set(-7, Chronology::Initial);
  backup.addEntity(std::move(spare));
  auto& slots = add<ArrayAttribute>(*pump, AttributeType::Array, "Slots", AccessType::ReadWrite);
  slots.setRelationShipType("Slot");
  slots.setOwnsEntities(true);
  auto slot = entity("Slot", "A1", EntityID(6, 17));
  add<BoolAttribute>(*slot, AttributeType::Bool, "Used", AccessType::ReadWrite)
      .set(false, Chronology::Initial);
  slots.addEntity(std::move(slot));
  collection.addRootEntity(std::move(pump));
  collection.rebuildChildEntitiesList();
}

std::string scratchFile(const std::string& name)
{
  return (scratchDirectory() / name).string();
}

void writeFile(const std::string& path, std::string_view data)
{
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(data.data(), static_cast<std::streamsize>(data.size()));
  if (!out)
    fail("cannot write the scratch file " + path);
}

void fail(const std::string& what)
{
  std::fprintf(stderr, "property broken: %s\n", what.c_str());
  std::fflush(stderr);
  std::abort();
}

} // namespace OmbrixFuzz
