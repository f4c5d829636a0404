#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "ombrix/csv/CSVValueText.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

namespace Ombrix
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Model::Attribute;
using Model::Entity;

namespace
{

const std::string legacyInitialColumn = "InitValue";

const std::set<Chronology> everyChronology(CSVValueText::allChronologies.begin(),
                                           CSVValueText::allChronologies.end());

bool isLinkType(AttributeType type)
{
  return type == AttributeType::Link || type == AttributeType::List || type == AttributeType::Array;
}

// Held by neither the collection nor a link: the entity is an attribute of a composite.
bool isPlacedInComposite(const Entity& entity)
{
  return entity.getParent() && !entity.getParentLink();
}

} // namespace

CSVDefinitionFileParser::CSVDefinitionFileParser(Model::EntityCollection& collection)
    : m_collection(&collection)
{
}

CSVFileParserBase::Row CSVDefinitionFileParser::dataHeader(bool useFullEntityNames)
{
  return Row{
      fieldEntityID,       fieldEntityType,    useFullEntityNames ? fieldEntityFullName : fieldEntityName,
      fieldAttributePath,  fieldAttributeType, fieldAccess,
      legacyInitialColumn, fieldUnit};
}

CSVFileParserBase::Columns CSVDefinitionFileParser::columns() const
{
  Columns c = resolveColumns(everyChronology);
  if (c.value[0] == noColumn)
    c.value[0] = fieldIndex(legacyInitialColumn).value_or(noColumn);
  return c;
}

void CSVDefinitionFileParser::writeDataHeader(CSVRowSink& out) const
{
  Row header{
      fieldEntityID, fieldEntityType,    getUseFullEntityNames() ? fieldEntityFullName : fieldEntityName,
      fieldAccess,   fieldAttributePath, fieldAttributeType};
  for (Chronology chronology : m_chronologies)
    header.push_back(CSVValueText::columnName(chronology));
  header.push_back(fieldUnit);
  generateHeaderMap(header);
  out.add(std::move(header));
}

void CSVDefinitionFileParser::writeRows(CSVRowSink& out) const
{
  writeDataHeader(out);
  const Columns c = columns();
  for (const Entity* entity : *m_collection)
  {
    // An entity placed straight into a composite is written with that composite, as an attribute row.
    if (entity && !isPlacedInComposite(*entity))
      writeEntityRows(c, *entity, out);
  }
}

void CSVDefinitionFileParser::writeEntity(const Entity& entity, CSVRowSink& out) const
{
  writeEntityRows(columns(), entity, out);
}

void CSVDefinitionFileParser::writeEntityRows(const Columns& c, const Entity& entity, CSVRowSink& out) const
{
  Row identity(c.count);
  fillIdentity(c, entity, identity);
  std::string path;
  for (const auto& child : entity)
    writeAttributeRows(c, identity, path, *child, out);
}

void CSVDefinitionFileParser::writeAttribute(const Entity& entity, const Attribute& attribute,
                                             CSVRowSink& out) const
{
  const Columns c = columns();
  Row identity(c.count);
  fillIdentity(c, entity, identity);
  std::string path;
  for (const Attribute* parent = attribute.getParent(); parent && parent != &entity;
       parent = parent->getParent())
    path.insert(0, path.empty() ? parent->type() : parent->type() + '.');
  writeAttributeRows(c, identity, path, attribute, out);
}

void CSVDefinitionFileParser::writeAttributeRows(const Columns& c, const Row& identity, std::string& path,
                                                 const Attribute& attribute, CSVRowSink& out) const
{
  // The path is built from the names below the written entity: an entity placed in a composite is
  // part of the path, although its own relative path starts afresh.
  const std::size_t kept = path.size();
  if (!path.empty())
    path += '.';
  path += attribute.type();
  Row& row = out.newRow(c.count);
  copyIdentity(c, identity, row);
  const AttributeType type = attribute.getAttributeType(false);
  row[c.path] = path;
  row[c.attributeType] = KorvanSDK::attributeTypeToString(type);
  row[c.access] = KorvanSDK::accessTypeToString(attribute.getAccessType());
  const std::size_t initial = c.value[0];
  if (CSVValueText::isValueType(type))
  {
    for (Chronology chronology : m_chronologies)
      CSVValueText::appendValue(row[c.value[static_cast<std::size_t>(chronology)]], attribute, chronology,
                                getNumberFormat());
    if (c.unit != noColumn)
      row[c.unit] = attribute.getUnit();
  }
  else if (type == AttributeType::Shortcut && initial != noColumn)
  {
    const auto& shortcut = static_cast<const Model::ShortcutAttribute&>(attribute);
    std::string& text = row[initial];
    for (std::size_t i = 0; i < shortcut.getNumberOfShortcuts(); ++i)
    {
      if (!shortcut.getShortcut(i))
        continue;
      if (!text.empty())
        text += '|';
      text += shortcut.shortcuts()[i].toString();
    }
  }
  else if (isLinkType(type) && initial != noColumn)
  {
    const auto& link = static_cast<const Model::EntityLinkAttributeBase&>(attribute);
    std::string& text = row[initial];
    text = link.getRelationshipType();
    const char* word = link.getOwnsEntities() ? "|Owns:" : "|Links:";
    for (const Entity* held : link.getEntities(false))
      text.append(word).append(Model::toString(held->getUniqueID()));
  }
  if (type == AttributeType::Composite || type == AttributeType::Entity)
  {
    for (const auto& child : static_cast<const Model::CompositeAttribute&>(attribute))
      writeAttributeRows(c, identity, path, *child, out);
  }
  path.resize(kept);
}

// What the file cannot carry, found before anything is written: refusals are thrown at once, losses
// are counted and logged as one warning per kind.
struct CSVDefinitionFileParser::Check
{
  // How often one kind of loss occurs, and where first (composed once: checks run over every attribute).
  struct Loss
  {
    std::size_t count = 0;
    std::string first;
    template <typename Place> void add(Place&& place)
    {
      if (count++ == 0)
        first = place();
    }
  };

  explicit Check(const CSVDefinitionFileParser& owner)
      : parser(owner), initial(owner.m_chronologies.count(Chronology::Initial) != 0),
        fullNames(owner.getUseFullEntityNames())
  {
  }

  const CSVDefinitionFileParser& parser;
  bool initial;
  bool fullNames;
  std::unordered_set<const Entity*> listed;
  std::unordered_map<Model::EntityID, const Entity*> ids;
  std::vector<const Model::ShortcutAttribute*> shortcuts;
  std::unordered_map<const Model::ShortcutAttribute*, std::string> shortcutPlaces;
  Loss emptyRoots, entityAccess, placedEntities, emptyLinks;

  [[noreturn]] void refuse(const std::string& why) const
  {
    const std::string message = "Cannot write the definition file: " + why;
    parser.addToLog(LogLevel::Error, "%s", message.c_str());
    throw std::runtime_error(message);
  }

  static std::string describe(const Entity& entity)
  {
    return Model::toString(entity.getUniqueID()) + " '" + entity.name() + "'";
  }

  void run()
  {
    const Model::EntityCollection& collection = *parser.m_collection;
    for (const Entity* entity : collection)
    {
      if (entity && !isPlacedInComposite(*entity))
        listed.insert(entity);
    }
    for (const Entity* entity : collection)
    {
      if (entity && !isPlacedInComposite(*entity))
        checkEntity(*entity);
    }
    checkShortcutCycles();
    warn(emptyRoots, " root entities without attributes are not written (the file carries an entity "
                     "through the rows of its attributes only): first ");
    warn(entityAccess, " entities are read back with access ReadWrite (the file carries no access of an "
                       "entity): first ");
    warn(emptyLinks, " links without entities that do not own entities are read back as owning them (the "
                     "file carries the flag only with held entities): first ");
    warn(placedEntities, " entities placed in a composite are read back without their name and with a new "
                         "ID (the file carries only their path and access): first ");
  }

  void warn(const Loss& loss, const char* what) const
  {
    if (loss.count != 0)
      parser.addToLog(LogLevel::Warning, "%s", (std::to_string(loss.count) + what + loss.first).c_str());
  }

  void checkEntity(const Entity& entity)
  {
    const auto [known, added] = ids.emplace(entity.getUniqueID(), &entity);
    if (!added)
      refuse("entities " + describe(*known->second) + " and '" + entity.name() + "' share the ID " +
             Model::toString(entity.getUniqueID()));
    if (entity.begin() == entity.end() && !entity.getParentLink())
      emptyRoots.add([&] { return describe(entity); });
    if (entity.getAccessType() != KorvanSDK::AccessType::ReadWrite)
      entityAccess.add(
          [&]
          { return describe(entity) + " (" + KorvanSDK::accessTypeToString(entity.getAccessType()) + ")"; });
    if (fullNames && entity.getParentLink())
    {
      for (const Entity* up = entity.getParentEntity(); up; up = up->getParentEntity())
      {
        if (isPlacedInComposite(*up) && !up->name().empty())
          refuse("the full name of " + describe(entity) + " runs through the entity '" + up->name() +
                 "' placed in a composite, whose name the file cannot carry");
      }
    }
    std::string path;
    checkChildren(entity, Model::toString(entity.getUniqueID()), path);
  }

  void checkChildren(const Model::CompositeAttribute& composite, const std::string& id, std::string& path)
  {
    for (const auto& child : composite)
    {
      const std::string& name = child->type();
      if (name.empty())
        refuse("an attribute of " + place(id, path) +
               " has an empty name, which attribute paths cannot carry");
      if (name.find(Model::AttributePath::pathSeparator) != std::string::npos)
        refuse("the attribute '" + name + "' of " + place(id, path) +
               " has a '.' in its name, the separator of attribute paths");
      const std::size_t kept = path.size();
      path += path.empty() ? name : "." + name;
      checkAttribute(*child, id, path);
      path.resize(kept);
    }
  }

  static std::string place(const std::string& id, const std::string& path)
  {
    return path.empty() ? id : id + ":" + path;
  }

  void checkAttribute(const Attribute& attribute, const std::string& id, std::string& path)
  {
    const AttributeType type = attribute.getAttributeType(false);
    if ((isLinkType(type) || type == AttributeType::Shortcut) && !initial)
      refuse(place(id, path) + " is a " + KorvanSDK::attributeTypeToString(type) +
             ", whose content goes in the InitialValue column: add Initial to the chronologies");
    if (type == AttributeType::Composite || type == AttributeType::Entity)
    {
      if (type == AttributeType::Entity)
        placedEntities.add([&] { return place(id, path); });
      checkChildren(static_cast<const Model::CompositeAttribute&>(attribute), id, path);
    }
    else if (isLinkType(type))
    {
      const auto& link = static_cast<const Model::EntityLinkAttributeBase&>(attribute);
      if (link.getRelationshipType().find('|') != std::string::npos)
        refuse("the relationship type '" + link.getRelationshipType() + "' of " + place(id, path) +
               " contains '|', the separator of the entities listed after it");
      if (!link.getOwnsEntities() && !link.hasEntities(false))
        emptyLinks.add([&] { return place(id, path); });
      for (const Entity* held : link.getEntities(false))
      {
        if (!link.getOwnsEntities())
          refuse(place(id, path) + " holds " + describe(*held) +
                 " without owning it; the file carries only entities that their link owns");
        if (held->begin() == held->end())
          refuse(place(id, path) + " holds " + describe(*held) +
                 ", which has no attributes; the file carries an entity through the rows of its attributes "
                 "only");
        if (listed.count(held) == 0)
          refuse(place(id, path) + " holds " + describe(*held) +
                 ", which is not in the collection's entity list (rebuildChildEntitiesList)");
      }
    }
    else if (type == AttributeType::Shortcut)
    {
      const auto& shortcut = static_cast<const Model::ShortcutAttribute&>(attribute);
      for (std::size_t i = 0; i < shortcut.getNumberOfShortcuts(); ++i)
      {
        if (!shortcut.getShortcut(i))
          continue;
        const std::string target = shortcut.shortcuts()[i].toString();
        if (target.find('|') != std::string::npos)
          refuse("the target '" + target + "' of the shortcut " + place(id, path) +
                 " contains '|', the separator of shortcut targets");
      }
      shortcuts.push_back(&shortcut);
      shortcutPlaces.emplace(&shortcut, place(id, path));
    }
  }

  // The reader refuses shortcuts that lead back to themselves through their resolvable targets.
  void checkShortcutCycles() const
  {
    enum class State
    {
      Open,
      Done
    };
    std::unordered_map<const Model::ShortcutAttribute*, State> state;
    for (const Model::ShortcutAttribute* start : shortcuts)
    {
      if (state.count(start))
        continue;
      // Depth-first over the shortcut targets, with an explicit stack of (shortcut, next target index).
      std::vector<std::pair<const Model::ShortcutAttribute*, std::size_t>> stack{{start, 0}};
      state[start] = State::Open;
      while (!stack.empty())
      {
        auto& [shortcut, next] = stack.back();
        if (next == shortcut->getNumberOfShortcuts())
        {
          state[shortcut] = State::Done;
          stack.pop_back();
          continue;
        }
        const Attribute* target = shortcut->getShortcut(next++);
        if (!target || !target->isShortcut())
          continue;
        const auto* targetShortcut = static_cast<const Model::ShortcutAttribute*>(target);
        auto found = state.find(targetShortcut);
        if (found == state.end())
        {
          state[targetShortcut] = State::Open;
          stack.emplace_back(targetShortcut, 0);
        }
        else if (found->second == State::Open)
        {
          auto place = shortcutPlaces.find(targetShortcut);
          refuse("the shortcut " +
                 (place != shortcutPlaces.end() ? place->second
                                                : targetShortcut->getAttributePath(true).toString()) +
                 " leads back to itself through its targets");
        }
      }
    }
  }
};

void CSVDefinitionFileParser::do_checkWritable() const
{
  Check(*this).run();
}

void CSVDefinitionFileParser::checkDataHeader(RowIterator headerRow) const
{
  checkColumnHeader(headerRow, {&fieldAccess, &fieldAttributeType, &legacyInitialColumn},
                    {&fieldAccess, &fieldAttributePath, &fieldAttributeType});
}

// The state of one read: entities are built free-standing, attached to the links that list them once
// every row is read, and the rest become roots in file order. The collection changes only at the end.
struct CSVDefinitionFileParser::Reader : RowErrors
{
  struct LinkEntry
  {
    Model::EntityLinkAttributeBase* link;
    std::vector<Model::EntityID> held;
    RowIterator row;
    std::string place; // "ID:path"
  };

  Reader(CSVDefinitionFileParser& owner, Columns columns) : RowErrors(owner), parser(owner), c(columns) {}

  CSVDefinitionFileParser& parser;
  Columns c;
  std::vector<std::unique_ptr<Entity>> created; // creation order; empty once attached
  std::unordered_map<Model::EntityID, std::size_t> byId;
  std::vector<LinkEntry> links;
  std::vector<std::pair<Model::ShortcutAttribute*, RowIterator>> shortcuts;
  std::vector<RowIterator> firstRows; // of each created entity
  bool infoLogged = false;

  // The entity of the row, created at its first row. With full names the name field is kept as the
  // entity's name until finish() knows which entity holds it and takes that one's full name off.
  Entity* readEntity(RowIterator row, const Model::EntityID& id)
  {
    const std::string& type = (*row)[c.type];
    const std::string& name = (*row)[c.name];
    auto known = byId.find(id);
    if (known != byId.end())
    {
      Entity* entity = created[known->second].get();
      if (entity->type() != type || entity->name() != name)
      {
        error(row, "Entity name and type do not match ID " + Model::toString(id));
        return nullptr;
      }
      return entity;
    }
    // The file carries no access of an entity.
    auto entity = std::make_unique<Entity>(type, name, id, KorvanSDK::AccessType::ReadWrite, nullptr);
    if (infoLogged)
      parser.addToLog(LogLevel::Informational, "%s Processing Entity", Model::toString(id).c_str());
    byId.emplace(id, created.size());
    created.push_back(std::move(entity));
    firstRows.push_back(row);
    return created.back().get();
  }

  template <typename T>
  void readValues(RowIterator row, Model::ValueAttribute<T>& attribute, const std::string& place)
  {
    for (Chronology chronology : CSVValueText::allChronologies)
    {
      const std::size_t column = c.value[static_cast<std::size_t>(chronology)];
      if (column == noColumn)
        continue;
      const std::string& text = (*row)[column];
      if constexpr (!std::is_same_v<T, std::string>)
      {
        if (text.empty())
          continue; // no value written at this chronology
      }
      T value;
      bool whole = true;
      try
      {
        value = CSVValueText::parseValue<T>(text, whole);
      }
      catch (const std::exception& failure)
      {
        invalidAttribute(row, "Invalid value '" + text + "' in " + CSVValueText::columnName(chronology) +
                                  " of " + place + ": " + failure.what());
        return;
      }
      if (!whole && parser.getStrictNumbers())
      {
        invalidAttribute(
            row, CSVValueText::notWholeNumber(text, chronology, place, attribute.getAttributeType(false)));
        return;
      }
      // Later chronologies are stored only where they differ from what the attribute already reads
      // there, so a value written from simple storage is read back as simple storage.
      if (chronology != Chronology::Initial &&
          attribute.container().getValueType() == Model::ValueType::Simple &&
          CSVValueText::sameValue(attribute.get(chronology), value))
        continue;
      if (chronology != Chronology::Initial &&
          attribute.container().getValueType() != Model::ValueType::Simple)
      {
        bool same = false;
        try
        {
          same = CSVValueText::sameValue(attribute.get(chronology), value);
        }
        catch (const std::out_of_range&)
        {
        }
        if (same)
          continue;
      }
      attribute.set(value, chronology);
    }
  }

  void readLink(RowIterator row, Model::EntityLinkAttributeBase& link, const std::string& place)
  {
    const std::string& text = (*row)[c.value[0]];
    std::size_t start = text.find('|');
    link.setRelationShipType(text.substr(0, start));
    LinkEntry entry{&link, {}, row, place};
    bool owns = false;
    while (start != std::string::npos)
    {
      const std::size_t end = text.find('|', start + 1);
      const std::string item =
          text.substr(start + 1, end == std::string::npos ? std::string::npos : end - start - 1);
      start = end;
      const std::size_t colon = item.find(':');
      const std::string word = item.substr(0, colon);
      if (colon == std::string::npos || (word != "Owns" && word != "Links"))
      {
        invalidAttribute(row, "Unsupported link type " + word);
        return;
      }
      owns = owns || word == "Owns";
      try
      {
        entry.held.push_back(Model::EntityID::fromString(item.substr(colon + 1)));
      }
      catch (const std::exception& failure)
      {
        invalidAttribute(row, "Invalid entity ID '" + item.substr(colon + 1) + "' held by " + place + ": " +
                                  failure.what());
        return;
      }
    }
    // The flag travels only in the words before held entities; the library's links own what they hold.
    link.setOwnsEntities(owns || entry.held.empty());
    if (link.isLink() && entry.held.size() > 1)
    {
      invalidAttribute(row, "Unsupported link type Link holding " + std::to_string(entry.held.size()) +
                                " entities in " + place);
      return;
    }
    links.push_back(std::move(entry));
  }

  void readAttribute(RowIterator row, Entity& entity)
  {
    const std::string& pathText = (*row)[c.path];
    const std::string place = Model::toString(entity.getUniqueID()) + ":" + pathText;
    if (infoLogged)
      parser.addToLog(LogLevel::Informational, "%s Processing Attribute", place.c_str());
    const Model::AttributePath path(pathText);
    const AttributeType type = KorvanSDK::attributeTypeFromString((*row)[c.attributeType]);
    if (type == AttributeType::Unknown)
      return invalidAttribute(row, "Invalid entity attribute model (unknown type '" +
                                       (*row)[c.attributeType] + "' of " + place + ")");
    const KorvanSDK::AccessType access = KorvanSDK::accessTypeFromString((*row)[c.access]);
    if (KorvanSDK::accessTypeToString(access) != (*row)[c.access])
      return invalidAttribute(row, "Invalid entity attribute model (unknown access '" + (*row)[c.access] +
                                       "' of " + place + ")");
    Attribute* parent = entity.findAttribute(path.subPath(0, path.size() - 1), false);
    if (!parent || !parent->isComposite())
      return invalidAttribute(row, "Invalid entity attribute model (no composite above " + place + ")");
    Attribute* attribute =
        static_cast<Model::CompositeAttribute*>(parent)->createAttribute(type, path.back(), access);
    if (!attribute)
      return invalidAttribute(row, "Invalid entity attribute model (" + place + " defined twice)");
    if (CSVValueText::isValueType(type) && c.unit != noColumn)
      attribute->setUnit((*row)[c.unit]);
    switch (type)
    {
    case AttributeType::Int:
      return readValues(row, static_cast<Model::ValueAttribute<int>&>(*attribute), place);
    case AttributeType::Bool:
      return readValues(row, static_cast<Model::ValueAttribute<bool>&>(*attribute), place);
    case AttributeType::String:
      return readValues(row, static_cast<Model::ValueAttribute<std::string>&>(*attribute), place);
    case AttributeType::Float:
      return readValues(row, static_cast<Model::ValueAttribute<float>&>(*attribute), place);
    case AttributeType::Double:
      return readValues(row, static_cast<Model::ValueAttribute<double>&>(*attribute), place);
    case AttributeType::Shortcut:
    {
      if (c.value[0] == noColumn)
        return invalidAttribute(row, "Shortcut " + place + " needs the InitialValue column for its targets");
      auto& shortcut = static_cast<Model::ShortcutAttribute&>(*attribute);
      const std::string& text = (*row)[c.value[0]];
      std::size_t start = 0;
      while (start <= text.size() && !text.empty())
      {
        std::size_t end = text.find('|', start);
        if (end == std::string::npos)
          end = text.size();
        shortcut.addShortcut(Model::AttributePath(text.substr(start, end - start)));
        start = end + 1;
      }
      shortcuts.emplace_back(&shortcut, row);
      return;
    }
    case AttributeType::Link:
    case AttributeType::List:
    case AttributeType::Array:
      if (c.value[0] == noColumn)
        return invalidAttribute(row, "Link " + place + " needs the InitialValue column for its entities");
      return readLink(row, static_cast<Model::EntityLinkAttributeBase&>(*attribute), place);
    case AttributeType::Composite:
    case AttributeType::Entity:
      return checkHoldsNoEntities(row, place);
    default:
      return;
    }
  }

  // Only links, lists and arrays hold entities. A composite or entity row whose value lists held
  // entities ("R|Owns:3-17") reports an owner that cannot hold them; passing over the list would leave
  // those entities as roots without a word.
  void checkHoldsNoEntities(RowIterator row, const std::string& place)
  {
    if (c.value[0] == noColumn)
      return;
    const std::string& text = (*row)[c.value[0]];
    if (text.find("|Owns:") != std::string::npos || text.find("|Links:") != std::string::npos)
      invalidAttribute(row, "Reported owner not a link, list or array (" + place + " is of type " +
                                (*row)[c.attributeType] + ")");
  }

  void readRow(RowIterator row)
  {
    if (row->empty())
      return;
    if (!checkSize(row, c.count))
      return;
    const std::optional<Model::EntityID> id = entityID(row, c.id);
    if (!id)
      return;
    if ((*row)[c.path].empty())
      return invalidAttribute(row, "AttributePath is Empty");
    if (Entity* entity = readEntity(row, *id))
      readAttribute(row, *entity);
  }

  // With full names, each entity below `holder` (held through links, at any depth) has its holder's
  // full name and "->" taken off its name field, holders first: the own name may itself contain "->".
  void takeHolderNames(Model::CompositeAttribute& holder,
                       const std::unordered_map<const Attribute*, std::size_t>& topIndex)
  {
    for (const auto& child : holder)
    {
      const AttributeType type = child->getAttributeType(false);
      if (type == AttributeType::Composite || type == AttributeType::Entity)
      {
        takeHolderNames(static_cast<Model::CompositeAttribute&>(*child), topIndex);
        continue;
      }
      if (!isLinkType(type))
        continue;
      for (Entity* held : static_cast<Model::EntityLinkAttributeBase&>(*child).getEntities(false))
      {
        const std::string prefix = held->getParentEntity()->getName(true) + "->";
        const std::string field = held->name();
        if (field.compare(0, prefix.size(), prefix) == 0)
          held->setName(field.substr(prefix.size()));
        else
        {
          error(firstRows[topIndex.at(held)], "Full entity name '" + field + "' of " +
                                                  Model::toString(held->getUniqueID()) +
                                                  " does not begin with the full name of its holder, '" +
                                                  prefix.substr(0, prefix.size() - 2) + "'");
          const auto position = field.rfind("->");
          held->setName(position == std::string::npos ? field : field.substr(position + 2));
        }
        takeHolderNames(*held, topIndex);
      }
    }
  }

  void finish()
  {
    // holder[i]: the created entity whose link holds entity i; checked so that no entity ends up
    // holding itself through a chain of links.
    std::unordered_map<const Attribute*, std::size_t> topIndex;
    for (std::size_t i = 0; i < created.size(); ++i)
      topIndex.emplace(created[i].get(), i);
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> holder(created.size(), none);
    std::vector<bool> attached(created.size(), false);
    std::vector<std::pair<Model::EntityLinkAttributeBase*, std::size_t>> accepted;
    for (const LinkEntry& entry : links)
    {
      const Attribute* top = &entry.link->getLinkedAttribute();
      while (top->getParent())
        top = top->getParent();
      const std::size_t owner = topIndex.at(top);
      for (const Model::EntityID& id : entry.held)
      {
        auto known = byId.find(id);
        if (known == byId.end())
        {
          error(entry.row, "Unable to find entity " + Model::toString(id) + " held by " + entry.place);
          continue;
        }
        const std::size_t i = known->second;
        if (attached[i])
        {
          error(entry.row, "Entity " + Model::toString(id) + " held by " + entry.place + " is held twice");
          continue;
        }
        std::size_t up = owner;
        while (up != none && up != i)
          up = holder[up];
        if (up == i)
        {
          error(entry.row, "Entity " + Model::toString(id) + " would hold itself through " + entry.place);
          continue;
        }
        attached[i] = true;
        holder[i] = owner;
        accepted.emplace_back(entry.link, i);
      }
    }
    // Attach only after every check, so that a refused entry never leaves a half-moved entity.
    for (auto& [link, i] : accepted)
      link->addEntity(std::move(created[i]));
    if (c.fullNames)
    {
      for (std::size_t i = 0; i < created.size(); ++i)
      {
        if (created[i])
          takeHolderNames(*created[i], topIndex);
      }
    }
    std::vector<std::unique_ptr<Entity>> roots;
    for (auto& entity : created)
    {
      if (entity)
        roots.push_back(std::move(entity));
    }
    for (auto& [shortcut, row] : shortcuts)
    {
      try
      {
        shortcut->cleanupNonExistingShortcuts();
      }
      catch (const std::exception& failure)
      {
        error(row, std::string(failure.what()) + " (" + shortcut->getAttributePath(true).toString() + ")");
        shortcut->shortcuts().clear();
      }
    }
    Model::EntityCollection& collection = *parser.m_collection;
    const Model::SolutionControlDefinition definition = collection.getSolutionControlDefinition();
    collection.clear();
    collection.setSolutionControlDefinition(definition);
    for (auto& root : roots)
      collection.addRootEntity(std::move(root));
  }
};

std::pair<CSVFileParserBase::RowIterator, bool> CSVDefinitionFileParser::readData(RowIterator first,
                                                                                  RowIterator last)
{
  if (first == last)
  {
    reportError("Missing column header", true);
  }
  checkDataHeader(first);
  Reader reader(*this, columns());
  reader.infoLogged = isLogged(LogLevel::Informational);
  for (RowIterator row = std::next(first); row != last; ++row)
    reader.readRow(row);
  reader.finish();
  return {last, reader.ok};
}

} // namespace Ombrix
