// Values in bulk: a data file read into numpy arrays (one array per kind, with the entity, path and
// chronology of each value) and written from them, and views that map a fixed list of attributes to the
// slots of one float64 array. No Python object is made per value, except for strings.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/InFileReader.h"
#include "ombrix/model/AccessException.h"
#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include "Bindings.h"

#include <array>
#include <cstdint>
#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <set>

namespace OmbrixPython
{

using namespace pybind11::literals;
using KorvanSDK::AttributeType;
using Applied = Ombrix::CSVDataFileParser::AppliedValue;

namespace
{

// The kinds of value, in the order of a Values' columns.
enum ColumnKind : std::size_t
{
  IntColumn,
  BoolColumn,
  FloatColumn,
  DoubleColumn,
  StringColumn,
  columnCount
};

constexpr std::array<AttributeType, columnCount> columnTypes{AttributeType::Int, AttributeType::Bool,
                                                             AttributeType::Float, AttributeType::Double,
                                                             AttributeType::String};
constexpr std::array<const char*, columnCount> columnNames{"int", "bool", "float", "double", "string"};

std::size_t columnOf(AttributeType type)
{
  for (std::size_t c = 0; c < columnCount; ++c)
    if (columnTypes[c] == type)
      return c;
  return columnCount;
}

std::string placeOf(const Attribute& attribute)
{
  return Ombrix::Model::toString(attribute.getEntityIDAndAttributePath());
}

// Runs `action` on one value of a bulk operation; a library error comes back with the value's place in
// front of its text, as the data reader words its own ("2-1:Probe.Temperature: User has no read access").
template <typename Action> void atPlace(const Attribute& attribute, Action&& action)
{
  try
  {
    action();
  }
  catch (const Ombrix::Model::AccessException& error)
  {
    throw Ombrix::Model::AccessException(placeOf(attribute) + ": " + error.what());
  }
  catch (const std::logic_error& error)
  {
    throw std::invalid_argument(placeOf(attribute) + ": " + error.what());
  }
  catch (const std::runtime_error& error)
  {
    throw std::runtime_error(placeOf(attribute) + ": " + error.what());
  }
}

// A read-only view of `data`, shared by every Values read with the same layout.
template <typename T> py::array_t<T> frozen(std::vector<T>&& data, std::vector<py::ssize_t> shape)
{
  auto* owned = new std::vector<T>(std::move(data));
  py::capsule owner(owned, [](void* p) { delete static_cast<std::vector<T>*>(p); });
  std::vector<py::ssize_t> strides(shape.size(), static_cast<py::ssize_t>(sizeof(T)));
  if (shape.size() == 2)
    strides[0] = static_cast<py::ssize_t>(sizeof(T)) * shape[1];
  py::array_t<T> array(shape, strides, owned->data(), owner);
  array.attr("setflags")("write"_a = false);
  return array;
}

// Where the values of a read came from, split by kind: the targets and, for Python, each value's entity
// position, entity ID, path and chronology. Made when a read stores values at other places than the read
// before it, and shared by the Values of every read with the same places.
struct Layout
{
  struct Column
  {
    std::vector<Applied> targets;
    py::array_t<std::int64_t> entities;
    py::array_t<std::int32_t> ids;
    py::array_t<std::int32_t> paths;
    py::array_t<std::int8_t> chronologies;
  };

  Layout(ModelState& model, const std::vector<Applied>& recorded) : applied(recorded)
  {
    std::array<std::vector<std::int64_t>, columnCount> entities;
    std::array<std::vector<std::int32_t>, columnCount> ids, paths;
    std::array<std::vector<std::int8_t>, columnCount> chronologies;
    std::unordered_map<std::string, std::int32_t> pathIds;
    std::unordered_map<const Attribute*, std::string> prefixes; // parent -> its path and "."
    const Entity* lastEntity = nullptr;
    std::int64_t lastPosition = -1;
    std::string path;
    for (const Applied& value : recorded)
    {
      const Attribute& attribute = *value.attribute;
      const std::size_t c = columnOf(attribute.getAttributeType(false));
      if (c == columnCount)
        continue; // the reader stores values of these five kinds only
      columns[c].targets.push_back(value);
      const Entity* entity = attribute.getParentEntity();
      if (entity != lastEntity)
      {
        lastEntity = entity;
        lastPosition = static_cast<std::int64_t>(model.positionOf(entity));
      }
      entities[c].push_back(lastPosition);
      ids[c].push_back(entity ? entity->getUniqueID().first() : 0);
      ids[c].push_back(entity ? entity->getUniqueID().second() : 0);
      const Attribute* parent = attribute.getParent();
      auto prefix = prefixes.find(parent);
      if (prefix == prefixes.end())
        prefix = prefixes
                     .emplace(parent, !parent || parent->isEntity()
                                          ? std::string()
                                          : parent->getAttributePath(true).toString() + ".")
                     .first;
      path.assign(prefix->second).append(attribute.type());
      auto [id, added] = pathIds.try_emplace(path, static_cast<std::int32_t>(pathIds.size()));
      if (added)
        pathNames.append(toPython(path));
      paths[c].push_back(id->second);
      chronologies[c].push_back(static_cast<std::int8_t>(value.chronology));
    }
    for (std::size_t c = 0; c < columnCount; ++c)
    {
      const auto n = static_cast<py::ssize_t>(columns[c].targets.size());
      columns[c].entities = frozen(std::move(entities[c]), {n});
      columns[c].ids = frozen(std::move(ids[c]), {n, 2});
      columns[c].paths = frozen(std::move(paths[c]), {n});
      columns[c].chronologies = frozen(std::move(chronologies[c]), {n});
    }
  }

  bool matches(const std::vector<Applied>& recorded) const
  {
    if (recorded.size() != applied.size())
      return false;
    for (std::size_t i = 0; i < recorded.size(); ++i)
      if (recorded[i].attribute != applied[i].attribute || recorded[i].chronology != applied[i].chronology)
        return false;
    return true;
  }

  std::vector<Applied> applied;
  std::array<Column, columnCount> columns;
  py::list pathNames;
};

template <typename T> py::array_t<T> gather(const std::vector<Applied>& targets)
{
  py::array_t<T> values(static_cast<py::ssize_t>(targets.size()));
  T* out = values.mutable_data();
  for (const Applied& target : targets)
    *out++ = static_cast<const Ombrix::Model::ValueAttribute<T>&>(*target.attribute).get(target.chronology);
  return values;
}

// The values of one data file read, by kind, with their places.
struct Values
{
  ModelPtr model;
  std::shared_ptr<const Layout> layout;
  std::array<py::object, columnCount> values;
  bool complete = true;
};

// One kind's values of a Values.
struct Column
{
  std::shared_ptr<Values> owner;
  std::size_t kind;

  const Layout::Column& layout() const { return owner->layout->columns[kind]; }
  std::size_t size() const { return layout().targets.size(); }
};

const char* dtypeOf(std::size_t kind)
{
  static constexpr std::array<const char*, columnCount> names{"int32", "bool", "float32", "float64",
                                                              "object"};
  return names[kind];
}

// `replacement` as the array of column `kind` of `size` values: one value per place, of a dtype that
// converts to the column's without changing kind (ints into a float column, not floats into an int one).
py::object checkedColumn(std::size_t kind, std::size_t size, py::handle replacement)
{
  const std::string name = std::string("Values.") + columnNames[kind];
  if (kind == StringColumn)
  {
    if (!PySequence_Check(replacement.ptr()) || PyUnicode_Check(replacement.ptr()))
      throw py::value_error(name + " takes a list of str, not " + typeName(replacement));
    py::list strings(py::reinterpret_borrow<py::object>(replacement));
    if (strings.size() != size)
      throw py::value_error(name + " takes " + std::to_string(size) + " values, not " +
                            std::to_string(strings.size()));
    for (py::handle text : strings)
      if (!PyUnicode_Check(text.ptr()))
        throw py::value_error(name + " takes str values, not " + typeName(text));
    return strings;
  }
  py::array array = py::array::ensure(replacement);
  if (!array)
    throw py::value_error(name + " takes an array of numbers, not " + typeName(replacement));
  const char dtypeKind = array.dtype().kind();
  const bool fits = kind == BoolColumn  ? dtypeKind == 'b'
                    : kind == IntColumn ? dtypeKind == 'i' || dtypeKind == 'u'
                                        : dtypeKind == 'i' || dtypeKind == 'u' || dtypeKind == 'f';
  if (!fits)
    throw py::value_error(name + " takes values of dtype " + dtypeOf(kind) + ", not " +
                          py::str(array.dtype()).cast<std::string>());
  if (array.ndim() != 1 || static_cast<std::size_t>(array.shape(0)) != size)
    throw py::value_error(name + " takes " + std::to_string(size) + " values in one dimension, not shape " +
                          py::str(py::getattr(array, "shape")).cast<std::string>());
  return py::module_::import("numpy").attr("ascontiguousarray")(array, "dtype"_a = dtypeOf(kind));
}

template <typename T> void store(const Layout::Column& column, const py::handle values, bool user)
{
  const auto array = py::reinterpret_borrow<py::array_t<T>>(values);
  const T* in = array.data();
  for (const Applied& target : column.targets)
  {
    const T value = *in++;
    if (user)
      atPlace(*target.attribute, [&] { target.attribute->setValue(value, target.chronology, true); });
    else
      static_cast<Ombrix::Model::ValueAttribute<T>&>(*target.attribute).set(value, target.chronology);
  }
}

// Stores every value of `values` at its place. Arrays replaced in place by Python are checked again.
void storeValues(Values& values, bool user)
{
  const Layout& layout = *values.layout;
  for (std::size_t kind = 0; kind < columnCount; ++kind)
    values.values[kind] = checkedColumn(kind, layout.columns[kind].targets.size(), values.values[kind]);
  store<int>(layout.columns[IntColumn], values.values[IntColumn], user);
  store<bool>(layout.columns[BoolColumn], values.values[BoolColumn], user);
  store<float>(layout.columns[FloatColumn], values.values[FloatColumn], user);
  store<double>(layout.columns[DoubleColumn], values.values[DoubleColumn], user);
  const py::list strings = py::reinterpret_borrow<py::list>(values.values[StringColumn]);
  const auto& targets = layout.columns[StringColumn].targets;
  for (std::size_t i = 0; i < targets.size(); ++i)
  {
    const std::string text = fromPython(strings[i]);
    Attribute& attribute = *targets[i].attribute;
    if (user)
      atPlace(attribute, [&] { attribute.setStringValue(text, targets[i].chronology, true); });
    else
      static_cast<Ombrix::Model::StringAttribute&>(attribute).set(text, targets[i].chronology);
  }
}

// A data-file parser bound to a model, with the reading rules of the exchange.
struct DataFile
{
  DataFile(ModelPtr model_, const std::set<Chronology>& chronologies, bool checkAccess_,
           Ombrix::ReadFailureHandling handling, int attempts)
      : model(std::move(model_)), parser(model->collection, chronologies), reader(handling, attempts),
        checkAccess(checkAccess_)
  {
    parser.setKorvanSDK(!checkAccess);
  }

  // Reads `path` into the model, recording the values stored when `record`.
  bool apply(const std::string& path, bool record)
  {
    py::gil_scoped_release released;
    std::lock_guard lock(model->mutex);
    parser.setRecordAppliedValues(record);
    return reader.read(parser, path);
  }

  std::shared_ptr<Values> read(const std::string& path)
  {
    const bool complete = apply(path, true);
    std::lock_guard lock(model->mutex);
    const std::vector<Applied>& recorded = parser.getAppliedValues();
    if (!layout || !layout->matches(recorded))
      layout = std::make_shared<const Layout>(*model, recorded);
    parser.setRecordAppliedValues(false);
    auto values = std::make_shared<Values>();
    values->model = model;
    values->layout = layout;
    values->complete = complete;
    values->values[IntColumn] = gather<int>(layout->columns[IntColumn].targets);
    values->values[BoolColumn] = gather<bool>(layout->columns[BoolColumn].targets);
    values->values[FloatColumn] = gather<float>(layout->columns[FloatColumn].targets);
    values->values[DoubleColumn] = gather<double>(layout->columns[DoubleColumn].targets);
    py::list strings;
    for (const Applied& target : layout->columns[StringColumn].targets)
      strings.append(toPython(
          static_cast<const Ombrix::Model::StringAttribute&>(*target.attribute).get(target.chronology)));
    values->values[StringColumn] = std::move(strings);
    return values;
  }

  void write(const std::string& path, const std::shared_ptr<Values>& values)
  {
    if (values)
    {
      if (values->model != model)
        throw py::value_error("the values were read into another model than this data file's");
      std::lock_guard lock(model->mutex);
      storeValues(*values, checkAccess);
    }
    bool written = false;
    {
      py::gil_scoped_release released;
      std::lock_guard lock(model->mutex);
      written = parser.saveAs(path);
    }
    if (!written)
    {
      PyErr_SetObject(PyExc_OSError, py::make_tuple(0, "cannot write the data file", path).ptr());
      throw py::error_already_set();
    }
  }

  ModelPtr model;
  Ombrix::CSVDataFileParser parser;
  Ombrix::InFileReader reader;
  bool checkAccess;
  std::shared_ptr<const Layout> layout;
};

// A fixed list of numeric attributes read into and written from the slots of a float64 array.
struct View
{
  View(ModelPtr model_, py::iterable items, Chronology chronology_, bool checkAccess_)
      : model(std::move(model_)), chronology(chronology_), checkAccess(checkAccess_)
  {
    for (py::handle item : items)
    {
      Attribute& attribute = resolve(item);
      const AttributeType kind = attribute.getAttributeType(true);
      if (kind != AttributeType::Int && kind != AttributeType::Bool && kind != AttributeType::Float &&
          kind != AttributeType::Double)
        throw py::value_error(placeOf(attribute) + " is of kind " + KorvanSDK::attributeTypeToString(kind) +
                              ": a View holds Int, Bool, Float and Double values");
      slots.push_back(&attribute);
      keys.append(item);
    }
  }

  // An Attribute, an (entity, path) pair, or a path that exactly one entity has.
  Attribute& resolve(py::handle item)
  {
    if (py::isinstance<AttributeHandle>(item))
    {
      const auto& handle = item.cast<const AttributeHandle&>();
      if (handle.model != model)
        throw py::value_error("the attribute " + placeOf(*handle.attribute) + " belongs to another model");
      return *handle.attribute;
    }
    if (py::isinstance<py::tuple>(item) && py::len(item) == 2)
    {
      const auto pair = item.cast<py::tuple>();
      return resolveAttribute(resolveEntity(*model, pair[0]), fromPython(pair[1]));
    }
    if (PyUnicode_Check(item.ptr()))
    {
      const std::string path = fromPython(item);
      const Ombrix::Model::AttributePath parsed(path);
      Attribute* found = nullptr;
      std::string holders;
      std::size_t count = 0;
      for (Entity* entity : model->collection)
      {
        if (Attribute* attribute = entity ? entity->findAttribute(parsed) : nullptr)
        {
          found = attribute;
          holders += (count++ ? ", " : "") + Ombrix::Model::toString(entity->getUniqueID());
        }
      }
      if (count == 1)
        return *found;
      throw NotFound(count == 0 ? "No entity has an attribute '" + path + "'"
                                : "Attribute path '" + path + "' is ambiguous: entities " + holders +
                                      " have it; name it by an (entity, path) pair");
    }
    throw py::type_error("a View slot is an Attribute, an (entity, path) pair or a path, not " +
                         typeName(item));
  }

  py::array_t<double> get(py::object out)
  {
    using Doubles = py::array_t<double, py::array::c_style>;
    if (!out.is_none() &&
        (!Doubles::check_(out) || py::array(out).ndim() != 1 ||
         static_cast<std::size_t>(py::array(out).shape(0)) != slots.size() || !py::array(out).writeable()))
      throw py::value_error("View.get writes into a writable, contiguous float64 array of " +
                            std::to_string(slots.size()) + " values, not " +
                            py::repr(out).cast<std::string>());
    py::array_t<double> result = out.is_none() ? py::array_t<double>(static_cast<py::ssize_t>(slots.size()))
                                               : py::reinterpret_borrow<py::array_t<double>>(out);
    auto target = result.mutable_unchecked<1>();
    std::lock_guard lock(model->mutex);
    for (std::size_t i = 0; i < slots.size(); ++i)
      atPlace(*slots[i], [&]
              { target(static_cast<py::ssize_t>(i)) = slots[i]->getDoubleValue(chronology, checkAccess); });
    return result;
  }

  void set(py::handle values,
           std::optional<py::array_t<bool, py::array::c_style | py::array::forcecast>> where)
  {
    py::array array = py::array::ensure(values);
    const char kind = array ? array.dtype().kind() : '?';
    if (!array || (kind != 'b' && kind != 'i' && kind != 'u' && kind != 'f'))
      throw py::value_error("View.set takes numbers, not " +
                            (array ? py::str(array.dtype()).cast<std::string>() : typeName(values)));
    const auto numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(array);
    if (numbers.ndim() != 1 || static_cast<std::size_t>(numbers.shape(0)) != slots.size())
      throw py::value_error("View.set takes " + std::to_string(slots.size()) +
                            " values in one dimension, not " + std::to_string(numbers.size()));
    if (where && (where->ndim() != 1 || static_cast<std::size_t>(where->shape(0)) != slots.size()))
      throw py::value_error("View.set's `where` takes " + std::to_string(slots.size()) + " flags");
    const double* in = numbers.data();
    const bool* mask = where ? where->data() : nullptr;
    std::lock_guard lock(model->mutex);
    if (checkAccess)
    {
      // All or nothing: a slot that may not be written stops the whole set before any value moves.
      for (std::size_t i = 0; i < slots.size(); ++i)
        if ((!mask || mask[i]) && !KorvanSDK::hasWriteAccess(slots[i]->getAccessType()))
          throw Ombrix::Model::AccessException(placeOf(*slots[i]) + ": User has no write access");
    }
    for (std::size_t i = 0; i < slots.size(); ++i)
      if (!mask || mask[i])
        atPlace(*slots[i], [&] { slots[i]->setDoubleValue(in[i], chronology, checkAccess); });
  }

  ModelPtr model;
  std::vector<Attribute*> slots;
  py::list keys;
  Chronology chronology;
  bool checkAccess;
};

} // namespace

void bindValues(py::module_& module)
{
  py::class_<Ombrix::CSVSimulationTime>(module, "SimulationTime",
                                        "The point of a solve a data file belongs to (C++ "
                                        "Ombrix::CSVSimulationTime).")
      .def_property_readonly("iteration", &Ombrix::CSVSimulationTime::getIteration, "-1 when not given.")
      .def_property_readonly("transient", &Ombrix::CSVSimulationTime::isTransient)
      .def_property_readonly("time", &Ombrix::CSVSimulationTime::getTime, "NaN when not given.")
      .def_property_readonly("time_step", &Ombrix::CSVSimulationTime::getTimeStep, "NaN when not given.")
      .def("__repr__",
           [](const Ombrix::CSVSimulationTime& t)
           {
             return "SimulationTime(iteration=" + std::to_string(t.getIteration()) +
                    ", time=" + py::repr(py::float_(t.getTime())).cast<std::string>() +
                    ", time_step=" + py::repr(py::float_(t.getTimeStep())).cast<std::string>() + ")";
           });

  py::class_<Column>(module, "Column",
                     "The values of one kind from a data file read, in file order, with each value's place.")
      .def("__len__", &Column::size)
      .def_property_readonly("kind", [](const Column& c) { return columnTypes[c.kind]; })
      .def_property(
          "values", [](const Column& c) { return c.owner->values[c.kind]; },
          [](Column& c, py::handle values)
          { c.owner->values[c.kind] = checkedColumn(c.kind, c.size(), values); },
          "The values (int32, bool, float32, float64; a list of str for strings). Change them in place or "
          "assign an array of the same length; DataFile.write stores them.")
      .def_property_readonly(
          "entities", [](const Column& c) { return c.layout().entities; },
          "Each value's entity, as its position in Model.entities (int64, read-only).")
      .def_property_readonly(
          "entity_ids", [](const Column& c) { return c.layout().ids; },
          "Each value's entity ID as a row (first, second) (int32, shape (n, 2), read-only).")
      .def_property_readonly(
          "paths", [](const Column& c) { return c.layout().paths; },
          "Each value's attribute path, as its position in Values.path_names (int32, read-only).")
      .def_property_readonly(
          "chronologies", [](const Column& c) { return c.layout().chronologies; },
          "Each value's chronology number (int8, read-only; see Chronology).");

  auto values = py::class_<Values, std::shared_ptr<Values>>(
                    module, "Values",
                    "The values a data file stored in the model, one Column per "
                    "kind. Read with DataFile.read; written with "
                    "DataFile.write.")
                    .def("__len__",
                         [](const Values& v)
                         {
                           std::size_t total = 0;
                           for (const auto& column : v.layout->columns)
                             total += column.targets.size();
                           return total;
                         })
                    .def_property_readonly(
                        "path_names", [](const Values& v) { return v.layout->pathNames; },
                        "The distinct attribute paths, indexed by Column.paths.")
                    .def_property_readonly(
                        "complete", [](const Values& v) { return v.complete; },
                        "False when faulty rows were passed over (ReadFailureHandling.LogAndContinue).");
  for (std::size_t kind = 0; kind < columnCount; ++kind)
    values.def_property_readonly(columnNames[kind],
                                 [kind](const std::shared_ptr<Values>& v) {
                                   return Column{v, kind};
                                 });

  py::class_<DataFile>(module, "DataFile",
                       "Reads and writes the data files (out.csv, in.csv) of a model (C++ "
                       "Ombrix::CSVDataFileParser with Ombrix::InFileReader).")
      .def(py::init<ModelPtr, const std::set<Chronology>&, bool, Ombrix::ReadFailureHandling, int>(),
           "model"_a, "chronologies"_a = std::set<Chronology>{Chronology::Current}, "check_access"_a = true,
           "handling"_a = Ombrix::ReadFailureHandling::Fail, "attempts"_a = 1,
           "`chronologies`: the value columns written and read. `check_access`: values read and written "
           "are user writes, checked for write access and logged (the solver reading in.csv); False stores "
           "them as the host's own (the client reading out.csv). `handling` and `attempts`: what a read does "
           "with a missing or faulty file.")
      .def(
          "apply", [](DataFile& f, const std::string& path) { return f.apply(path, false); }, "path"_a,
          "Reads the file into the model. Returns True when every value was stored; False when faulty "
          "rows were passed over or the file is missing under LogAndContinue. Raises the library's errors "
          "otherwise (nothing is stored then).")
      .def("read", &DataFile::read, "path"_a,
           "As apply, and returns the values stored, as numpy arrays with their places.")
      .def("write", &DataFile::write, "path"_a, "values"_a = nullptr,
           "Stores `values` (from read, arrays possibly changed) in the model, then writes the model's data "
           "file: the solution-control rows first, then every entity's values. OSError when the file cannot "
           "be written.")
      .def_property_readonly(
          "simulation_time",
          [](DataFile& f)
          {
            std::lock_guard lock(f.model->mutex);
            return f.parser.getFileSimulationTime();
          },
          "The simulation time of the last file read.")
      .def_property_readonly(
          "end_requested",
          [](DataFile& f)
          {
            std::lock_guard lock(f.model->mutex);
            return f.parser.isEndRequested();
          },
          "Whether the last file read carried \"END\" in its iteration field.")
      .def_property(
          "iteration_word", [](const DataFile& f) { return f.parser.getIterationWord(); },
          [](DataFile& f, const std::string& word)
          {
            std::lock_guard lock(f.model->mutex);
            f.parser.setIterationWord(word);
          },
          "Written instead of the iteration: \"\" (the iteration), \"NOW\" or \"END\" (ask the solver to "
          "stop).")
      .def_property(
          "use_full_entity_names", [](const DataFile& f) { return f.parser.getUseFullEntityNames(); },
          [](DataFile& f, bool use) { f.parser.setUseFullEntityNames(use); })
      .def_property(
          "skip_read_only", [](const DataFile& f) { return f.parser.getSkipReadOnly(); },
          [](DataFile& f, bool skip) { f.parser.setSkipReadOnly(skip); },
          "Rows of attributes without write access are passed over instead of refused.")
      .def_property(
          "ignore_non_existing", [](const DataFile& f) { return f.parser.getIgnoreNonExisting(); },
          [](DataFile& f, bool ignore) { f.parser.setIgnoreNonExisting(ignore); },
          "Rows of unknown entities or attributes are passed over instead of refused.")
      .def_property(
          "number_format", [](const DataFile& f) { return f.parser.getNumberFormat(); },
          [](DataFile& f, Ombrix::Model::NumberFormat format) { f.parser.setNumberFormat(format); })
      .def_property(
          "strict_numbers", [](const DataFile& f) { return f.parser.getStrictNumbers(); },
          [](DataFile& f, bool strict) { f.parser.setStrictNumbers(strict); },
          "A value whose whole text is not a number of its attribute's type (\"50OO\", \"2.5\" for an Int) "
          "is refused instead of read as the number it starts with (off by default).");

  py::class_<View>(module, "View",
                   "A fixed list of Int, Bool, Float or Double attributes mapped to the slots of a float64 "
                   "array, resolved once for a loop that reads and writes them every iteration.")
      .def(py::init<ModelPtr, py::iterable, Chronology, bool>(), "model"_a, "items"_a,
           "chronology"_a = Chronology::Current, "check_access"_a = true,
           "`items`: Attributes, (entity, path) pairs, or paths that exactly one entity has. "
           "`check_access`: get and set are user reads and writes (checked, and writes logged).")
      .def("__len__", [](const View& v) { return v.slots.size(); })
      .def_property_readonly(
          "keys", [](const View& v) { return v.keys; }, "The items, as given.")
      .def_property_readonly("model", [](const View& v) { return v.model; })
      .def_property_readonly("chronology", [](const View& v) { return v.chronology; })
      .def_property_readonly("attributes",
                             [](const View& v)
                             {
                               py::list result;
                               for (Attribute* slot : v.slots)
                                 result.append(AttributeHandle{v.model, slot});
                               return result;
                             })
      .def("get", &View::get, "out"_a = py::none(),
           "The slots' values as float64 (bools as 0 and 1), into `out` when given.")
      .def("set", &View::set, "values"_a, "where"_a = py::none(),
           "Stores one number per slot (only where `where` is True, when given), converted to each "
           "attribute's kind. With check_access, a slot without write access refuses the whole set.");
}

} // namespace OmbrixPython
