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

// A value attribute holding `initial` at Initial, with a unit.
template <typename T>
ValueAttribute<T>& value(CompositeAttribute& parent, const std::string& name, AccessType access, T initial,
                         const std::string& unit = "")
{
  auto& added = static_cast<ValueAttribute<T>&>(
      *parent.addAttribute(std::make_unique<ValueAttribute<T>>(name, access, nullptr)));
  if (!unit.empty())
    added.setUnit(unit);
  added.set(initial, Chronology::Initial);
  return added;
}

std::unique_ptr<Entity> entity(const std::string& type, const std::string& name, EntityID id)
{
  auto result = std::make_unique<Entity>(type, name, AccessType::ReadWrite, nullptr);
  result->setUniqueID(id);
  return result;
}

// A link, list or array of `relation` owning one entity.
template <typename Link>
Entity& owned(CompositeAttribute& parent, AttributeType kind, const std::string& name, AccessType access,
              const std::string& relation, std::unique_ptr<Entity> held)
{
  auto& link = add<Link>(parent, kind, name, access);
  link.setRelationShipType(relation);
  link.setOwnsEntities(true);
  return *link.addEntity(std::move(held));
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
  const auto R = AccessType::ReadOnly, RW = AccessType::ReadWrite;
  auto control = entity("Solution Control", "Solution Control", EntityID(1, 1));
  auto& results = add<CompositeAttribute>(*control, AttributeType::Composite, "Results", R);
  value(results, "Iteration", R, 12);
  value(results, "Time", R, 0.5, "s");
  auto& transient = add<CompositeAttribute>(*control, AttributeType::Composite, "Transient", R);
  value(transient, "Time Varying", R, true);
  value(transient, "Time Step", R, 0.1, "s");
  collection.addRootEntity(std::move(control));

  auto pump = entity("Pump", "P1, main", EntityID(3, 17));
  auto& speed = value(*pump, "Speed", RW, 1450.0, "rpm");
  speed.set(1500.0, Chronology::Current);
  speed.set(-2.5e-300, Chronology::Next);
  value(*pump, "Stages", AccessType::WriteOnly, 3);
  value(*pump, "On", RW, true);
  value<std::string>(*pump, "Note", RW, "says \"hi\",\nthen stops");
  value(*pump, "Ratio", R, 0.25f);
  value(*pump, "Hidden", AccessType::None, 1.0);
  auto& geometry = add<CompositeAttribute>(*pump, AttributeType::Composite, "Geometry", RW);
  auto& inlet = add<CompositeAttribute>(geometry, AttributeType::Composite, "Inlet", RW);
  value(inlet, "Diameter", RW, 0.3, "m").set(0.31, Chronology::TimeStepStart);
  add<ShortcutAttribute>(*pump, AttributeType::Shortcut, "Size", RW)
      .addShortcut(AttributePath("Geometry.Inlet.Diameter"));
  value(owned<ListAttribute>(*pump, AttributeType::List, "Servers", RW, "R", entity("Server", "S1", {4, 17})),
        "Load", RW, 2.5);
  value(
      owned<LinkAttribute>(*pump, AttributeType::Link, "Backup", R, "Spare", entity("Server", "B", {5, 17})),
      "Hours", RW, -7);
  value(
      owned<ArrayAttribute>(*pump, AttributeType::Array, "Slots", RW, "Slot", entity("Slot", "A1", {6, 17})),
      "Used", RW, false);
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
