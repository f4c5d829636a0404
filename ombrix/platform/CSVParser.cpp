#include "ombrix/platform/CSVParser.h"

#include "ombrix/platform/AtomicFileWriter.h"
#include "ombrix/platform/File.h"
#include "ombrix/platform/FileCloser.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace FileSystem
{

namespace
{

constexpr char quote = '"';

std::size_t lineAt(std::string_view text, std::size_t offset, char lineEnd)
{
  return 1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + offset, lineEnd));
}

} // namespace

CSVParser::CSVParser(char separator, bool trimFields, bool skipEmptyRows, char lineEnd, bool quoting)
    : m_separator(separator), m_trimFields(trimFields), m_skipEmptyRows(skipEmptyRows), m_lineEnd(lineEnd),
      m_quoting(quoting)
{
  if (separator == lineEnd)
    throw std::invalid_argument("CSV separator and line end must be different characters");
  if (quoting && (separator == quote || lineEnd == quote))
    throw std::invalid_argument("CSV separator and line end cannot be a double quote when quoting is on");
}

bool CSVParser::parseFile(const std::string& path, bool append, bool skipEmptyRows, bool acceptCRLF)
{
  std::string content;
  if (!File::readAll(path, content))
    throw std::runtime_error("Cannot read CSV file '" + path + "'");
  parseInto(content, append, skipEmptyRows, acceptCRLF, "CSV file '" + path + "'");
  return true;
}

bool CSVParser::parseText(std::string_view text, bool append, bool skipEmptyRows, bool acceptCRLF)
{
  parseInto(text, append, skipEmptyRows, acceptCRLF, "CSV text");
  return true;
}

void CSVParser::parseInto(std::string_view text, bool append, bool skipEmptyRows, bool acceptCRLF,
                          const std::string& source)
{
  if (m_rejectNul)
  {
    if (const void* nul = std::memchr(text.data(), '\0', text.size()))
      throw std::runtime_error(source + " holds a NUL byte at offset " +
                               std::to_string(static_cast<const char*>(nul) - text.data()) +
                               ", as a file does that was not completely written");
  }
  skipEmptyRows = skipEmptyRows || m_skipEmptyRows;
  if (append)
  {
    const std::size_t kept = m_rows.size();
    try
    {
      split(text, m_rows, skipEmptyRows, acceptCRLF, source, kept);
    }
    catch (...)
    {
      m_rows.resize(kept);
      throw;
    }
  }
  else
  {
    // Split into the spare table, whose rows and fields keep their storage from an earlier parse, so that
    // reading files of the same shape again allocates next to nothing; rows() stays intact on failure.
    split(text, m_spare, skipEmptyRows, acceptCRLF, source, 0);
    m_rows.swap(m_spare);
  }
}

void CSVParser::split(std::string_view text, Table& out, bool skipEmptyRows, bool acceptCRLF,
                      const std::string& source, std::size_t first) const
{
  const char separator = m_separator;
  const char lineEnd = m_lineEnd;
  const bool dropCR = acceptCRLF && lineEnd != '\r' && separator != '\r';
  const std::size_t size = text.size();
  const char* data = text.data();

  // A CR that belongs to the line end rather than to the data.
  const auto isLineEndCR = [&](std::size_t i)
  { return dropCR && data[i] == '\r' && (i + 1 == size || data[i + 1] == lineEnd); };
  const auto isTrimmed = [&](char c) { return (c == ' ' || c == '\t') && c != separator && c != lineEnd; };

  out.reserve(first + static_cast<std::size_t>(std::count(text.begin(), text.end(), lineEnd)) + 1);
  // Rows from `first` on are overwritten in place, reusing their fields' storage; the rest is appended.
  std::size_t rowCount = first;
  const auto nextRow = [&]() -> Row&
  {
    if (rowCount == out.size())
      out.emplace_back();
    return out[rowCount++];
  };
  std::size_t pos = 0;
  while (pos < size)
  {
    if (data[pos] == lineEnd || isLineEndCR(pos))
    {
      if (!skipEmptyRows)
        nextRow().clear();
      pos = std::min(size, pos + (data[pos] == lineEnd ? 1 : 2));
      continue;
    }

    Row& row = nextRow();
    std::size_t fieldCount = 0;
    const auto setField = [&](const char* begin, std::size_t length)
    {
      if (fieldCount < row.size())
        row[fieldCount].assign(begin, length);
      else
        row.emplace_back(begin, length);
      ++fieldCount;
    };
    bool rowDone = false;
    while (!rowDone)
    {
      std::size_t start = pos;
      if (m_trimFields)
      {
        while (start < size && isTrimmed(data[start]))
          ++start;
      }
      if (m_quoting && start < size && data[start] == quote)
      {
        std::size_t close = text.find(quote, start + 1);
        if (close == std::string_view::npos)
          throw std::runtime_error(source + ": quoted field starting on line " +
                                   std::to_string(lineAt(text, start, lineEnd)) + " is not closed");
        if (close + 1 < size && data[close + 1] == quote)
        {
          // Doubled quotes: the only case that needs a copy loop.
          std::string value(data + start + 1, close - start);
          std::size_t from = close + 2;
          for (;;)
          {
            const std::size_t next = text.find(quote, from);
            if (next == std::string_view::npos)
              throw std::runtime_error(source + ": quoted field starting on line " +
                                       std::to_string(lineAt(text, start, lineEnd)) + " is not closed");
            value.append(data + from, next - from);
            if (next + 1 < size && data[next + 1] == quote)
            {
              value.push_back(quote);
              from = next + 2;
              continue;
            }
            close = next;
            break;
          }
          setField(value.data(), value.size());
        }
        else
        {
          setField(data + start + 1, close - start - 1);
        }

        pos = close + 1;
        if (m_trimFields)
        {
          while (pos < size && isTrimmed(data[pos]))
            ++pos;
        }
        if (pos == size)
          rowDone = true;
        else if (data[pos] == separator)
          ++pos;
        else if (data[pos] == lineEnd)
        {
          ++pos;
          rowDone = true;
        }
        else if (isLineEndCR(pos))
        {
          pos = std::min(size, pos + 2);
          rowDone = true;
        }
        else
          throw std::runtime_error(source + ": unexpected text after the closing quote of a field on line " +
                                   std::to_string(lineAt(text, pos, lineEnd)));
      }
      else
      {
        std::size_t end = start;
        while (end < size && data[end] != separator && data[end] != lineEnd)
          ++end;
        std::size_t fieldEnd = end;
        if (fieldEnd > start && isLineEndCR(fieldEnd - 1))
          --fieldEnd;
        if (m_trimFields)
        {
          while (fieldEnd > start && isTrimmed(data[fieldEnd - 1]))
            --fieldEnd;
        }
        setField(data + start, fieldEnd - start);
        if (end == size)
        {
          pos = size;
          rowDone = true;
        }
        else
        {
          pos = end + 1;
          rowDone = data[end] == lineEnd;
        }
      }
    }
    row.resize(fieldCount);
  }
  out.resize(rowCount);
}

bool CSVParser::needsQuotes(std::string_view field) const
{
  for (const char c : field)
  {
    if (c == m_separator || c == quote || c == '\r' || c == '\n' || c == m_lineEnd)
      return true;
  }
  const auto isTrimmed = [&](char c) { return (c == ' ' || c == '\t') && c != m_separator; };
  return m_trimFields && !field.empty() && (isTrimmed(field.front()) || isTrimmed(field.back()));
}

void CSVParser::appendRow(std::string& out, const Row& row) const
{
  if (m_quoting && row.size() == 1 && row.front().empty())
  {
    out += "\"\"";
    out += m_lineEnd;
    return;
  }
  bool first = true;
  for (const std::string& field : row)
  {
    if (!first)
      out += m_separator;
    first = false;
    if (!m_quoting || !needsQuotes(field))
    {
      out += field;
      continue;
    }
    out += quote;
    std::size_t from = 0;
    for (std::size_t next = field.find(quote); next != std::string::npos; next = field.find(quote, from))
    {
      out.append(field, from, next + 1 - from);
      out += quote;
      from = next + 1;
    }
    out.append(field, from, std::string::npos);
    out += quote;
  }
  out += m_lineEnd;
}

std::string CSVParser::toText() const
{
  std::size_t estimate = 0;
  for (const Row& row : m_rows)
  {
    estimate += row.size() + 2;
    for (const std::string& field : row)
      estimate += field.size();
  }
  std::string out;
  out.reserve(estimate + estimate / 32);
  for (const Row& row : m_rows)
    appendRow(out, row);
  // One scan of the text costs less than one per field.
  if (m_rejectNul && std::memchr(out.data(), '\0', out.size()))
    throwNulInRow();
  return out;
}

void CSVParser::throwNulInRow() const
{
  // Named by row, field and the row's first fields: in the exchange files those are the entity and the
  // attribute whose text cannot be written.
  for (std::size_t r = 0; r < m_rows.size(); ++r)
  {
    const Row& row = m_rows[r];
    for (std::size_t f = 0; f < row.size(); ++f)
    {
      if (row[f].find('\0') == std::string::npos)
        continue;
      std::string message = "CSV row " + std::to_string(r + 1) + ", field " + std::to_string(f + 1) +
                            " holds a NUL byte, which a CSV exchange file cannot carry";
      if (f > 0)
        message += " (the row begins " + row[0] + (f > 1 ? "," + row[1] : std::string()) + ")";
      throw std::invalid_argument(message);
    }
  }
  throw std::invalid_argument(
      "CSV separator or line end is a NUL byte, which a CSV exchange file cannot carry");
}

bool CSVParser::saveAs(const std::string& path, bool append) const
{
  const std::string text = toText();
  if (!append)
    return AtomicFileWriter::replace(path, text);
  FilePtr file = FileSystem::fopen(path, "ab");
  if (!file)
    return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  // Closing flushes; a failure there is a failed write too.
  return std::fclose(file.release()) == 0 && written;
}

} // namespace FileSystem
