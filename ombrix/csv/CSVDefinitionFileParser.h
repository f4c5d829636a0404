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

class OMBRIX_API CSVDefinitionFileParser : public CSVFileParserBase
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
  // Column header, then for every entity of the flat list its own row and its attributes' rows.
  void writeData(RowInserter out) const override { writeDataThroughRows(out); }
  void writeRows(CSVRowSink& out) const override;
  // Rebuilds the collection from the rows. The collection is replaced only when the whole file was
  // read (in the non-fatal mode, faulty rows are logged and passed over). Throws (collection
  // unchanged) on a bad column header and, in the fatal mode, on the first faulty row.
  std::pair<RowIterator, bool> readData(RowIterator first, RowIterator last) override;

  void writeDataHeader(CSVRowSink& out) const;
  void writeEntity(const Model::Entity& entity, CSVRowSink& out) const;
  void writeAttribute(const Model::Entity& entity, const Model::Attribute& attribute, CSVRowSink& out) const;
  // Throws std::runtime_error naming the file and the column when a required column is missing or a
  // column is unknown.
  void checkDataHeader(RowIterator headerRow) const;

private:
  struct Reader;
  Columns columns() const;
  void writeEntityRows(const Columns& columns, const Model::Entity& entity, CSVRowSink& out) const;
  void writeAttributeRows(const Columns& columns, const Row& identity, const Model::Attribute& attribute,
                          CSVRowSink& out) const;
  void writeUnlistedEntities(const Columns& columns, const Model::CompositeAttribute& composite, bool listed,
                             CSVRowSink& out) const;

  Model::EntityCollection* m_collection;
  ChronologySet m_chronologies;
};

} // namespace Ombrix
