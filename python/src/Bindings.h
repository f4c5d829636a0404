// Shared by the binding sources of the Python module `ombrix._ombrix`: the model as Python holds it,
// handles to its entities and attributes, value conversions, and one registration function per area.
#pragma once

#include "ombrix/model/Attribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <pybind11/pybind11.h>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace OmbrixPython
{

namespace py = pybind11;
using KorvanSDK::Chronology;
using Ombrix::Model::Attribute;
using Ombrix::Model::Entity;

// A model read from a definition file. Python changes its values, never its structure, so raw pointers
// into it stay valid while the state lives, and every handle keeps the state alive. The model takes no
// locks: `mutex` serialises the work done with the GIL released (file reads and writes) against every
// other use from Python threads. Take it only after releasing the GIL, or while holding the GIL without
// releasing it, so that a thread holding the mutex never waits for the GIL.
struct ModelState
{
  Ombrix::Model::EntityCollection collection;
  std::mutex mutex;

  // Position of an entity in the flat list.
  std::size_t positionOf(const Entity* entity);
  // Positions of the entities whose full name, or else own name, is `name`.
  const std::vector<std::size_t>& positionsNamed(const std::string& name);

private:
  void index();
  bool m_indexed = false;
  std::unordered_map<const Entity*, std::size_t> m_positions;
  std::unordered_map<std::string, std::vector<std::size_t>> m_fullNames;
  std::unordered_map<std::string, std::vector<std::size_t>> m_ownNames;
};
using ModelPtr = std::shared_ptr<ModelState>;

struct EntityHandle
{
  ModelPtr model;
  Entity* entity;
};

struct AttributeHandle
{
  ModelPtr model;
  Attribute* attribute;
};

// An entity or attribute that is not there: ombrix.NotFoundError, which is also a KeyError. The library's
// other std::out_of_range errors (a value outside an Int, a chronology with no value) are
// ombrix.ArgumentError, a ValueError.
struct NotFound : std::out_of_range
{
  using std::out_of_range::out_of_range;
};

// The entity that Python names by an Entity, an EntityID, a flat-list position, a (type, name) pair, an
// (int, int) ID pair, or a text: a full or own name, else an ID text such as "2-1". An unknown entity
// raises ombrix.NotFoundError (a KeyError) with the library's text where the library made the lookup.
Entity& resolveEntity(ModelState& model, py::handle key);
// The attribute at `path` below `entity`; ombrix.NotFoundError with the library's "Invalid path" text.
Attribute& resolveAttribute(Entity& entity, const std::string& path);

// A value attribute's value as int, bool, float or str; other kinds raise the library's error.
py::object getValue(const Attribute& attribute, Chronology chronology, bool user);
// Stores a Python value by the attribute's kind; a value of the wrong Python type raises TypeError, an
// int outside 32 bits ValueError. The library's unit and access checks apply.
void setValue(Attribute& attribute, py::handle value, const std::string& unit, Chronology chronology,
              bool user);

// Text from and to files: UTF-8, with undecodable bytes carried through unchanged.
py::str toPython(const std::string& text);
std::string fromPython(py::handle text);

// "ombrix.<Name>", for messages.
std::string typeName(py::handle object);

void bindErrors(py::module_& module);
void bindModel(py::module_& module);
void bindValues(py::module_& module);
void bindExchange(py::module_& module);

} // namespace OmbrixPython
