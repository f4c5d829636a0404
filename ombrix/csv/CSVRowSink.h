// CSVRowSink: where the CSV parsers put the rows they write. Either a table in memory, or a file that
// receives the rows joined to text in batches of reused rows, so that a large file never exists as a
// table of strings. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/CSVParser.h"

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace Ombrix
{

class OMBRIX_API CSVRowSink
{
public:
  using Row = std::vector<std::string>;
  using Table = std::vector<Row>;

  // Rows are appended to `table`.
  explicit CSVRowSink(Table& table);
  // Rows are joined by `parser` (its own rows are used as the batch and cleared) and written to `file`,
  // which stays open and owned by the caller.
  CSVRowSink(FileSystem::CSVParser& parser, std::FILE* file);
  CSVRowSink(const CSVRowSink&) = delete;
  CSVRowSink& operator=(const CSVRowSink&) = delete;
  ~CSVRowSink() = default;

  // Appends a row of `fields` empty fields and returns it for filling; the reference is valid until the
  // next call. Fields keep their storage from earlier batches, so filling them rarely allocates.
  Row& newRow(std::size_t fields);
  // Appends a complete row.
  void add(Row row);
  // Writes what is still batched. Returns false when any write to the file failed (always true for a
  // table).
  bool finish();

private:
  void flush();

  Table* m_table;
  FileSystem::CSVParser* m_parser = nullptr;
  std::FILE* m_file = nullptr;
  std::size_t m_used = 0; // rows of the batch in use
  bool m_good = true;
};

} // namespace Ombrix
