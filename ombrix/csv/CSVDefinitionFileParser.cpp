#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "ombrix/csv/CSVValueText.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <unordered_map>

namespace Ombrix
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Model::Attribute;
using Model::Entity;

namespace
{

const std::string legacyInitialColumn = "InitValue";
const std::string entityTypeName = "Entity";

const std::set<Chronology> everyChronology(CSVValueText::allChronologies.begin(),
                                           CSVValueText::allChronologies.end());

bool isLinkType(AttributeType type)
{
  return type == AttributeType::Link || type == AttributeType::List || type == AttributeType::Array;
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
    // An entity placed straight into a composite (not held by a link) is written with that composite.
    if (entity && (entity->isRoot() || entity->getParentLink()))
    {
      writeEntityRows(c, *entity, out);
      writeUnlistedEntities(c, *entity, true, out);
    }
  }
}

void CSVDefinitionFileParser::writeUnlistedEntities(const Columns& c,
                                                    const Model::CompositeAttribute& composite, bool listed,
                                                    CSVRowSink& out) const
{
  // Entities held by a link that does not own them are not in the collection's flat list (nor is
  // anything below them), yet the link still holds them: they travel right after their holder.
  for (const auto& child : composite)
  {
    const AttributeType type = child->getAttributeType(false);
    if (isLinkType(type))
    {
      const auto& link = static_cast<const Model::EntityLinkAttributeBase&>(*child);
      if (listed && link.getOwnsEntities())
        continue;
      for (const Entity* held : link.getEntities(false))
      {
        writeEntityRows(c, *held, out);
        writeUnlistedEntities(c, *held, false, out);
      }
    }
    else if (type == AttributeType::Composite || type == AttributeType::Entity)
      writeUnlistedEntities(c, static_cast<const Model::CompositeAttribute&>(*child), listed, out);
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
  // The entity's own row carries its access and lets an entity without attributes travel.
  Row& own = out.newRow(c.count);
  copyIdentity(c, identity, own);
  own[c.attributeType] = entityTypeName;
  own[c.access] = KorvanSDK::accessTypeToString(entity.getAccessType());
  for (const auto& child : entity)
    writeAttributeRows(c, identity, *child, out);
}

void CSVDefinitionFileParser::writeAttribute(const Entity& entity, const Attribute& attribute,
                                             CSVRowSink& out) const
{
  const Columns c = columns();
  Row identity(c.count);
  fillIdentity(c, entity, identity);
  writeAttributeRows(c, identity, attribute, out);
}

void CSVDefinitionFileParser::writeAttributeRows(const Columns& c, const Row& identity,
                                                 const Attribute& attribute, CSVRowSink& out) const
{
  Row& row = out.newRow(c.count);
  copyIdentity(c, identity, row);
  const AttributeType type = attribute.getAttributeType(false);
  row[c.path] = attribute.getAttributePath(true).toString();
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
      writeAttributeRows(c, identity, *child, out);
  }
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
  bool infoLogged = false;

  std::string entityName(const std::string& field) const
  {
    if (!c.fullNames)
      return field;
    const auto position = field.rfind("->");
    return position == std::string::npos ? field : field.substr(position + 2);
  }

  Entity* readEntity(RowIterator row, const Model::EntityID& id, bool ownRow)
  {
    const std::string& type = (*row)[c.type];
    const std::string name = entityName((*row)[c.name]);
    auto known = byId.find(id);
    if (known != byId.end())
    {
      Entity* entity = created[known->second].get();
      if (entity->type() != type || entity->name() != name)
      {
        error(row, "Entity name and type do not match ID " + Model::toString(id));
        return nullptr;
      }
      if (ownRow)
        entity->setAccessType(KorvanSDK::accessTypeFromString((*row)[c.access], entity->getAccessType()));
      return entity;
    }
    KorvanSDK::AccessType access = KorvanSDK::AccessType::ReadWrite;
    if (ownRow)
    {
      access = KorvanSDK::accessTypeFromString((*row)[c.access], KorvanSDK::AccessType::None);
      if (KorvanSDK::accessTypeToString(access) != (*row)[c.access])
      {
        invalidAttribute(row, "Invalid entity attribute model (unknown access '" + (*row)[c.access] + "')");
        return nullptr;
      }
    }
    auto entity = std::make_unique<Entity>(type, name, id, access, nullptr);
    if (infoLogged)
      parser.addToLog(LogLevel::Informational, "%s Processing Entity", Model::toString(id).c_str());
    byId.emplace(id, created.size());
    created.push_back(std::move(entity));
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
      try
      {
        value = Model::parseText<T>(text);
      }
      catch (const std::exception& failure)
      {
        invalidAttribute(row, "Invalid value '" + text + "' in " + CSVValueText::columnName(chronology) +
                                  " of " + place + ": " + failure.what());
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
    link.setOwnsEntities(owns);
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
    const bool ownRow = (*row)[c.path].empty();
    if (ownRow && (*row)[c.attributeType] != entityTypeName)
      return invalidAttribute(row, "AttributePath is Empty");
    Entity* entity = readEntity(row, *id, ownRow);
    if (entity && ownRow)
      checkHoldsNoEntities(row, (*row)[c.id]);
    else if (entity)
      readAttribute(row, *entity);
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
