#include "ombrix/csv/CSVDataFileParser.h"

#include "ombrix/csv/CSVValueText.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/SolutionControlConst.h"

#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace Ombrix
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Model::Attribute;
using Model::Entity;

namespace
{

const std::string nameAttribute = "Name";

} // namespace

CSVDataFileParser::CSVDataFileParser(Model::EntityCollection& collection, const ChronologySet& chronologies)
    : m_collection(&collection), m_chronologies(chronologies)
{
}

void CSVDataFileParser::writeDataHeader(CSVRowSink& out) const
{
  Row header{fieldEntityID, fieldEntityType, getUseFullEntityNames() ? fieldEntityFullName : fieldEntityName,
             fieldAttributePath};
  for (Chronology chronology : m_chronologies)
    header.push_back(CSVValueText::columnName(chronology));
  header.push_back(fieldUnit);
  generateHeaderMap(header);
  out.add(std::move(header));
}

const Entity* CSVDataFileParser::solutionControlEntity() const
{
  const Model::SolutionControlDefinition& definition = m_collection->getSolutionControlDefinition();
  const auto& collection = *m_collection;
  auto found = collection.find(definition.getSolutionControlType(), definition.getSolutionControlName());
  return found == collection.end() ? nullptr : *found;
}

void CSVDataFileParser::writeRows(CSVRowSink& out) const
{
  writeDataHeader(out);
  writeSolutionControl(out);
  const Columns c = columns();
  const Model::SolutionControlDefinition& definition = m_collection->getSolutionControlDefinition();
  for (const Entity* entity : *m_collection)
  {
    if (!entity || (entity->type() == definition.getSolutionControlType() &&
                    entity->name() == definition.getSolutionControlName()))
      continue;
    // An entity placed straight into a composite is written with that composite.
    if (entity->isRoot() || entity->getParentLink())
      writeEntityRows(c, *entity, out);
  }
}

void CSVDataFileParser::setIterationWord(const std::string& word)
{
  if (!word.empty() && word != iterationNow && word != iterationEnd)
    throw std::invalid_argument("Iteration word must be \"" + iterationNow + "\", \"" + iterationEnd +
                                "\" or empty, not \"" + word + "\"");
  m_iterationWord = word;
}

void CSVDataFileParser::writeSolutionControl(CSVRowSink& out) const
{
  const Entity* entity = solutionControlEntity();
  if (!entity)
    return;
  m_wordTarget = m_iterationWord.empty()
                     ? nullptr
                     : entity->findAttribute(m_collection->getSolutionControlDefinition().getIterationPath());
  writeEntity(*entity, out);
  m_wordTarget = nullptr;
}

void CSVDataFileParser::writeEntity(const Entity& entity, CSVRowSink& out) const
{
  writeEntityRows(columns(), entity, out);
}

void CSVDataFileParser::writeEntityRows(const Columns& c, const Entity& entity, CSVRowSink& out) const
{
  Row identity(c.count);
  fillIdentity(c, entity, identity);
  std::string prefix;
  for (const auto& child : entity)
  {
    if (child->type() != nameAttribute)
      writeAttributeRows(c, identity, prefix, *child, out);
  }
}

void CSVDataFileParser::writeAttributeRows(const Columns& c, const Row& identity, std::string& pathPrefix,
                                           const Attribute& attribute, CSVRowSink& out) const
{
  const AttributeType type = attribute.getAttributeType(false);
  const std::string& name = attribute.type();
  if (name.empty() || name.find(Model::AttributePath::pathSeparator) != std::string::npos)
  {
    if (CSVValueText::isValueType(type) || type == AttributeType::Composite || type == AttributeType::Entity)
      refuseName(identity[c.id], pathPrefix, name);
  }
  if (CSVValueText::isValueType(type))
  {
    Row& row = out.newRow(c.count);
    copyIdentity(c, identity, row);
    row[c.path].append(pathPrefix).append(attribute.type());
    for (Chronology chronology : m_chronologies)
    {
      std::string& field = row[c.value[static_cast<std::size_t>(chronology)]];
      if (&attribute == m_wordTarget)
        field = m_iterationWord;
      else
        CSVValueText::appendValue(field, attribute, chronology, getNumberFormat());
    }
    row[c.unit] = attribute.getUnit();
  }
  else if (type == AttributeType::Composite || type == AttributeType::Entity)
  {
    // Data files carry values only: composites contribute their children's rows. Links are not
    // followed (their entities come from the flat list), and shortcuts are not written, since their
    // targets' own rows carry the values (a shortcut whose targets disagree reads a neutral value).
    const std::size_t kept = pathPrefix.size();
    pathPrefix.append(attribute.type()).append(1, '.');
    for (const auto& child : static_cast<const Model::CompositeAttribute&>(attribute))
      writeAttributeRows(c, identity, pathPrefix, *child, out);
    pathPrefix.resize(kept);
  }
}

void CSVDataFileParser::refuseName(const std::string& id, const std::string& parentPath,
                                   const std::string& name) const
{
  const std::string place = parentPath.empty() ? id : id + ":" + parentPath.substr(0, parentPath.size() - 1);
  const std::string message =
      "Cannot write the data file: " +
      (name.empty() ? "an attribute of " + place + " has an empty name"
                    : "the attribute '" + name + "' of " + place + " has a '.' in its name") +
      ", which attribute paths cannot carry";
  addToLog(LogLevel::Error, "%s", message.c_str());
  throw std::runtime_error(message);
}

void CSVDataFileParser::checkDataHeader(RowIterator headerRow) const
{
  checkColumnHeader(headerRow, {}, {&fieldAttributePath});
}

std::optional<CSVSimulationTime>
CSVDataFileParser::parseFileTime(const std::string& iteration, const std::string& transient,
                                 const std::string& time, const std::string& timeStep, Chronology chronology)
{
  if (iteration == iterationNow || iteration == iterationEnd)
  {
    if (iteration == iterationEnd)
      m_endRequested = true;
    return CSVSimulationTime(Model::SolutionControlConst(*m_collection), chronology);
  }
  CSVSimulationTime result;
  try
  {
    if (!iteration.empty())
    {
      std::size_t used = 0;
      result.setIteration(Model::parseInt(iteration, &used));
      if (used != iteration.size())
        return std::nullopt;
    }
    if (!transient.empty() && Model::parseBool(transient))
      result.setTime(time.empty() ? std::numeric_limits<double>::quiet_NaN() : Model::parseDouble(time));
    if (!timeStep.empty())
      result.setTimeStep(Model::parseDouble(timeStep));
  }
  catch (const std::exception&)
  {
    return std::nullopt;
  }
  return result;
}

// One read: every row is checked and turned into value writes first (pass 1); the writes are made only
// afterwards (pass 2), so that a fatal error leaves the model untouched.
struct CSVDataFileParser::Reader : RowErrors
{
  struct Write
  {
    Attribute* target;
    const std::string* text; // string values point into the table
    union
    {
      int i;
      bool b;
      float f;
      double d;
    } value;
    AttributeType type;
    Chronology chronology;
  };

  Reader(CSVDataFileParser& owner, Columns columns) : RowErrors(owner), parser(owner), c(columns) {}

  CSVDataFileParser& parser;
  Columns c;
  bool infoLogged = false;
  std::vector<Write> writes;
  // next[i]: the position of the next entity with the same ID as entity i (built only when needed).
  std::vector<std::size_t> next;
  // The rows of one entity follow each other: the last match is kept.
  const std::string* lastId = nullptr;
  const std::string* lastType = nullptr;
  const std::string* lastName = nullptr;
  Entity* lastEntity = nullptr;
  // The solution-control row whose iteration field said NOW or END is not applied as a value.
  RowIterator skipIterationRow{};
  bool hasSkipIterationRow = false;

  void buildIndex()
  {
    const Model::EntityCollection& collection = *parser.m_collection;
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    next.assign(collection.size(), none);
    std::unordered_map<Model::EntityID, std::size_t> lastById;
    lastById.reserve(collection.size());
    for (std::size_t i = 0; i < collection.size(); ++i)
    {
      const Entity* entity = collection[i];
      if (!entity)
        continue;
      auto [it, inserted] = lastById.try_emplace(entity->getUniqueID(), i);
      if (!inserted)
      {
        next[it->second] = i;
        it->second = i;
      }
    }
  }

  // Entity of the row by ID, type and name (first match in list order); null after reporting.
  Entity* findEntity(RowIterator row, bool& skip)
  {
    const std::string& idText = (*row)[c.id];
    const std::string& type = (*row)[c.type];
    const std::string& name = (*row)[c.name];
    if (lastEntity && *lastId == idText && *lastType == type && *lastName == name)
      return lastEntity;
    const std::optional<Model::EntityID> id = entityID(row, c.id);
    if (!id)
      return nullptr;
    Model::EntityCollection& collection = *parser.m_collection;
    // The collection's own index gives the first entity with the ID; it nearly always is the row's.
    const auto first = collection.find(*id);
    if (first == collection.end())
    {
      if (parser.m_ignoreNonExisting)
      {
        skip = true;
        return nullptr;
      }
      error(row, "Unable to find entity " + idText + " '" + type + "' '" + name + "'");
      return nullptr;
    }
    Entity* entity = *first;
    if (!parser.isEntity(entity, type, name))
    {
      // IDs shared by several entities: the later ones, through an index of our own made once.
      if (next.empty())
        buildIndex();
      entity = nullptr;
      for (std::size_t i = next[static_cast<std::size_t>(first - collection.begin())];
           i != static_cast<std::size_t>(-1) && !entity; i = next[i])
        entity = parser.isEntity(collection[i], type, name) ? collection[i] : nullptr;
    }
    if (entity)
    {
      lastId = &idText;
      lastType = &type;
      lastName = &name;
      lastEntity = entity;
      return entity;
    }
    error(row, "Unable to match entity ID with name " + idText + " '" + type + "' '" + name + "'");
    return nullptr;
  }

  // The attribute at `path` below `entity`: segments matched by name through composites (first match
  // in child order, as the model's lookup); paths through links go to the model's lookup.
  static Attribute* findAttribute(Entity& entity, const std::string& path)
  {
    Attribute* current = &entity;
    std::string_view rest = path;
    while (true)
    {
      if (!current->isComposite())
        return entity.findAttribute(Model::AttributePath(path), false);
      const std::size_t dot = rest.find('.');
      const std::string_view segment = rest.substr(0, dot);
      Attribute* child = nullptr;
      for (const auto& candidate : static_cast<Model::CompositeAttribute&>(*current))
      {
        if (candidate->type() == segment)
        {
          child = candidate.get();
          break;
        }
      }
      if (!child)
        return nullptr;
      current = child;
      if (dot == std::string_view::npos)
        return current;
      rest.remove_prefix(dot + 1);
    }
  }

  // Stores the value of `text` in `write`; false when the text is not entirely the number it starts with.
  template <typename T> static bool parseInto(Write& write, const std::string& text)
  {
    bool whole = true;
    if constexpr (std::is_same_v<T, int>)
      write.value.i = CSVValueText::parseValue<int>(text, whole);
    else if constexpr (std::is_same_v<T, bool>)
      write.value.b = CSVValueText::parseValue<bool>(text, whole);
    else if constexpr (std::is_same_v<T, float>)
      write.value.f = CSVValueText::parseValue<float>(text, whole);
    else if constexpr (std::is_same_v<T, double>)
      write.value.d = CSVValueText::parseValue<double>(text, whole);
    return whole;
  }

  // "ID:path" of the row's attribute, for messages only (composed when needed: rows are many).
  std::string attributePlace(RowIterator row) const { return (*row)[c.id] + ":" + (*row)[c.path]; }

  // Queues the row's values for one value attribute; false after reporting a bad value. `place` names
  // the target in messages; null for the row's own attribute.
  bool queueValues(RowIterator row, Attribute& target, const std::string* place)
  {
    const AttributeType type = target.getAttributeType(false);
    if (!CSVValueText::isValueType(type))
    {
      invalidAttribute(row, "Attribute " + (place ? *place : attributePlace(row)) + " carries no value");
      return false;
    }
    const std::size_t queued = writes.size();
    for (Chronology chronology : CSVValueText::allChronologies)
    {
      const std::size_t column = c.value[static_cast<std::size_t>(chronology)];
      if (column == noColumn)
        continue;
      const std::string& text = (*row)[column];
      if (text.empty() && type != AttributeType::String)
        continue; // no value given at this chronology
      Write write{&target, &text, {}, type, chronology};
      bool whole = true;
      try
      {
        switch (type)
        {
        case AttributeType::Int:
          whole = parseInto<int>(write, text);
          break;
        case AttributeType::Bool:
          whole = parseInto<bool>(write, text);
          break;
        case AttributeType::Float:
          whole = parseInto<float>(write, text);
          break;
        case AttributeType::Double:
          whole = parseInto<double>(write, text);
          break;
        default:
          break;
        }
      }
      catch (const std::exception& failure)
      {
        writes.resize(queued);
        invalidAttribute(row, "Invalid value '" + text + "' in " + CSVValueText::columnName(chronology) +
                                  " of " + (place ? *place : attributePlace(row)) + ": " + failure.what());
        return false;
      }
      if (!whole && parser.getStrictNumbers())
      {
        writes.resize(queued);
        invalidAttribute(
            row, CSVValueText::notWholeNumber(text, chronology, place ? *place : attributePlace(row), type));
        return false;
      }
      writes.push_back(write);
    }
    return true;
  }

  // Shortcuts write through to their targets (and through target shortcuts to theirs).
  void queueShortcut(RowIterator row, const Model::ShortcutAttribute& shortcut, const std::string& place,
                     int depth)
  {
    const bool trusted = parser.m_korvanSDK;
    for (std::size_t i = 0; i < shortcut.getNumberOfShortcuts(); ++i)
    {
      Attribute* target = shortcut.getShortcut(i);
      if (!target)
        continue;
      const std::string targetPlace = Model::toString(target->getEntityIDAndAttributePath());
      if (infoLogged)
        parser.addToLog(LogLevel::Informational, "%s Processing Shortcut target : %s", place.c_str(),
                        targetPlace.c_str());
      if (!trusted && !KorvanSDK::hasWriteAccess(target->getAccessType()))
      {
        if (parser.m_skipReadOnly)
          continue;
        invalidAttribute(row, "No Write Access to shortcut target " + targetPlace + " of " + place);
        return;
      }
      if (target->isShortcut())
      {
        if (depth > 32)
        {
          invalidAttribute(row, "Shortcut targets itself (" + place + ")");
          return;
        }
        queueShortcut(row, static_cast<const Model::ShortcutAttribute&>(*target), targetPlace, depth + 1);
      }
      else if (!queueValues(row, *target, &targetPlace))
        return;
    }
  }

  void readRow(RowIterator row)
  {
    if (row->empty() || (hasSkipIterationRow && row == skipIterationRow))
      return;
    if (!checkSize(row, c.count))
      return;
    bool skip = false;
    Entity* entity = findEntity(row, skip);
    if (!entity)
      return;
    const std::string& path = (*row)[c.path];
    Attribute* attribute = findAttribute(*entity, path);
    if (infoLogged)
      parser.addToLog(LogLevel::Informational, "%s Processing Attribute ", attributePlace(row).c_str());
    if (!attribute)
    {
      if (!parser.m_ignoreNonExisting)
        invalidAttribute(row, "Unable to find attribute " + attributePlace(row));
      return;
    }
    if (c.unit != noColumn)
    {
      const std::string& unit = (*row)[c.unit];
      const std::string& expected = attribute->getUnit();
      if (unit.empty() && !expected.empty())
        return invalidAttribute(row, attributePlace(row) + " Empty Unit");
      if (unit != expected)
        return invalidAttribute(row, "Invalid Unit expecting " + expected + " but received " + unit +
                                         " for " + attributePlace(row));
    }
    if (!parser.m_korvanSDK && !KorvanSDK::hasWriteAccess(attribute->getAccessType()))
    {
      if (!parser.m_skipReadOnly)
        invalidAttribute(row, "No Write Access to " + attributePlace(row));
      return;
    }
    if (attribute->isShortcut())
      queueShortcut(row, static_cast<const Model::ShortcutAttribute&>(*attribute), attributePlace(row), 0);
    else
      queueValues(row, *attribute, nullptr);
  }

  void apply()
  {
    const bool user = !parser.m_korvanSDK;
    const bool record = parser.m_recordApplied;
    if (record)
      parser.m_applied.reserve(writes.size());
    for (const Write& w : writes)
    {
      try
      {
        if (user)
          applyUser(w);
        else
          applyInternal(w);
        if (record)
          parser.m_applied.push_back({w.target, w.chronology});
      }
      catch (const std::exception& failure)
      {
        ok = false;
        parser.reportError(Model::toString(w.target->getEntityIDAndAttributePath()) + ": " + failure.what(),
                           fatal);
      }
    }
  }

  static void applyInternal(const Write& w)
  {
    switch (w.type)
    {
    case AttributeType::Int:
      return static_cast<Model::ValueAttribute<int>&>(*w.target).set(w.value.i, w.chronology);
    case AttributeType::Bool:
      return static_cast<Model::ValueAttribute<bool>&>(*w.target).set(w.value.b, w.chronology);
    case AttributeType::Float:
      return static_cast<Model::ValueAttribute<float>&>(*w.target).set(w.value.f, w.chronology);
    case AttributeType::Double:
      return static_cast<Model::ValueAttribute<double>&>(*w.target).set(w.value.d, w.chronology);
    case AttributeType::String:
      return static_cast<Model::ValueAttribute<std::string>&>(*w.target).set(*w.text, w.chronology);
    default:
      return;
    }
  }

  static void applyUser(const Write& w)
  {
    switch (w.type)
    {
    case AttributeType::Int:
      return w.target->setIntValue(w.value.i, w.chronology, true);
    case AttributeType::Bool:
      return w.target->setBoolValue(w.value.b, w.chronology, true);
    case AttributeType::Float:
      return w.target->setFloatValue(w.value.f, w.chronology, true);
    case AttributeType::Double:
      return w.target->setDoubleValue(w.value.d, w.chronology, true);
    case AttributeType::String:
      return w.target->setStringValue(*w.text, w.chronology, true);
    default:
      return;
    }
  }
};

std::pair<CSVFileParserBase::RowIterator, bool> CSVDataFileParser::readData(RowIterator first,
                                                                            RowIterator last)
{
  m_fileTime.reset();
  m_endRequested = false;
  m_applied.clear();
  if (first == last)
    reportError("Missing column header", true);
  checkDataHeader(first);
  Reader reader(*this, columns());
  reader.infoLogged = isLogged(LogLevel::Informational);

  // The solution-control block: the rows of the solution-control entity, read before any value.
  addToLog(LogLevel::Informational, "Processing Simulation Iteration and Time");
  const Model::SolutionControlDefinition& definition = m_collection->getSolutionControlDefinition();
  Chronology timeChronology = Chronology::Initial;
  std::size_t timeColumn = noColumn;
  for (Chronology chronology : m_chronologies)
  {
    const std::size_t column = reader.c.value[static_cast<std::size_t>(chronology)];
    if (column != noColumn && (timeColumn == noColumn || chronology <= Chronology::Current))
    {
      timeColumn = column;
      timeChronology = chronology;
    }
  }
  const std::string iterationPath = definition.getIterationPath().toString();
  const std::string transientPath = definition.getIsTransientPath().toString();
  const std::string timePath = definition.getTimePath().toString();
  const std::string timeStepPath = definition.getTimeStepPath().toString();
  std::string iteration, transient, time, timeStep;
  RowIterator iterationRow = last;
  bool found = false;
  for (RowIterator row = std::next(first); row != last; ++row)
  {
    if (row->size() < reader.c.count || (*row)[reader.c.type] != definition.getSolutionControlType() ||
        convertFullEntityName((*row)[reader.c.name]) != definition.getSolutionControlName())
      continue;
    found = true;
    if (timeColumn == noColumn)
      continue;
    const std::string& path = (*row)[reader.c.path];
    const std::string& text = (*row)[timeColumn];
    if (path == iterationPath)
    {
      iteration = text;
      iterationRow = row;
    }
    else if (path == transientPath)
      transient = text;
    else if (path == timePath)
      time = text;
    else if (path == timeStepPath)
      timeStep = text;
  }
  if (found)
  {
    m_fileTime = parseFileTime(iteration, transient, time, timeStep, timeChronology);
    if (!m_fileTime)
    {
      reader.ok = false;
      reportError(rowPlace(iterationRow == last ? first : iterationRow) +
                      "Invalid simulation time (iteration '" + iteration + "', time '" + time +
                      "', time step '" + timeStep + "')",
                  getFatalErrors());
    }
    if (iterationRow != last && (iteration == iterationNow || iteration == iterationEnd))
    {
      reader.skipIterationRow = iterationRow;
      reader.hasSkipIterationRow = true;
    }
  }
  else if (m_collection->hasSolutionControl())
  {
    reader.ok = false;
    reportError(rowPlace(first) + "Missing Solution Control", getFatalErrors());
  }

  // One write per value column and row at most: no regrowth of a large queue.
  std::size_t valueColumns = 0;
  for (std::size_t column : reader.c.value)
    valueColumns += column != noColumn ? 1 : 0;
  reader.writes.reserve(static_cast<std::size_t>(last - first) * valueColumns);
  for (RowIterator row = std::next(first); row != last; ++row)
    reader.readRow(row);
  reader.apply();
  return {last, reader.ok};
}

} // namespace Ombrix
