// CSVDefinitionFileParser: writes the definition file (def.csv) that describes the shared entities and
// attributes of an EntityCollection, and rebuilds an equal collection from it. One thread at a time.
#pragma once

#include "ombrix/csv/CSVFileParserBase.h"
#include "ombrix/sdk/Chronology.h"

#include <set>

namespace Ombrix::Model
{
class Attribute;
class CompositeAttribute;
class Entity;
class EntityCollection;
} // namespace Ombrix::Model

namespace Ombrix
{

class OMBRIX_API CSVDefinitionFileParser final : public CSVFileParserBase
{
public:
  using ChronologySet = std::set<KorvanSDK::Chronology>;

  // The collection is written from and, on reading, replaced; it must outlive the parser.
  explicit CSVDefinitionFileParser(Model::EntityCollection& collection);
  CSVDefinitionFileParser(const CSVDefinitionFileParser&) = default;
  CSVDefinitionFileParser(CSVDefinitionFileParser&&) = default;
  CSVDefinitionFileParser& operator=(const CSVDefinitionFileParser&) = default;
  CSVDefinitionFileParser& operator=(CSVDefinitionFileParser&&) = default;
  ~CSVDefinitionFileParser() = default;

  // The chronologies whose values are written (one "<Chronology>Value" column each, ascending).
  void setChronologies(const ChronologySet& chronologies) { m_chronologies = chronologies; }
  const ChronologySet& getChronologies() const { return m_chronologies; }

  // The older fixed column list with a single "InitValue" column; still accepted on reading.
  static Row dataHeader(bool useFullEntityNames);

protected:
  // Column header, then for every entity of the flat list the rows of its attributes (an entity placed
  // in a composite is written as an attribute row of that composite's entity).
  void writeData(RowInserter out) const override { writeDataThroughRows(out); }
  void writeRows(CSVRowSink& out) const override;
  // Rebuilds the collection from the rows. The collection is replaced only when the whole file was
  // read (in the non-fatal mode, faulty rows are logged and passed over). Entities are read with access
  // ReadWrite; with full entity names, an entity's own name is its name field without the full name of
  // the entity that holds it. Throws (collection
  // unchanged) on a bad column header and, in the fatal mode, on the first faulty row.
  std::pair<RowIterator, bool> readData(RowIterator first, RowIterator last) override;

  void writeDataHeader(CSVRowSink& out) const;
  void writeEntity(const Model::Entity& entity, CSVRowSink& out) const;
  void writeAttribute(const Model::Entity& entity, const Model::Attribute& attribute, CSVRowSink& out) const;
  // Throws std::runtime_error naming the file and the column when a required column is missing or a
  // column is unknown.
  void checkDataHeader(RowIterator headerRow) const;
  // Refuses (std::runtime_error "Cannot write the definition file: ...", naming the entity and the
  // attribute) a collection that the file cannot carry so that it reads back the same: an attribute name
  // that is empty or contains "."; a link or shortcut while Initial is not among the chronologies (their
  // content goes in the InitialValue column); a link that holds entities without owning them, or holds an
  // entity without attributes or one missing from the collection's entity list; a "|" in a relationship
  // type or a shortcut target; shortcuts that lead back to themselves; two entities with one ID; with
  // full entity names, an entity whose full name runs through a named entity placed in a composite.
  // Logs a warning for what is written but read back otherwise: root entities without attributes (not
  // written), entity access other than ReadWrite, the name and ID of entities placed in composites, the
  // flag of a link that holds no entity and does not own entities (read back as owning).
  void do_checkWritable() const override;

private:
  struct Reader;
  struct Check;
  Columns columns() const;
  void writeEntityRows(const Columns& columns, const Model::Entity& entity, CSVRowSink& out) const;
  // `path`: the path of the attribute's parent below the written entity (restored on return).
  void writeAttributeRows(const Columns& columns, const Row& identity, std::string& path,
                          const Model::Attribute& attribute, CSVRowSink& out) const;

  Model::EntityCollection* m_collection;
  ChronologySet m_chronologies;
};

} // namespace Ombrix
