// CSVFileParserBase: the frame shared by every CSV exchange file (a header row naming the format and
// version, content rows, a footer row), the column map of the content, the entity-matching rules and the
// logging and error reporting of the concrete parsers. One thread at a time per parser.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/csv/AttributeReadError.h"
#include "ombrix/log/LogLevel.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/model/ValueText.h"

#include <cstdarg>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Ombrix::Model
{
class Entity;
}

namespace Ombrix
{

class OMBRIX_API CSVFileParserBase
{
public:
  using Row = std::vector<std::string>;
  using Table = std::vector<Row>;
  using RowIterator = Table::const_iterator;
  using RowInserter = std::back_insert_iterator<Table>;

  static constexpr std::size_t csvParserVersion = 4;
  static inline const std::string fieldEntityType = "EntityType";
  static inline const std::string fieldEntityID = "EntityID";
  static inline const std::string fieldEntityName = "EntityName";
  static inline const std::string fieldEntityFullName = "FullEntityName";
  static inline const std::string fieldAttributePath = "AttributePath";
  static inline const std::string fieldAccess = "Access";
  static inline const std::string fieldUnit = "Unit";
  static inline const std::string fieldAttributeType = "Type";
  static inline const std::string fieldValueSuffix = "Value";

  // Reads and interprets the file. Returns the content reader's success flag; false (logged as a
  // Warning, nothing thrown) when the file does not exist. Frame errors ("Missing FileHeader",
  // "Unsupported file version.", "Missing FileFooter") are logged and thrown as std::runtime_error;
  // an unreadable file or a malformed quoted field throws the CSV parser's std::runtime_error;
  // content errors throw as the concrete parser reports them.
  bool parseFile(const std::string& path);
  // The same on rows already in memory.
  bool parseData(const Table& rows);
  // The complete framed table that saveAs writes.
  Table generateData() const;
  // Writes the framed table (file version 4); returns false when the file cannot be written.
  bool saveAs(const std::string& path) const;
  bool save() const { return saveAs(m_fileName); }

  const std::string& getFileName() const { return m_fileName; }
  std::size_t getFileVersion() const { return m_fileVersion; }
  bool isLegacy() const { return m_fileVersion == 0; }
  std::string& additionalHeaderTokens() { return m_additionalHeaderTokens; }
  const std::string& additionalHeaderTokens() const { return m_additionalHeaderTokens; }
  bool getUseFullEntityNames() const { return m_useFullEntityNames; }
  void setUseFullEntityNames(bool use) { m_useFullEntityNames = use; }

  // Whether content errors of a read throw (true, the default) or are only logged while the faulty
  // row is passed over. The exchange's read-failure option sets this.
  bool getFatalErrors() const { return m_fatalErrors; }
  void setFatalErrors(bool fatal) { m_fatalErrors = fatal; }
  // Text form of float and double values written: Fixed ("%f", six decimals, so 1e-7 is written
  // 0.000000) by default, or RoundTrip (shortest text that reads back bit-identical).
  Model::NumberFormat getNumberFormat() const { return m_numberFormat; }
  void setNumberFormat(Model::NumberFormat format) { m_numberFormat = format; }

protected:
  CSVFileParserBase() = default;
  CSVFileParserBase(const CSVFileParserBase&) = default;
  CSVFileParserBase(CSVFileParserBase&&) = default;
  CSVFileParserBase& operator=(const CSVFileParserBase&) = default;
  CSVFileParserBase& operator=(CSVFileParserBase&&) = default;
  ~CSVFileParserBase() = default;

  // Reads the content rows [first, last); returns where reading stopped and whether it succeeded.
  virtual std::pair<RowIterator, bool> readData(RowIterator first, RowIterator last) = 0;
  // Appends the content rows.
  virtual void writeData(RowInserter out) const = 0;
  virtual void processFileModeToken(const std::string&) {}

  void generateHeaderMap(const Row& headerRow) const;
  bool hasField(const std::string& name) const { return m_headerMap.count(name) != 0; }
  std::optional<std::size_t> fieldIndex(const std::string& name) const;
  std::size_t getNumberOfFields() const { return m_headerMap.size(); }
  const std::map<std::string, std::size_t>& headerMap() const { return m_headerMap; }
  // The row's field in the named column; a shared empty string for an unknown name or a short row.
  const std::string& getField(const std::string& name, const Row& row) const;
  // Does nothing for an unknown name or a short row.
  void setField(const std::string& name, const std::string& value, Row& row) const;

  bool isEntity(Model::Entity* const entity, const Model::EntityID& id) const;
  // Type exact; `name` equal to the own name or else to the full "->" name.
  bool isEntity(Model::Entity* const entity, const std::string& type, const std::string& name) const;
  bool isEntity(Model::Entity* const entity, const Model::EntityID& id, const std::string& type,
                const std::string& name) const;
  // With full entity names on, the last "->" piece of `name`; otherwise `name` unchanged.
  std::string convertFullEntityName(const std::string& name) const;

  // Logs inside the section "CSV File : <file name>".
  void addToLog(LogLevel level, const char* format, ...) const OMBRIX_PRINTF_FORMAT(3, 4);
  void vaddToLog(LogLevel level, std::string_view format, va_list args) const;
  // Whether a line of `level` would be written now (lets hot loops skip composing log text).
  bool isLogged(LogLevel level) const;
  // Log `message` at Error; throw std::runtime_error / AttributeReadError with it when `fatal`.
  void reportError(const std::string& message, bool fatal) const;
  void reportInvalidAttribute(const std::string& message, bool fatal) const;
  // "<file name>, row <n>: " for a row of the table being read (rows counted from 1).
  std::string rowPlace(RowIterator row) const;

private:
  static Row fileHeader(std::size_t version, const std::string& additionalToken);
  static Row fileFooter(std::size_t version);
  static std::string versionToken(std::size_t version);
  static std::optional<std::size_t> readVersionToken(const std::string& token);
  static std::optional<std::size_t> readVersionFromHeader(const Row& row);
  static bool isSupportedVersion(std::size_t version) { return version == csvParserVersion; }

  bool read(RowIterator first, RowIterator last);
  void write(RowInserter out) const;
  void writeHeader(RowInserter out) const;
  void writeFooter(RowInserter out) const;
  RowIterator checkHeader(RowIterator first, RowIterator last);
  RowIterator checkFooter(RowIterator first, RowIterator last) const;
  [[noreturn]] void frameError(const std::string& message) const;

  std::string m_fileName;
  mutable std::size_t m_fileVersion = csvParserVersion; // saveAs writes version 4
  std::string m_additionalHeaderTokens;
  bool m_useFullEntityNames = false;
  mutable std::map<std::string, std::size_t> m_headerMap;
  bool m_fatalErrors = true;
  Model::NumberFormat m_numberFormat = Model::NumberFormat::Fixed;
  RowIterator m_tableBegin{}; // first row of the table being read, for row numbers
};

} // namespace Ombrix
