// CSVFileParserBase: the frame shared by every CSV exchange file (a header row naming the format and
// version, content rows, a footer row), the column map of the content, the entity-matching rules and the
// logging and error reporting of the concrete parsers. One thread at a time per parser.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/csv/AttributeReadError.h"
#include "ombrix/csv/CSVRowSink.h"
#include "ombrix/log/LogLevel.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/sdk/Chronology.h"

#include <array>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Ombrix::Model
{
class Entity;
}

namespace FileSystem
{
class CSVParser;
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
  // an unreadable file, a malformed quoted field or a NUL byte (a file zero-filled by a power loss)
  // throws the CSV parser's std::runtime_error;
  // content errors throw as the concrete parser reports them.
  bool parseFile(const std::string& path);
  // The same on rows already in memory.
  bool parseData(const Table& rows);
  // Throws std::runtime_error (logged) when the collection holds something that the file cannot carry,
  // so that it would not read back the same; see the concrete parser. generateData and saveAs check first.
  void checkWritable() const { do_checkWritable(); }
  // The complete framed table that saveAs writes.
  Table generateData() const;
  // Writes the framed table (file version 4) in batches of rows to a temporary file beside `path` and
  // renames it over `path`, so that a reader sees the old or the new file, never a torn one. Returns false
  // when the file cannot be written, leaving an existing one as it was; throws std::invalid_argument for
  // a value holding a NUL byte, which the format cannot carry, and what checkWritable throws; a refusal
  // found while writing leaves an existing file as it was.
  bool saveAs(const std::string& path) const;
  bool save() const { return saveAs(m_fileName); }

  const std::string& getFileName() const { return m_fileName; }
  std::size_t getFileVersion() const { return m_fileVersion; }
  bool isLegacy() const { return m_fileVersion == 0; }
  std::string& additionalHeaderTokens() { return m_additionalHeaderTokens; }
  const std::string& additionalHeaderTokens() const { return m_additionalHeaderTokens; }
  bool getUseFullEntityNames() const { return m_useFullEntityNames; }
  void setUseFullEntityNames(bool use) { m_useFullEntityNames = use; }
  // Whether saveAs syncs the file to disk before it replaces the old one, and the directory after, so
  // that it survives a power loss (off by default: a disk flush per file).
  bool getDurableWrites() const { return m_durableWrites; }
  void setDurableWrites(bool durable) { m_durableWrites = durable; }

  // Whether content errors of a read throw (true, the default) or are only logged while the faulty
  // row is passed over. The exchange's read-failure option sets this.
  bool getFatalErrors() const { return m_fatalErrors; }
  void setFatalErrors(bool fatal) { m_fatalErrors = fatal; }
  // Text form of float and double values written: Fixed ("%f", six decimals, so 1e-7 is written
  // 0.000000) by default, or RoundTrip (shortest text that reads back bit-identical).
  Model::NumberFormat getNumberFormat() const { return m_numberFormat; }
  void setNumberFormat(Model::NumberFormat format) { m_numberFormat = format; }
  // Off by default: a value is converted as the standard conversions do (leading blanks skipped, the
  // longest number taken, trailing text ignored: "50OO" reads 50, "2.5" reads 2 for an Int). When on, an
  // Int, Float, Double or Bool value whose whole text is not a number of that kind ("50OO", "5000 W/m2",
  // "5000,5", " 12", and "2.5" or "1e3" for an Int) is a content error of its row: "Invalid value '<text>'
  // in <Column> of <ID:path>: the text is not entirely a number of type <Type>", reported as any other
  // (thrown as AttributeReadError when errors are fatal, the row passed over otherwise).
  bool getStrictNumbers() const { return m_strictNumbers; }
  void setStrictNumbers(bool strict) { m_strictNumbers = strict; }
  // Called with every error message a read reports (the text it logs, row place included: frame errors,
  // column-header and content errors), before the read throws when the error is fatal. With
  // setFatalErrors(false) a caller collects every problem of a file. An empty function removes it.
  using ErrorObserver = std::function<void(const std::string& message)>;
  void setErrorObserver(ErrorObserver observer) { m_errorObserver = std::move(observer); }

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
  virtual void do_checkWritable() const {}
  // The content rows for saveAs. The default goes through writeData; a parser that writes large files
  // overrides it to fill the sink's reused rows, and implements writeData with writeDataThroughRows.
  virtual void writeRows(CSVRowSink& out) const;

  // writeData in terms of writeRows.
  void writeDataThroughRows(RowInserter out) const;

  static constexpr std::size_t noColumn = static_cast<std::size_t>(-1);
  // Positions of the content columns, resolved once per read or write so that rows never look names up;
  // noColumn for a column the header lacks.
  struct Columns
  {
    std::size_t count = 0; // the header's width
    std::size_t id = noColumn, type = noColumn, name = noColumn, access = noColumn, path = noColumn,
                attributeType = noColumn, unit = noColumn;
    std::array<std::size_t, 5> value{noColumn, noColumn, noColumn, noColumn, noColumn}; // by chronology
    bool fullNames = false; // the name column is "FullEntityName"
  };
  // The columns of the current header map; value columns only for `chronologies`.
  Columns resolveColumns(const std::set<KorvanSDK::Chronology>& chronologies) const;
  // Registers the column-header row and checks it. Throws std::runtime_error naming the row when it is
  // empty, has a column that is neither an identity, unit or value column nor one of `extraKnown`, or
  // lacks the ID, type or name column or one of `required` (checked in that order).
  void checkColumnHeader(RowIterator headerRow, std::initializer_list<const std::string*> extraKnown,
                         std::initializer_list<const std::string*> required) const;
  // Fills the ID, type and name columns of `row` for `entity`.
  void fillIdentity(const Columns& columns, const Model::Entity& entity, Row& row) const;
  // Copies those three columns from a row filled by fillIdentity.
  static void copyIdentity(const Columns& columns, const Row& identity, Row& row);

  // The error state of one read: each report names the row, clears `ok` and, when fatal, throws.
  struct RowErrors
  {
    explicit RowErrors(const CSVFileParserBase& owner) : base(owner), fatal(owner.getFatalErrors()) {}
    void error(RowIterator row, const std::string& text);
    void invalidAttribute(RowIterator row, const std::string& text);
    // Reports a row shorter than the column header; false for such a row.
    bool checkSize(RowIterator row, std::size_t count);
    // The entity ID in `column`; empty after reporting a malformed one.
    std::optional<Model::EntityID> entityID(RowIterator row, std::size_t column);

    const CSVFileParserBase& base;
    bool fatal;
    bool ok = true;
  };

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
  RowIterator checkHeader(RowIterator first, RowIterator last);
  RowIterator checkFooter(RowIterator first, RowIterator last) const;
  [[noreturn]] void frameError(const std::string& message) const;
  // Logs `message` at Error and hands it to the error observer.
  void logError(const std::string& message) const;

  std::string m_fileName;
  mutable std::size_t m_fileVersion = csvParserVersion; // saveAs writes version 4
  std::string m_additionalHeaderTokens;
  bool m_useFullEntityNames = false;
  mutable std::map<std::string, std::size_t> m_headerMap;
  bool m_fatalErrors = true;
  bool m_durableWrites = false;
  Model::NumberFormat m_numberFormat = Model::NumberFormat::Fixed;
  bool m_strictNumbers = false;
  ErrorObserver m_errorObserver;
  RowIterator m_tableBegin{}; // first row of the table being read, for row numbers

  // The splitter of parseFile, kept so that the storage of one file's rows serves the next file read (an
  // exchange reads a file of the same shape every iteration). A copied parser starts without one.
  struct ReadCache
  {
    ReadCache();
    ReadCache(const ReadCache&);
    ReadCache(ReadCache&&) noexcept;
    ReadCache& operator=(const ReadCache&);
    ReadCache& operator=(ReadCache&&) noexcept;
    ~ReadCache();
    std::unique_ptr<FileSystem::CSVParser> parser;
  };
  ReadCache m_readCache;
};

} // namespace Ombrix
