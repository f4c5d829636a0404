#include "ombrix/csv/CSVRowSink.h"

namespace Ombrix
{

namespace
{

// Large enough that the per-write cost vanishes, small enough that the batch stays in cache.
constexpr std::size_t batchRows = 2048;

} // namespace

CSVRowSink::CSVRowSink(Table& table) : m_table(&table) {}

CSVRowSink::CSVRowSink(FileSystem::CSVParser& parser, std::FILE* file)
    : m_table(&parser.rows()), m_parser(&parser), m_file(file)
{
  m_table->clear();
}

CSVRowSink::Row& CSVRowSink::newRow(std::size_t fields)
{
  if (!m_parser)
    return m_table->emplace_back(fields);
  if (m_used == batchRows)
    flush();
  if (m_used == m_table->size())
    m_table->emplace_back();
  Row& row = (*m_table)[m_used++];
  row.resize(fields);
  for (std::string& field : row)
    field.clear();
  return row;
}

void CSVRowSink::add(Row row)
{
  newRow(0) = std::move(row);
}

void CSVRowSink::flush()
{
  m_table->resize(m_used);
  if (m_used != 0 && m_good)
  {
    const std::string text = m_parser->toText();
    m_good = std::fwrite(text.data(), 1, text.size(), m_file) == text.size();
  }
  m_used = 0;
}

bool CSVRowSink::finish()
{
  if (m_parser)
    flush();
  return m_good;
}

} // namespace Ombrix
