// The model as Python sees it: read from def.csv, walked through entities and attributes, values got and
// set one at a time with the library's unit and access checks. Bulk values are in ValueBindings.cpp.
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/model/ValueText.h"

#include "Bindings.h"

#include <cerrno>
#include <climits>
#include <filesystem>
#include <pybind11/stl.h>
#include <set>
#include <stdexcept>

namespace OmbrixPython
{

using namespace pybind11::literals;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using Ombrix::Model::EntityID;

void ModelState::index()
{
  if (m_indexed)
    return;
  for (std::size_t i = 0; i < collection.size(); ++i)
  {
    const Entity* entity = collection[i];
    if (!entity)
      continue;
    m_positions.emplace(entity, i);
    m_fullNames[entity->getName(true)].push_back(i);
    m_ownNames[entity->name()].push_back(i);
  }
  m_indexed = true;
}

std::size_t ModelState::positionOf(const Entity* entity)
{
  index();
  const auto found = m_positions.find(entity);
  return found == m_positions.end() ? static_cast<std::size_t>(-1) : found->second;
}

const std::vector<std::size_t>& ModelState::positionsNamed(const std::string& name)
{
  static const std::vector<std::size_t> none;
  index();
  if (auto full = m_fullNames.find(name); full != m_fullNames.end())
    return full->second;
  const auto own = m_ownNames.find(name);
  return own == m_ownNames.end() ? none : own->second;
}

py::str toPython(const std::string& text)
{
  PyObject* result =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
  if (!result)
    throw py::error_already_set();
  return py::reinterpret_steal<py::str>(result);
}

std::string fromPython(py::handle text)
{
  if (!PyUnicode_Check(text.ptr()))
    throw py::type_error("expected a str, not " + typeName(text));
  const py::object bytes =
      py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
  if (!bytes)
    throw py::error_already_set();
  return std::string(PyBytes_AS_STRING(bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
}

std::string typeName(py::handle object)
{
  return Py_TYPE(object.ptr())->tp_name;
}

namespace
{

double toDouble(py::handle value)
{
  const double number = PyFloat_AsDouble(value.ptr());
  if (number == -1.0 && PyErr_Occurred())
    throw py::error_already_set();
  return number;
}

bool isInteger(py::handle value)
{
  return !PyBool_Check(value.ptr()) && PyIndex_Check(value.ptr());
}

// "2-1", "-3-12": what the library writes for an ID.
bool looksLikeID(const std::string& text)
{
  std::size_t i = 0;
  const auto digits = [&]
  {
    if (i < text.size() && text[i] == '-')
      ++i;
    const std::size_t start = i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9')
      ++i;
    return i > start;
  };
  return digits() && i < text.size() && text[i++] == '-' && digits() && i == text.size();
}

} // namespace

namespace
{

Entity& findEntity(ModelState& model, py::handle key)
{
  Ombrix::Model::EntityCollection& collection = model.collection;
  if (py::isinstance<EntityHandle>(key))
  {
    const auto& handle = key.cast<const EntityHandle&>();
    if (handle.model.get() != &model)
      throw py::value_error("the entity " + Ombrix::Model::toString(handle.entity->getUniqueID()) +
                            " belongs to another model");
    return *handle.entity;
  }
  if (py::isinstance<EntityID>(key))
    return *collection.getEntity(key.cast<EntityID>());
  if (isInteger(key))
  {
    const long long position = key.cast<long long>();
    if (position < 0)
      throw NotFound("No Entity found with entity_i='" + std::to_string(position) + "'");
    return *collection.getEntity(static_cast<std::size_t>(position));
  }
  if (py::isinstance<py::tuple>(key) && py::len(key) == 2)
  {
    const auto pair = key.cast<py::tuple>();
    if (PyUnicode_Check(pair[0].ptr()) && PyUnicode_Check(pair[1].ptr()))
      return *collection.getEntity(fromPython(pair[0]), fromPython(pair[1]));
    if (isInteger(pair[0]) && isInteger(pair[1]))
      return *collection.getEntity(EntityID(pair[0].cast<int>(), pair[1].cast<int>()));
  }
  if (PyUnicode_Check(key.ptr()))
  {
    const std::string name = fromPython(key);
    const std::vector<std::size_t>& named = model.positionsNamed(name);
    if (named.size() == 1)
      return *collection[named.front()];
    if (named.size() > 1)
      throw NotFound("Entity name '" + name + "' is ambiguous: " + std::to_string(named.size()) +
                     " entities carry it; name one by (type, name) or by its ID");
    if (looksLikeID(name))
      return *collection.getEntity(EntityID::fromString(name));
    throw NotFound("No Entity found with entityName='" + name + "'");
  }
  throw py::type_error("an entity is named by an Entity, an EntityID, a position, a (type, name) pair or a "
                       "name, not " +
                       typeName(key));
}

} // namespace

Entity& resolveEntity(ModelState& model, py::handle key)
{
  try
  {
    return findEntity(model, key);
  }
  catch (const NotFound&)
  {
    throw;
  }
  catch (const std::out_of_range& error)
  {
    throw NotFound(error.what()); // the collection's "No Entity found with ..."
  }
}

Attribute& resolveAttribute(Entity& entity, const std::string& path)
{
  Attribute* found = entity.findAttribute(Ombrix::Model::AttributePath(path));
  if (found)
    return *found;
  try
  {
    entity.getAttribute(Ombrix::Model::AttributePath(path));
  }
  catch (const std::exception& error)
  {
    throw NotFound(error.what()); // "Invalid path [...]"
  }
  throw NotFound("Invalid path " + path);
}

py::object getValue(const Attribute& attribute, Chronology chronology, bool user)
{
  switch (attribute.getAttributeType(true))
  {
  case AttributeType::Int:
    return py::int_(attribute.getIntValue(chronology, user));
  case AttributeType::Bool:
    return py::bool_(attribute.getBoolValue(chronology, user));
  case AttributeType::Float:
    return py::float_(attribute.getFloatValue(chronology, user));
  case AttributeType::String:
    return toPython(attribute.getStringValue(chronology, user));
  default:
    // Doubles, and every kind without a value, which the library refuses with its own message.
    return py::float_(attribute.getDoubleValue(chronology, user));
  }
}

void setValue(Attribute& attribute, py::handle value, const std::string& unit, Chronology chronology,
              bool user)
{
  const auto wrongType = [&](const char* wanted)
  {
    return py::type_error(Ombrix::Model::toString(attribute.getEntityIDAndAttributePath()) + " takes " +
                          wanted + ", not " + typeName(value));
  };
  const PyObject* object = value.ptr();
  const bool isBool = PyBool_Check(object) || typeName(value) == std::string("numpy.bool_");
  const bool isNumber =
      !isBool && !PyUnicode_Check(object) &&
      (PyFloat_Check(object) || isInteger(value) || PyObject_HasAttrString(value.ptr(), "__float__"));
  AttributeType kind = attribute.getAttributeType(true);
  if (kind == AttributeType::Unknown || kind == AttributeType::Shortcut)
  {
    // A shortcut whose targets differ in kind: the value's own kind decides, and the library converts.
    kind = isBool                    ? AttributeType::Bool
           : PyUnicode_Check(object) ? AttributeType::String
                                     : AttributeType::Double;
  }
  switch (kind)
  {
  case AttributeType::Int:
  {
    if (!isInteger(value))
      throw wrongType("an int");
    const py::int_ number = py::reinterpret_steal<py::int_>(PyNumber_Index(value.ptr()));
    int overflow = 0;
    const long long wide = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    if (overflow != 0 || wide < INT_MIN || wide > INT_MAX)
      throw py::value_error(Ombrix::Model::toString(attribute.getEntityIDAndAttributePath()) +
                            " is a 32-bit Int: " + py::repr(value).cast<std::string>() + " does not fit");
    return attribute.setIntValue(static_cast<int>(wide), unit, chronology, user);
  }
  case AttributeType::Bool:
    if (!isBool)
      throw wrongType("a bool");
    return attribute.setBoolValue(py::cast<bool>(value), unit, chronology, user);
  case AttributeType::Float:
    if (!isNumber)
      throw wrongType("a number");
    return attribute.setFloatValue(static_cast<float>(toDouble(value)), unit, chronology, user);
  case AttributeType::String:
    if (!PyUnicode_Check(object))
      throw wrongType("a str");
    return attribute.setStringValue(fromPython(value), unit, chronology, user);
  default:
    if (!isNumber)
      throw wrongType("a number");
    return attribute.setDoubleValue(toDouble(value), unit, chronology, user);
  }
}

namespace
{

// Every attribute below `composite`, depth first in stored order; composites before their children.
// Entities held by links are entities of the model's own list, not attributes here.
void collectAttributes(Ombrix::Model::CompositeAttribute& composite, std::vector<Attribute*>& out)
{
  for (auto& child : composite)
  {
    out.push_back(child.get());
    if (child->isComposite())
      collectAttributes(static_cast<Ombrix::Model::CompositeAttribute&>(*child), out);
  }
}

[[noreturn]] void raiseFileNotFound(const std::string& path)
{
  PyErr_SetObject(PyExc_FileNotFoundError, py::make_tuple(ENOENT, "No such file", path).ptr());
  throw py::error_already_set();
}

ModelPtr readDefinition(const std::string& path, bool strictNumbers)
{
  auto model = std::make_shared<ModelState>();
  bool read = false;
  {
    py::gil_scoped_release released;
    Ombrix::CSVDefinitionFileParser parser(model->collection);
    parser.setStrictNumbers(strictNumbers);
    read = parser.parseFile(path);
  }
  if (!read)
  {
    if (!std::filesystem::exists(path))
      raiseFileNotFound(path);
    throw std::runtime_error(path + " was not read; the log has the reasons");
  }
  return model;
}

void writeDefinition(const ModelPtr& model, const std::string& path, const std::set<Chronology>& chronologies,
                     Ombrix::Model::NumberFormat format)
{
  bool written = false;
  {
    py::gil_scoped_release released;
    std::lock_guard lock(model->mutex);
    Ombrix::CSVDefinitionFileParser parser(model->collection);
    parser.setChronologies(chronologies);
    parser.setNumberFormat(format);
    written = parser.saveAs(path);
  }
  if (!written)
  {
    PyErr_SetObject(PyExc_OSError, py::make_tuple(0, "cannot write the definition file", path).ptr());
    throw py::error_already_set();
  }
}

EntityHandle entityHandle(const ModelPtr& model, py::handle key)
{
  return {model, &resolveEntity(*model, key)};
}

AttributeHandle attributeHandle(const EntityHandle& entity, const std::string& path)
{
  return {entity.model, &resolveAttribute(*entity.entity, path)};
}

py::object getHandleValue(const AttributeHandle& handle, Chronology chronology, bool user)
{
  std::lock_guard lock(handle.model->mutex);
  return getValue(*handle.attribute, chronology, user);
}

void setHandleValue(const AttributeHandle& handle, py::handle value, Chronology chronology,
                    const std::string& unit, bool user)
{
  std::lock_guard lock(handle.model->mutex);
  setValue(*handle.attribute, value, unit, chronology, user);
}

py::object optionalEntity(const ModelPtr& model, Entity* entity)
{
  return entity ? py::cast(EntityHandle{model, entity}) : py::none();
}

const char* const getDoc = "The value at `chronology` as int, bool, float or str. `user` checks read access "
                           "(ombrix.AccessError \"User has no read access\"); a chronology before the first "
                           "stored one raises ombrix.NotFoundError \"Chronology Out Of Range\".";
const char* const setDoc =
    "Stores `value` at `chronology`. A non-empty `unit` must be the attribute's (ombrix.Error \"Invalid "
    "Unit\"); `user` checks write access (ombrix.AccessError \"User has no write access\") and logs the "
    "write. A value of the wrong Python type raises TypeError, an int outside 32 bits ValueError.";

} // namespace

void bindModel(py::module_& module)
{
  py::enum_<Chronology>(module, "Chronology",
                        "Points of a solve at which a value is kept (C++ "
                        "KorvanSDK::Chronology).")
      .value("Initial", Chronology::Initial)
      .value("Continue", Chronology::Continue)
      .value("TimeStepStart", Chronology::TimeStepStart)
      .value("Current", Chronology::Current)
      .value("Next", Chronology::Next);
  py::enum_<AccessType>(module, "AccessType", "What a user may do with a value (C++ KorvanSDK::AccessType).")
      .value("None_", AccessType::None)
      .value("ReadOnly", AccessType::ReadOnly)
      .value("WriteOnly", AccessType::WriteOnly)
      .value("ReadWrite", AccessType::ReadWrite);
  py::enum_<AttributeType>(module, "AttributeType",
                           "The kind of an attribute (C++ KorvanSDK::AttributeType).")
      .value("Unknown", AttributeType::Unknown)
      .value("Int", AttributeType::Int)
      .value("Bool", AttributeType::Bool)
      .value("String", AttributeType::String)
      .value("Float", AttributeType::Float)
      .value("Composite", AttributeType::Composite)
      .value("Entity", AttributeType::Entity)
      .value("Link", AttributeType::Link)
      .value("List", AttributeType::List)
      .value("Shortcut", AttributeType::Shortcut)
      .value("Array", AttributeType::Array)
      .value("Double", AttributeType::Double);
  py::enum_<Ombrix::LogLevel>(module, "LogLevel", "Levels of the library's log (C++ Ombrix::LogLevel).")
      .value("None_", Ombrix::LogLevel::None)
      .value("Error", Ombrix::LogLevel::Error)
      .value("Warning", Ombrix::LogLevel::Warning)
      .value("Message", Ombrix::LogLevel::Message)
      .value("Informational", Ombrix::LogLevel::Informational);
  py::enum_<Ombrix::Model::NumberFormat>(module, "NumberFormat",
                                         "Text of float and double values written: Fixed (\"%f\") or "
                                         "RoundTrip (reads back bit-identical).")
      .value("Fixed", Ombrix::Model::NumberFormat::Fixed)
      .value("RoundTrip", Ombrix::Model::NumberFormat::RoundTrip);

  module.def(
      "initialize_log",
      [](const std::string& path, Ombrix::LogLevel level)
      { Ombrix::LogManager::instance().initialize(path, level); },
      "path"_a, "level"_a = Ombrix::LogLevel::Warning,
      "Starts the process-wide log in `path` (created or truncated); an empty path switches it off. User "
      "writes are logged at Informational.");
  module.def(
      "terminate_log", [] { Ombrix::LogManager::instance().terminate(); },
      "Writes the log's finish line and switches it off.");

  py::class_<EntityID>(module, "EntityID", "The identity of an entity: two 32-bit integers, text \"2-1\".")
      .def(py::init<int, int>(), "first"_a, "second"_a)
      .def_static("from_string", &EntityID::fromString, "text"_a,
                  "Parses \"2-1\"; a text without separator names the ID with both parts equal (\"7\" is "
                  "7-7).")
      .def_property_readonly("first", &EntityID::first)
      .def_property_readonly("second", &EntityID::second)
      .def("__str__", [](const EntityID& id) { return Ombrix::Model::toString(id); })
      .def("__repr__", [](const EntityID& id)
           { return "EntityID(" + std::to_string(id.first()) + ", " + std::to_string(id.second()) + ")"; })
      .def(
          "__eq__", [](const EntityID& a, const EntityID& b) { return a == b; }, py::is_operator())
      .def("__hash__", [](const EntityID& id) { return std::hash<EntityID>{}(id); });

  py::class_<AttributeHandle>(module, "Attribute",
                              "One attribute of an entity. Valid as long as its model; holds the model.")
      .def_property_readonly("name", [](const AttributeHandle& h) { return toPython(h.attribute->type()); })
      .def_property_readonly(
          "path",
          [](const AttributeHandle& h) { return toPython(h.attribute->getAttributePath(true).toString()); },
          "The path below the owning entity, segments joined by \".\".")
      .def_property_readonly("kind",
                             [](const AttributeHandle& h) { return h.attribute->getAttributeType(false); })
      .def_property_readonly(
          "value_kind", [](const AttributeHandle& h) { return h.attribute->getAttributeType(true); },
          "The kind of its value: for a shortcut its targets' common kind (Unknown when they differ).")
      .def_property_readonly("unit",
                             [](const AttributeHandle& h) { return toPython(h.attribute->getUnit()); })
      .def_property_readonly("access", [](const AttributeHandle& h) { return h.attribute->getAccessType(); })
      .def_property_readonly("entity", [](const AttributeHandle& h)
                             { return optionalEntity(h.model, h.attribute->getParentEntity()); })
      .def(
          "has_value",
          [](const AttributeHandle& h, Chronology chronology)
          {
            std::lock_guard lock(h.model->mutex);
            return h.attribute->hasValue(chronology, false);
          },
          "chronology"_a = Chronology::Current)
      .def("get", &getHandleValue, "chronology"_a = Chronology::Current, "user"_a = true, getDoc)
      .def("set", &setHandleValue, "value"_a, "chronology"_a = Chronology::Current, "unit"_a = "",
           "user"_a = true, setDoc)
      .def(
          "__eq__",
          [](const AttributeHandle& a, const AttributeHandle& b) { return a.attribute == b.attribute; },
          py::is_operator())
      .def("__hash__", [](const AttributeHandle& h) { return std::hash<const void*>{}(h.attribute); })
      .def("__repr__",
           [](const AttributeHandle& h)
           {
             return "<ombrix.Attribute " +
                    Ombrix::Model::toString(h.attribute->getEntityIDAndAttributePath()) + " " +
                    KorvanSDK::attributeTypeToString(h.attribute->getAttributeType(false)) + ">";
           });

  py::class_<EntityHandle>(module, "Entity",
                           "One entity of a model: type, name, ID and a tree of attributes. Valid as long as "
                           "its model; holds the model.")
      .def_property_readonly("type", [](const EntityHandle& h) { return toPython(h.entity->type()); })
      .def_property_readonly("name", [](const EntityHandle& h) { return toPython(h.entity->name()); })
      .def_property_readonly(
          "full_name", [](const EntityHandle& h) { return toPython(h.entity->getName(true)); },
          "The names of the entity and its entity ancestors, outermost first, joined by \"->\".")
      .def_property_readonly("id", [](const EntityHandle& h) { return h.entity->getUniqueID(); })
      .def_property_readonly("access", [](const EntityHandle& h) { return h.entity->getAccessType(); })
      .def_property_readonly(
          "position", [](const EntityHandle& h) { return h.model->positionOf(h.entity); },
          "The entity's position in the model's list of entities (Model.entities).")
      .def_property_readonly(
          "attributes",
          [](const EntityHandle& h)
          {
            std::vector<Attribute*> attributes;
            collectAttributes(*h.entity, attributes);
            py::list result;
            for (Attribute* attribute : attributes)
              result.append(AttributeHandle{h.model, attribute});
            return result;
          },
          "Every attribute, depth first in stored order, a composite before its children.")
      .def("attribute", &attributeHandle, "path"_a,
           "The attribute at `path`; ombrix.NotFoundError with the library's \"Invalid path\" text.")
      .def("__getitem__", &attributeHandle, "path"_a)
      .def(
          "get",
          [](const EntityHandle& h, const std::string& path, Chronology chronology, bool user)
          { return getHandleValue(attributeHandle(h, path), chronology, user); },
          "path"_a, "chronology"_a = Chronology::Current, "user"_a = true, getDoc)
      .def(
          "set",
          [](const EntityHandle& h, const std::string& path, py::handle value, Chronology chronology,
             const std::string& unit, bool user)
          { setHandleValue(attributeHandle(h, path), value, chronology, unit, user); },
          "path"_a, "value"_a, "chronology"_a = Chronology::Current, "unit"_a = "", "user"_a = true, setDoc)
      .def(
          "__eq__", [](const EntityHandle& a, const EntityHandle& b) { return a.entity == b.entity; },
          py::is_operator())
      .def("__hash__", [](const EntityHandle& h) { return std::hash<const void*>{}(h.entity); })
      .def("__repr__",
           [](const EntityHandle& h)
           {
             return "<ombrix.Entity " + Ombrix::Model::toString(h.entity->getUniqueID()) + " " +
                    h.entity->type() + " '" + h.entity->getName(true) + "'>";
           });

  py::class_<ModelState, ModelPtr>(
      module, "Model", "The exchanged model: entities with attribute trees, as read from def.csv.")
      .def_static("read_definition", &readDefinition, "path"_a, "strict_numbers"_a = false,
                  "Rebuilds the model described by a definition file (def.csv). Raises FileNotFoundError "
                  "for a missing file and the library's errors for a bad one; with `strict_numbers` a value "
                  "that is not entirely a number of its type is one of them.")
      .def("write_definition", &writeDefinition, "path"_a,
           "chronologies"_a = std::set<Chronology>{Chronology::Initial, Chronology::Current},
           "number_format"_a = Ombrix::Model::NumberFormat::Fixed,
           "Writes the model as a definition file with one value column per chronology.")
      .def("__len__", [](const ModelState& m) { return m.collection.size(); })
      .def_property_readonly(
          "entities",
          [](const ModelPtr& m)
          {
            py::list result;
            for (Entity* entity : m->collection)
              result.append(EntityHandle{m, entity});
            return result;
          },
          "Every entity, roots in file order each followed by the entities below it.")
      .def("entity", &entityHandle, "key"_a,
           "The entity named by an Entity, an EntityID, a position, a (type, name) pair, an (int, int) ID "
           "pair, or a text: its full or own name, else its ID text (\"2-1\"). ombrix.NotFoundError when "
           "there is none, or when a name is shared.")
      .def(
          "attribute",
          [](const ModelPtr& m, py::handle entity, const std::string& path)
          { return attributeHandle(entityHandle(m, entity), path); },
          "entity"_a, "path"_a)
      .def(
          "get",
          [](const ModelPtr& m, py::handle entity, const std::string& path, Chronology chronology, bool user)
          { return getHandleValue(attributeHandle(entityHandle(m, entity), path), chronology, user); },
          "entity"_a, "path"_a, "chronology"_a = Chronology::Current, "user"_a = true, getDoc)
      .def(
          "set",
          [](const ModelPtr& m, py::handle entity, const std::string& path, py::handle value,
             Chronology chronology, const std::string& unit, bool user)
          { setHandleValue(attributeHandle(entityHandle(m, entity), path), value, chronology, unit, user); },
          "entity"_a, "path"_a, "value"_a, "chronology"_a = Chronology::Current, "unit"_a = "",
          "user"_a = true, setDoc)
      .def_property_readonly(
          "solution_control",
          [](const ModelPtr& m)
          {
            return optionalEntity(m, m->collection.hasSolutionControl() ? m->collection.getSolutionControl()
                                                                        : nullptr);
          },
          "The solution-control entity, or None.")
      .def("__repr__", [](const ModelState& m)
           { return "<ombrix.Model of " + std::to_string(m.collection.size()) + " entities>"; });
}

} // namespace OmbrixPython
