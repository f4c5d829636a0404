#include "ombrix/platform/CSVParser.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <random>

using FileSystem::CSVParser;
using Table = CSVParser::Table;

namespace
{

struct ParseCase
{
  const char* name;
  std::string text;
  Table rows;
  bool skipEmptyRows = false;
  bool acceptCRLF = true;
};

} // namespace

TEST(CSVParser, SplitsTextIntoRowsAndFields)
{
  const ParseCase cases[] = {
      {"empty text", "", {}},
      {"last line without line end", "a,b,c", {{"a", "b", "c"}}},
      {"trailing line end adds no row", "a,b\n", {{"a", "b"}}},
      {"empty line is a row without fields", "a\n\nb\n", {{"a"}, {}, {"b"}}},
      {"only a line end", "\n", {{}}},
      {"empty fields", "a,\n,b\n,\n", {{"a", ""}, {"", "b"}, {"", ""}}},
      {"trailing separator at the end", "a,", {{"a", ""}}},
      {"one empty quoted field", "\"\"\n", {{""}}},
      {"quoted separator and doubled quote", "\"a,b\",\"c\"\"d\",e\n", {{"a,b", "c\"d", "e"}}},
      {"only a quote", "\"\"\"\"", {{"\""}}},
      {"line ends inside quotes", "\"x\ny\",\"\r\"\n", {{"x\ny", "\r"}}},
      {"quote inside an unquoted field", "ab\"c,d\n", {{"ab\"c", "d"}}},
      {"blank before a quote keeps the field unquoted", " \"a\"\n", {{" \"a\""}}},
      {"CRLF", "a,b\r\n\r\nc\r\n", {{"a", "b"}, {}, {"c"}}},
      {"CR before the end of the text", "a\r", {{"a"}}},
      {"CR inside a field stays", "a\rb\r\n", {{"a\rb"}}},
      {"quoted field before CRLF", "\"a\"\r\n\"b\"\r", {{"a"}, {"b"}}},
      {"CR kept without acceptCRLF", "a\r\nb\r\n", {{"a\r"}, {"b\r"}}, false, false},
      {"empty rows skipped", "a\n\n\r\nb\n\n", {{"a"}, {"b"}}, true},
      {"an empty field is not an empty row", "\n\"\"\n,\n", {{""}, {"", ""}}, true},
      {"bytes above 127", "\xc3\xa4,\xe2\x82\xac\n", {{"\xc3\xa4", "\xe2\x82\xac"}}},
      {"NUL bytes", std::string("a\0b,\0\n", 6), {{std::string("a\0b", 3), std::string(1, '\0')}}},
  };
  // A parser reuses the storage of earlier parses, failed ones too: no field of an earlier text may stay.
  CSVParser reused;
  for (const ParseCase& c : cases)
  {
    SCOPED_TRACE(c.name);
    const Table before = reused.rows();
    EXPECT_THROW_MSG(reused.parseText("long field,x,y,z\n\"broken"), std::runtime_error,
                     "CSV text: quoted field starting on line 2 is not closed");
    EXPECT_EQ(reused.rows(), before);
    CSVParser fresh;
    for (CSVParser* parser : {&fresh, &reused})
    {
      EXPECT_TRUE(parser->parseText(c.text, false, c.skipEmptyRows, c.acceptCRLF));
      EXPECT_EQ(parser->rows(), c.rows);
    }
  }
}

TEST(CSVParser, OptionsApplyToReadingAndWriting)
{
  // Trimming never eats a tab separator, and blanks at the edges of a field are quoted so that they survive
  // a trimming reader. Fields are quoted only where needed.
  const struct
  {
    CSVParser parser;
    std::string text;
    Table rows;
    const char* written = nullptr; // the rows written, when not the text read
  } cases[] = {
      {CSVParser(), "", {}},
      {CSVParser(), "\n", {{}}},
      {CSVParser(), "\"\"\n", {{""}}},
      {CSVParser(), ",\n", {{"", ""}}},
      {CSVParser(), "a,b\n\nc\n", {{"a", "b"}, {}, {"c"}}},
      {CSVParser(),
       "\"a,b\",\"say \"\"hi\"\"\",\"x\ny\",\"cr\r\",plain\n",
       {{"a,b", "say \"hi\"", "x\ny", "cr\r", "plain"}}},
      {CSVParser(), "\"\"\"\"\"\"\n", {{"\"\""}}},
      {CSVParser(), " a ,\tb\n", {{" a ", "\tb"}}},
      {CSVParser(',', true),
       " a , \" b \" ,\tc\t\n  \n x\n",
       {{"a", " b ", "c"}, {""}, {"x"}},
       "a,\" b \",c\n\"\"\nx\n"},
      {CSVParser(',', true), "\" x\",\"y\t\",z\n", {{" x", "y\t", "z"}}},
      {CSVParser('\t', true), "a\t\t b \n", {{"a", "", "b"}}, "a\t\tb\n"},
      {CSVParser(',', false, true), "a\n\nb\n", {{"a"}, {"b"}}, "a\nb\n"},
      {CSVParser(';', false, false, '|'),
       "a;b|\"c|d\";\"e;f\"|x\ny|",
       {{"a", "b"}, {"c|d", "e;f"}, {"x\ny"}},
       "a;b|\"c|d\";\"e;f\"|\"x\ny\"|"},
      // Without quoting, quotes are ordinary characters.
      {CSVParser(',', false, false, '\n', false), "\"a,b\"\n\"\"\n", {{"\"a", "b\""}, {"\"\""}}},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.text);
    CSVParser parser = c.parser;
    parser.parseText(c.text);
    EXPECT_EQ(parser.rows(), c.rows);
    EXPECT_EQ(parser.toText(), c.written ? c.written : c.text);
  }
  // Nor is a separator: such a field cannot be read back.
  CSVParser unquoted(',', false, false, '\n', false);
  unquoted.rows() = {{"x,y", "\""}, {""}};
  EXPECT_EQ(unquoted.toText(), "x,y,\"\n\n");
}

TEST(CSVParser, ReportsMalformedTextWithItsLine)
{
  const std::pair<std::string, std::string> cases[] = {
      {"\"a", "CSV text: quoted field starting on line 1 is not closed"},
      {"a\n\"b\nc\",\"d\ne\n", "CSV text: quoted field starting on line 3 is not closed"},
      {"a,\"b\"\"", "CSV text: quoted field starting on line 1 is not closed"},
      {"\"a\"\"b\"\"", "CSV text: quoted field starting on line 1 is not closed"},
      {"a\n\"b\"c\n", "CSV text: unexpected text after the closing quote of a field on line 2"},
      {"\"x\ny\" ,z", "CSV text: unexpected text after the closing quote of a field on line 2"},
      {"\"a\"\r\r\n", "CSV text: unexpected text after the closing quote of a field on line 1"},
  };
  for (const auto& [text, message] : cases)
  {
    SCOPED_TRACE(text);
    CSVParser parser;
    parser.rows() = {{"kept"}};
    EXPECT_THROW_MSG(parser.parseText(text), std::runtime_error, message);
    EXPECT_EQ(parser.rows(), (Table{{"kept"}}));
    EXPECT_THROW_MSG(parser.parseText(text, true), std::runtime_error, message);
    EXPECT_EQ(parser.rows(), (Table{{"kept"}}));
  }
}

TEST(CSVParser, ReadsAppendsAndWritesFiles)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("out.csv");
  CSVParser parser;
  for (const std::string& unreadable : {dir.file("missing.csv"), dir.path().string()})
    EXPECT_THROW_MSG(parser.parseFile(unreadable), std::runtime_error,
                     "Cannot read CSV file '" + unreadable + "'");
  OmbrixTest::writeFile(path, "a,b\nc,\"d\n");
  EXPECT_THROW_MSG(parser.parseFile(path), std::runtime_error,
                   "CSV file '" + path + "': quoted field starting on line 2 is not closed");

  parser.rows() = {{"a", "b"}};
  ASSERT_TRUE(parser.saveAs(path));
  parser.rows() = {{"c"}};
  ASSERT_TRUE(parser.saveAs(path, true));
  EXPECT_EQ(OmbrixTest::readFile(path), "a,b\nc\n");
  ASSERT_TRUE(parser.parseFile(path, true));
  EXPECT_EQ(parser.rows(), (Table{{"c"}, {"a", "b"}, {"c"}}));
  parser.clear();
  EXPECT_TRUE(parser.rows().empty());
  parser.rows() = {{"c"}};
  ASSERT_TRUE(parser.saveAs(path));
  EXPECT_EQ(OmbrixTest::readFile(path), "c\n");
  EXPECT_FALSE(parser.saveAs(dir.file("no/such/dir/out.csv")));
  EXPECT_FALSE(parser.saveAs(dir.path().string()));
}

TEST(CSVParser, RejectsAmbiguousCharacters)
{
  EXPECT_THROW_MSG(CSVParser(',', false, false, ','), std::invalid_argument,
                   "CSV separator and line end must be different characters");
  EXPECT_THROW_MSG(CSVParser('"'), std::invalid_argument,
                   "CSV separator and line end cannot be a double quote when quoting is on");
  EXPECT_NO_THROW(CSVParser('"', false, false, '\n', false));
}

TEST(CSVParser, RandomTablesSurviveSaveAndParse)
{
  // Fields are drawn from characters that matter to the format, so that every combination of separators,
  // quotes, CR, LF, blanks, empty fields, empty rows and multi-byte characters turns up.
  const std::string pieces[] = {",",    "\"", "\r",  "\n",       "\r\n",         " ",
                                "\t",   "a",  "xyz", "\xc3\xa4", "\xe2\x82\xac", std::string(1, '\0'),
                                "\"\"", ";"};
  std::mt19937 random(20240611u);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  const auto randomTable = [&]
  {
    Table table(below(8));
    for (auto& row : table)
    {
      row.resize(below(5));
      for (auto& field : row)
      {
        for (unsigned n = below(5); n > 0; --n)
          field += pieces[below(std::size(pieces))];
      }
    }
    return table;
  };

  OmbrixTest::TempDir dir;
  const std::string path = dir.file("round.csv");
  for (int i = 0; i < 300; ++i)
  {
    const bool trim = i % 3 == 0;
    CSVParser writer(',', trim);
    writer.rows() = randomTable();
    SCOPED_TRACE(writer.toText());
    ASSERT_TRUE(writer.saveAs(path));

    CSVParser reader(',', trim);
    ASSERT_TRUE(reader.parseFile(path, false, false, i % 2 == 0));
    ASSERT_EQ(reader.rows(), writer.rows());
  }
}

// Reading a file that holds one is tested with CSVFileParserBase, which turns this on.
TEST(CSVParser, RejectsNulBytesOnRequest)
{
  const std::string cannot = "which a CSV exchange file cannot carry";
  CSVParser parser;
  parser.setRejectNul(true);
  EXPECT_THROW_MSG(parser.parseText(std::string("a,b\n\0\0\0", 7)), std::runtime_error,
                   "CSV text holds a NUL byte at offset 4, as a file does that was not completely written");
  const std::string nul("\0", 1);
  const std::vector<std::pair<CSVParser::Table, std::string>> rows{
      {{{"a"}, {"3-17", "Note", "x" + nul}},
       "row 2, field 3 holds a NUL byte, " + cannot + " (the row begins 3-17,Note)"},
      {{{"a", "b" + nul}}, "row 1, field 2 holds a NUL byte, " + cannot + " (the row begins a)"},
      {{{nul}}, "row 1, field 1 holds a NUL byte, " + cannot},
  };
  for (const auto& [table, message] : rows)
  {
    parser.rows() = table;
    EXPECT_THROW_MSG(parser.toText(), std::invalid_argument, "CSV " + message);
  }
  CSVParser nulSeparated('\0');
  nulSeparated.setRejectNul(true);
  nulSeparated.rows() = {{"a", "b"}};
  EXPECT_THROW_MSG(nulSeparated.toText(), std::invalid_argument,
                   "CSV separator or line end is a NUL byte, " + cannot);
  parser.rows() = {{"a", "b" + nul}};
  parser.setRejectNul(false);
  EXPECT_EQ(parser.toText(), std::string("a,b\0\n", 5));
}
