#include "ombrix/csv/CSVFileParserBase.h"

#include "ombrix/csv/CSVValueText.h"
#include "ombrix/log/LogSection.h"
#include "ombrix/model/Entity.h"
#include "ombrix/platform/AtomicFileWriter.h"
#include "ombrix/platform/CSVParser.h"
#include "ombrix/platform/File.h"
#include "ombrix/platform/FileCloser.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace Ombrix
{

namespace
{

FileSystem::CSVParser makeParser()
{
  FileSystem::CSVParser parser(',', false, false, '\n', true);
  // A NUL byte is no text: it is what a file zero-filled by a power loss holds.
  parser.setRejectNul(true);
  return parser;
}

} // namespace

bool CSVFileParserBase::parseFile(const std::string& path)
{
  m_fileName = path;
  addToLog(LogLevel::Informational, "Reading %s", path.c_str());
  if (!FileSystem::File::exists(path))
  {
    addToLog(LogLevel::Warning, "File does not exist : %s", path.c_str());
    return false;
  }
  if (!m_readCache.parser)
    m_readCache.parser = std::make_unique<FileSystem::CSVParser>(makeParser());
  m_readCache.parser->parseFile(path, false, false, true);
  m_additionalHeaderTokens.clear();
  const Table& rows = m_readCache.parser->rows();
  return read(rows.begin(), rows.end());
}

CSVFileParserBase::ReadCache::ReadCache() = default;
CSVFileParserBase::ReadCache::ReadCache(const ReadCache&) {}
CSVFileParserBase::ReadCache::ReadCache(ReadCache&&) noexcept = default;
CSVFileParserBase::ReadCache& CSVFileParserBase::ReadCache::operator=(const ReadCache&)
{
  return *this;
}
CSVFileParserBase::ReadCache& CSVFileParserBase::ReadCache::operator=(ReadCache&&) noexcept = default;
CSVFileParserBase::ReadCache::~ReadCache() = default;

bool CSVFileParserBase::parseData(const Table& rows)
{
  m_additionalHeaderTokens.clear();
  return read(rows.begin(), rows.end());
}

CSVFileParserBase::Table CSVFileParserBase::generateData() const
{
  checkWritable();
  Table table{fileHeader(m_fileVersion, m_additionalHeaderTokens)};
  writeData(std::back_inserter(table));
  table.push_back(fileFooter(m_fileVersion));
  return table;
}

bool CSVFileParserBase::saveAs(const std::string& path) const
{
  FileSystem::CSVParser parser = makeParser();
  m_fileVersion = csvParserVersion;
  addToLog(LogLevel::Informational, "Saving %s", path.c_str());
  checkWritable();
  // Written beside the file and renamed over it: a reader sees the old or the new file, never a torn one.
  FileSystem::AtomicFileWriter file(path, m_durableWrites);
  std::FILE* stream = file.get();
  if (!stream)
    return false;
  // Rows go to the file as they are made: a table of the whole file would cost more than the writing.
  CSVRowSink sink(parser, stream);
  sink.add(fileHeader(m_fileVersion, m_additionalHeaderTokens));
  writeRows(sink);
  sink.add(fileFooter(m_fileVersion));
  // A refusal thrown while writing leaves the temporary uncommitted: the last complete file stays.
  return sink.finish() && file.commit();
}

void CSVFileParserBase::writeRows(CSVRowSink& out) const
{
  Table rows;
  writeData(std::back_inserter(rows));
  for (Row& row : rows)
    out.add(std::move(row));
}

void CSVFileParserBase::writeDataThroughRows(RowInserter out) const
{
  Table rows;
  CSVRowSink sink(rows);
  writeRows(sink);
  std::move(rows.begin(), rows.end(), out);
}

CSVFileParserBase::Columns
CSVFileParserBase::resolveColumns(const std::set<KorvanSDK::Chronology>& chronologies) const
{
  Columns c;
  // A repeated name keeps its last index, which lies beyond the number of distinct names: rows are
  // sized and checked against the header's width.
  for (const auto& [name, index] : m_headerMap)
    c.count = std::max(c.count, index + 1);
  auto at = [&](const std::string& name) { return fieldIndex(name).value_or(noColumn); };
  c.id = at(fieldEntityID);
  c.type = at(fieldEntityType);
  c.fullNames = hasField(fieldEntityFullName);
  c.name = at(c.fullNames ? fieldEntityFullName : fieldEntityName);
  c.access = at(fieldAccess);
  c.path = at(fieldAttributePath);
  c.attributeType = at(fieldAttributeType);
  c.unit = at(fieldUnit);
  for (KorvanSDK::Chronology chronology : chronologies)
    c.value[static_cast<std::size_t>(chronology)] = at(CSVValueText::columnName(chronology));
  return c;
}

void CSVFileParserBase::checkColumnHeader(RowIterator headerRow,
                                          std::initializer_list<const std::string*> extraKnown,
                                          std::initializer_list<const std::string*> required) const
{
  const std::string place = rowPlace(headerRow);
  if (headerRow->empty())
    reportError(place + "Missing column header", true);
  generateHeaderMap(*headerRow);
  for (const auto& [name, index] : m_headerMap)
  {
    bool known = name == fieldEntityID || name == fieldEntityType || name == fieldEntityName ||
                 name == fieldEntityFullName || name == fieldAttributePath || name == fieldUnit;
    for (const std::string* extra : extraKnown)
      known = known || name == *extra;
    for (KorvanSDK::Chronology chronology : CSVValueText::allChronologies)
      known = known || name == CSVValueText::columnName(chronology);
    if (!known)
      reportError(place + "Unknown column '" + name + "' in the column header", true);
  }
  const std::string& nameColumn = hasField(fieldEntityFullName) ? fieldEntityFullName : fieldEntityName;
  for (const std::string* column : {&fieldEntityID, &fieldEntityType, &nameColumn})
  {
    if (!hasField(*column))
      reportError(place + "Missing column '" + *column + "' in the column header", true);
  }
  for (const std::string* column : required)
  {
    if (!hasField(*column))
      reportError(place + "Missing column '" + *column + "' in the column header", true);
  }
}

void CSVFileParserBase::fillIdentity(const Columns& c, const Model::Entity& entity, Row& row) const
{
  row[c.id] = Model::toString(entity.getUniqueID());
  row[c.type] = entity.type();
  row[c.name] = m_useFullEntityNames ? entity.getName(true) : entity.name();
}

void CSVFileParserBase::copyIdentity(const Columns& c, const Row& identity, Row& row)
{
  row[c.id] = identity[c.id];
  row[c.type] = identity[c.type];
  row[c.name] = identity[c.name];
}

void CSVFileParserBase::RowErrors::error(RowIterator row, const std::string& text)
{
  ok = false;
  base.reportError(base.rowPlace(row) + text, fatal);
}

void CSVFileParserBase::RowErrors::invalidAttribute(RowIterator row, const std::string& text)
{
  ok = false;
  base.reportInvalidAttribute(base.rowPlace(row) + text, fatal);
}

bool CSVFileParserBase::RowErrors::checkSize(RowIterator row, std::size_t count)
{
  if (row->size() >= count)
    return true;
  error(row,
        "Row has " + std::to_string(row->size()) + " fields, the column header has " + std::to_string(count));
  return false;
}

std::optional<Model::EntityID> CSVFileParserBase::RowErrors::entityID(RowIterator row, std::size_t column)
{
  try
  {
    return Model::EntityID::fromString((*row)[column]);
  }
  catch (const std::exception& failure)
  {
    error(row, "Invalid entity ID '" + (*row)[column] + "': " + failure.what());
    return std::nullopt;
  }
}

void CSVFileParserBase::generateHeaderMap(const Row& headerRow) const
{
  m_headerMap.clear();
  for (std::size_t i = 0; i < headerRow.size(); ++i)
    m_headerMap[headerRow[i]] = i;
}

std::optional<std::size_t> CSVFileParserBase::fieldIndex(const std::string& name) const
{
  auto it = m_headerMap.find(name);
  if (it == m_headerMap.end())
    return std::nullopt;
  return it->second;
}

const std::string& CSVFileParserBase::getField(const std::string& name, const Row& row) const
{
  static const std::string empty;
  auto index = fieldIndex(name);
  if (!index || *index >= row.size())
    return empty;
  return row[*index];
}

void CSVFileParserBase::setField(const std::string& name, const std::string& value, Row& row) const
{
  auto index = fieldIndex(name);
  if (index && *index < row.size())
    row[*index] = value;
}

bool CSVFileParserBase::isEntity(Model::Entity* const entity, const Model::EntityID& id) const
{
  return entity && entity->getUniqueID() == id;
}

bool CSVFileParserBase::isEntity(Model::Entity* const entity, const std::string& type,
                                 const std::string& name) const
{
  if (!entity || entity->type() != type)
    return false;
  return name == entity->name() || name == entity->getName(true);
}

bool CSVFileParserBase::isEntity(Model::Entity* const entity, const Model::EntityID& id,
                                 const std::string& type, const std::string& name) const
{
  return isEntity(entity, id) && isEntity(entity, type, name);
}

std::string CSVFileParserBase::convertFullEntityName(const std::string& name) const
{
  if (!m_useFullEntityNames)
    return name;
  const auto position = name.rfind("->");
  return position == std::string::npos ? name : name.substr(position + 2);
}

void CSVFileParserBase::addToLog(LogLevel level, const char* format, ...) const
{
  va_list args;
  va_start(args, format);
  vaddToLog(level, format, args);
  va_end(args);
}

void CSVFileParserBase::vaddToLog(LogLevel level, std::string_view format, va_list args) const
{
  if (!isLogged(level))
    return;
  LogSection section("CSV File : " + m_fileName);
  section.vaddToLog(LogManager::TimePoint(std::chrono::time_point_cast<std::chrono::milliseconds>(
                        std::chrono::system_clock::now())),
                    level, format, args);
}

bool CSVFileParserBase::isLogged(LogLevel level) const
{
  LogManager& log = LogManager::instance();
  return log.isActive() && static_cast<int>(level) <= static_cast<int>(log.getLevel());
}

void CSVFileParserBase::reportError(const std::string& message, bool fatal) const
{
  logError(message);
  if (fatal)
    throw std::runtime_error(message);
}

void CSVFileParserBase::reportInvalidAttribute(const std::string& message, bool fatal) const
{
  logError(message);
  if (fatal)
    throw AttributeReadError(message);
}

std::string CSVFileParserBase::rowPlace(RowIterator row) const
{
  return (m_fileName.empty() ? std::string("CSV rows") : m_fileName) + ", row " +
         std::to_string(row - m_tableBegin + 1) + ": ";
}

CSVFileParserBase::Row CSVFileParserBase::fileHeader(std::size_t version, const std::string& additionalToken)
{
  Row row{"<<", "START", "CSV", versionToken(version)};
  if (!additionalToken.empty())
    row.push_back(additionalToken);
  row.push_back(">>");
  return row;
}

CSVFileParserBase::Row CSVFileParserBase::fileFooter(std::size_t version)
{
  return Row{"<<", "END", "CSV", versionToken(version), ">>"};
}

std::string CSVFileParserBase::versionToken(std::size_t version)
{
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "VER%02zu", version);
  return buffer;
}

std::optional<std::size_t> CSVFileParserBase::readVersionToken(const std::string& token)
{
  if (token.size() < 3 || token.compare(0, 3, "VER") != 0)
    return std::nullopt;
  try
  {
    return static_cast<std::size_t>(std::stoull(token.substr(3)));
  }
  catch (const std::exception&)
  {
    return std::nullopt;
  }
}

std::optional<std::size_t> CSVFileParserBase::readVersionFromHeader(const Row& row)
{
  if (row.size() < 5 || row[0] != "<<" || row[1] != "START" || row[2] != "CSV" || row.back() != ">>")
    return std::nullopt;
  return readVersionToken(row[3]);
}

void CSVFileParserBase::frameError(const std::string& message) const
{
  logError(message);
  throw std::runtime_error(message);
}

void CSVFileParserBase::logError(const std::string& message) const
{
  addToLog(LogLevel::Error, "%s", message.c_str());
  if (m_errorObserver)
    m_errorObserver(message);
}

CSVFileParserBase::RowIterator CSVFileParserBase::checkHeader(RowIterator first, RowIterator last)
{
  for (RowIterator row = first; row != last; ++row)
  {
    if (auto version = readVersionFromHeader(*row))
    {
      if (row->size() >= 6)
        m_additionalHeaderTokens = (*row)[4];
      m_fileVersion = *version;
      return row;
    }
  }
  frameError("Missing FileHeader");
}

CSVFileParserBase::RowIterator CSVFileParserBase::checkFooter(RowIterator first, RowIterator last) const
{
  const Row footer = fileFooter(m_fileVersion);
  for (RowIterator row = last; row != first;)
  {
    --row;
    if (*row == footer)
      return row;
  }
  frameError("Missing FileFooter");
}

bool CSVFileParserBase::read(RowIterator first, RowIterator last)
{
  m_tableBegin = first;
  const RowIterator header = checkHeader(first, last);
  const RowIterator content = std::next(header);
  if (content == last)
    frameError("Missing FileHeader");
  if (!isSupportedVersion(m_fileVersion))
    frameError("Unsupported file version.");
  // The footer may not stand directly after the header: the search stops short of that row.
  const RowIterator footer = checkFooter(std::next(content), last);
  return readData(content, footer).second;
}

} // namespace Ombrix
