// CSVDataFileParser: writes and reads the data files (out.csv, in.csv) that carry values of an
// EntityCollection at chosen chronologies, with the solution-control rows that give the file's
// simulation time. One thread at a time.
#pragma once

#include "ombrix/csv/CSVFileParserBase.h"
#include "ombrix/csv/CSVSimulationTime.h"
#include "ombrix/sdk/Chronology.h"

#include <optional>
#include <set>
#include <vector>

namespace Ombrix::Model
{
class Attribute;
class Entity;
class EntityCollection;
} // namespace Ombrix::Model

namespace Ombrix
{

class OMBRIX_API CSVDataFileParser final : public CSVFileParserBase
{
public:
  using ChronologySet = std::set<KorvanSDK::Chronology>;

  // Written in the iteration field of the solution-control block by a client that does not track
  // iterations: the file belongs to the solve's current point.
  static inline const std::string iterationNow = "NOW";
  // The same, and the client asks the solver to stop (see isEndRequested).
  static inline const std::string iterationEnd = "END";

  // The collection must outlive the parser; `chronologies` are the value columns written and read.
  CSVDataFileParser(Model::EntityCollection& collection, const ChronologySet& chronologies);
  CSVDataFileParser(const CSVDataFileParser&) = default;
  CSVDataFileParser(CSVDataFileParser&&) = default;
  CSVDataFileParser& operator=(const CSVDataFileParser&) = default;
  CSVDataFileParser& operator=(CSVDataFileParser&&) = default;
  ~CSVDataFileParser() = default;

  const ChronologySet& getChronologies() const { return m_chronologies; }
  // Rows whose entity or attribute does not exist are passed over instead of reported.
  void setIgnoreNonExisting(bool ignore) { m_ignoreNonExisting = ignore; }
  bool getIgnoreNonExisting() const { return m_ignoreNonExisting; }
  // Rows (and shortcut targets) without write access are passed over instead of reported.
  void setSkipReadOnly(bool skip) { m_skipReadOnly = skip; }
  bool getSkipReadOnly() const { return m_skipReadOnly; }
  // false (default): the file comes from a user of the model (the solver reading in.csv): values need
  // write access and are stored as user writes, which the model records in the log. true: the file
  // comes from the host application's own side (the client reading out.csv): values are stored as
  // internal writes, whatever the access type.
  void setKorvanSDK(bool korvanSDK) { m_korvanSDK = korvanSDK; }
  bool getKorvanSDK() const { return m_korvanSDK; }

  // The simulation time carried by the last file read (none when it had no solution-control rows).
  bool hasFileSimulationTime() const { return m_fileTime.has_value(); }
  // The default value when the last file carried none.
  CSVSimulationTime getFileSimulationTime() const { return m_fileTime.value_or(CSVSimulationTime()); }
  // Whether the last file read carried "END" in its iteration field.
  bool isEndRequested() const { return m_endRequested; }

  // One value stored by a read: the value attribute written (a shortcut row gives its targets) and the
  // chronology column it came from.
  struct AppliedValue
  {
    Model::Attribute* attribute;
    KorvanSDK::Chronology chronology;
  };
  // Off by default. When on, each read keeps the list of the values it stored, in file order (rows in
  // order, each row's chronology columns ascending), so that a caller can take a large file's values in
  // bulk without looking every row up again. Either call empties the list.
  void setRecordAppliedValues(bool record)
  {
    m_recordApplied = record;
    m_applied.clear();
  }
  // The values stored by the last read while recording was on; empty after a read that threw.
  const std::vector<AppliedValue>& getAppliedValues() const { return m_applied; }

  // What the writer puts in the iteration field of the solution-control block: "" (the default) the
  // iteration itself; iterationNow or iterationEnd instead of it, for a client that does not track
  // iterations or that asks the solver to stop. Throws std::invalid_argument for any other text.
  void setIterationWord(const std::string& word);
  const std::string& getIterationWord() const { return m_iterationWord; }

  // The simulation time of the iteration, transient, time and time-step fields of the solution-control
  // block. "NOW" and "END" give the collection's current point (solution control at `chronology`);
  // "END" also sets isEndRequested. Empty when the iteration is neither a number nor one of the words,
  // or a time field is not a number.
  std::optional<CSVSimulationTime> parseFileTime(const std::string& iteration, const std::string& transient,
                                                 const std::string& time, const std::string& timeStep,
                                                 KorvanSDK::Chronology chronology);

protected:
  // Column header, the solution-control entity, then every other entity of the flat list. An attribute
  // whose name is empty or contains "." is refused while writing (std::runtime_error "Cannot write the
  // data file: ..."; saveAs then removes the file).
  void writeData(RowInserter out) const override { writeDataThroughRows(out); }
  void writeRows(CSVRowSink& out) const override;
  // Checks every row first and applies values only when all rows passed (or, in the non-fatal mode,
  // applies the rows that passed). Throws, with nothing applied, on a bad column header and, in the
  // fatal mode, on the first faulty row.
  std::pair<RowIterator, bool> readData(RowIterator first, RowIterator last) override;

  void writeDataHeader(CSVRowSink& out) const;
  void writeSolutionControl(CSVRowSink& out) const;
  void writeEntity(const Model::Entity& entity, CSVRowSink& out) const;
  void checkDataHeader(RowIterator headerRow) const;

private:
  struct Reader;
  Columns columns() const { return resolveColumns(m_chronologies); }
  void writeEntityRows(const Columns& columns, const Model::Entity& entity, CSVRowSink& out) const;
  void writeAttributeRows(const Columns& columns, const Row& identity, std::string& pathPrefix,
                          const Model::Attribute& attribute, CSVRowSink& out) const;
  const Model::Entity* solutionControlEntity() const;
  // Logs a warning when the file's value columns are not those of the parser's chronologies.
  void warnOfOtherChronologies(RowIterator headerRow) const;
  // Throws std::runtime_error (logged) for an attribute name that a path cannot carry.
  [[noreturn]] void refuseName(const std::string& id, const std::string& parentPath,
                               const std::string& name) const;

  Model::EntityCollection* m_collection;
  ChronologySet m_chronologies;
  bool m_ignoreNonExisting = false;
  bool m_skipReadOnly = false;
  bool m_korvanSDK = false;
  std::optional<CSVSimulationTime> m_fileTime;
  bool m_endRequested = false;
  std::string m_iterationWord;
  bool m_recordApplied = false;
  std::vector<AppliedValue> m_applied;
  mutable const Model::Attribute* m_wordTarget = nullptr; // the iteration attribute while it is written
};

} // namespace Ombrix
