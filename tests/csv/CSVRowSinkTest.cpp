#include "ombrix/csv/CSVRowSink.h"

#include "ombrix/platform/FileCloser.h"

#include "csv/CSVTestModel.h"

namespace
{

using Ombrix::CSVRowSink;
using Row = CSVRowSink::Row;
using Table = CSVRowSink::Table;

// Rows of changing widths, including fields that need quotes, a single empty field and an empty row,
// so that reused rows must shrink, grow and lose their old text.
Table varyingRows(std::size_t count)
{
  const char* const special[] = {"a,b", "say \"hi\"", "two\nlines", "", " padded "};
  Table rows;
  for (std::size_t i = 0; i < count; ++i)
  {
    Row row((i * 7) % 5);
    for (std::size_t f = 0; f < row.size(); ++f)
      row[f] = (i + f) % 11 == 0 ? special[(i + f) % 5] : "r" + std::to_string(i) + "c" + std::to_string(f);
    if (i % 97 == 0)
      row = Row{""};
    rows.push_back(std::move(row));
  }
  return rows;
}

void fill(CSVRowSink& sink, const Table& rows)
{
  for (std::size_t i = 0; i < rows.size(); ++i)
  {
    if (i % 3 == 0)
    {
      sink.add(rows[i]);
      continue;
    }
    Row& row = sink.newRow(rows[i].size());
    for (std::size_t f = 0; f < row.size(); ++f)
    {
      EXPECT_TRUE(row[f].empty());
      row[f] = rows[i][f];
    }
  }
}

// A table receives the rows in order; a file gets the text of the whole table, across write batches.
TEST(CSVRowSink, TableAndFileReceiveTheRowsInOrder)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("rows.csv");
  for (const std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(2048), std::size_t(5000)})
  {
    SCOPED_TRACE(count);
    const Table rows = varyingRows(count);
    Table table;
    CSVRowSink tableSink(table);
    fill(tableSink, rows);
    EXPECT_TRUE(tableSink.finish());
    EXPECT_EQ(table, rows);

    FileSystem::FilePtr file = FileSystem::fopen(path, "wb");
    ASSERT_TRUE(file);
    FileSystem::CSVParser batch(',', false, false, '\n', true);
    CSVRowSink sink(batch, file.get());
    fill(sink, rows);
    EXPECT_TRUE(sink.finish());
    file.reset();
    EXPECT_EQ(OmbrixTest::readFile(path), CSVTest::joined(rows));
  }
  // A failed write is reported by finish().
  OmbrixTest::writeFile(path, "");
  FileSystem::FilePtr file = FileSystem::fopen(path, "rb");
  ASSERT_TRUE(file);
  FileSystem::CSVParser batch(',', false, false, '\n', true);
  CSVRowSink sink(batch, file.get());
  fill(sink, varyingRows(10));
  EXPECT_FALSE(sink.finish());
}

} // namespace
