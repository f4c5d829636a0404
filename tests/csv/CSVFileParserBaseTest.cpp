#include "ombrix/csv/CSVFileParserBase.h"

#include "csv/CSVTestModel.h"

namespace
{

using Ombrix::CSVFileParserBase;
using Table = CSVFileParserBase::Table;

// A minimal concrete parser: remembers the content rows it was given and writes fixed ones.
class FrameParser : public CSVFileParserBase
{
public:
  Table content;
  Table toWrite{{"a", "b"}, {"c,d", "e\nf"}};

  using CSVFileParserBase::convertFullEntityName;
  using CSVFileParserBase::generateHeaderMap;
  using CSVFileParserBase::getField;
  using CSVFileParserBase::getNumberOfFields;
  using CSVFileParserBase::isEntity;
  using CSVFileParserBase::reportError;
  using CSVFileParserBase::reportInvalidAttribute;
  using CSVFileParserBase::setField;

protected:
  std::pair<RowIterator, bool> readData(RowIterator first, RowIterator last) override
  {
    content.assign(first, last);
    return {last, true};
  }
  void writeData(RowInserter out) const override
  {
    for (const auto& row : toWrite)
      *out++ = row;
  }
};

const std::vector<std::string> header{"<<", "START", "CSV", "VER04", ">>"};
const std::vector<std::string> footer{"<<", "END", "CSV", "VER04", ">>"};

using CSVFileParserBaseTest = CSVTest::LoggedTest;

// Errors are logged and thrown; accepted frames give the content rows and the header's extra token.
TEST_F(CSVFileParserBaseTest, Frames)
{
  struct Case
  {
    const char* name;
    Table rows;
    const char* error; // "" when accepted
    Table content = {};
    std::string token = "";
  };
  const Case cases[] = {
      {"empty table", {}, "Missing FileHeader"},
      {"no header", {{"x"}, footer}, "Missing FileHeader"},
      {"header only", {header}, "Missing FileHeader"},
      {"last field not >>", {{"<<", "START", "CSV", "VER04", "x"}, {"r"}, footer}, "Missing FileHeader"},
      {"VERx is no version", {{"<<", "START", "CSV", "VERx", ">>"}, {"r"}, footer}, "Missing FileHeader"},
      {"XYZ04 is no version", {{"<<", "START", "CSV", "XYZ04", ">>"}, {"r"}, footer}, "Missing FileHeader"},
      {"wrong version",
       {{"<<", "START", "CSV", "VER03", ">>"}, {"r"}, {"<<", "END", "CSV", "VER03", ">>"}},
       "Unsupported file version."},
      {"no footer", {header, {"r"}}, "Missing FileFooter"},
      {"footer right after header", {header, footer}, "Missing FileFooter"},
      {"cut off before the footer", {header, {"r1"}, {"r2"}}, "Missing FileFooter"},
      {"footer of another version",
       {header, {"r"}, {"<<", "END", "CSV", "VER4", ">>"}},
       "Missing FileFooter"},
      {"text before header ignored", {{"junk"}, {"more", "junk"}, header, {"r"}, footer}, "", {{"r"}}},
      {"VER4 unpadded", {{"<<", "START", "CSV", "VER4", ">>"}, {"r"}, footer}, "", {{"r"}}},
      {"VER04x", {{"<<", "START", "CSV", "VER04x", ">>"}, {"r"}, footer}, "", {{"r"}}},
      {"rows after footer ignored, last footer counts",
       {header, {"r"}, footer, {"s"}, footer, {"t"}},
       "",
       {{"r"}, footer, {"s"}}},
      {"six-field header",
       {{"<<", "START", "CSV", "VER04", "MODE", ">>"}, {"r"}, footer},
       "",
       {{"r"}},
       "MODE"},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    FrameParser parser;
    parser.additionalHeaderTokens() = "stale";
    if (*c.error)
    {
      EXPECT_THROW_MSG(parser.parseData(c.rows), std::runtime_error, c.error);
      EXPECT_TRUE(logged(std::string("Error\tCSV File : \t ") + c.error));
      continue;
    }
    EXPECT_TRUE(parser.parseData(c.rows));
    EXPECT_EQ(parser.content, c.content);
    EXPECT_EQ(parser.additionalHeaderTokens(), c.token);
    EXPECT_EQ(parser.getFileVersion(), 4u);
  }
}

// A failed save keeps the old file (the atomic writer's own test sees that no temporary is left).
TEST_F(CSVFileParserBaseTest, WritesAndReadsFramedFilesAndRefusesNulBytesBothWays)
{
  FrameParser writer;
  const std::string path = dir.file("frame.csv");
  ASSERT_TRUE(writer.saveAs(path));
  EXPECT_EQ(OmbrixTest::readFile(path),
            "<<,START,CSV,VER04,>>\na,b\n\"c,d\",\"e\nf\"\n<<,END,CSV,VER04,>>\n");
  EXPECT_TRUE(logged("Informational\tCSV File : \t Saving " + path));
  writer.additionalHeaderTokens() = "MODE";
  EXPECT_EQ(writer.generateData(),
            (Table{{"<<", "START", "CSV", "VER04", "MODE", ">>"}, {"a", "b"}, {"c,d", "e\nf"}, footer}));

  FrameParser reader;
  EXPECT_TRUE(reader.parseFile(path));
  EXPECT_EQ(reader.content, writer.toWrite);
  EXPECT_EQ(reader.getFileName(), path);
  EXPECT_FALSE(reader.isLegacy());
  EXPECT_TRUE(logged("Informational\tCSV File : " + path + "\t Reading " + path));

  // A missing file is a warning, not an error; a malformed one is the CSV parser's error: zero-filled
  // where the footer should be, as a power loss leaves a file.
  const std::string absent = dir.file("absent.csv");
  EXPECT_FALSE(reader.parseFile(absent));
  EXPECT_TRUE(logged("Warning\tCSV File : " + absent + "\t File does not exist : " + absent));
  OmbrixTest::writeFile(path, "<<,START,CSV,VER04,>>\na,b\n" + std::string(21, '\0'));
  EXPECT_THROW_MSG(reader.parseFile(path), std::runtime_error,
                   "CSV file '" + path +
                       "' holds a NUL byte at offset 26, as a file does that was not completely written");
  writer.toWrite = {{std::string("a\0b", 3)}};
  EXPECT_THROW_MSG(writer.saveAs(path), std::invalid_argument,
                   "CSV row 2, field 1 holds a NUL byte, which a CSV exchange file cannot carry");
  EXPECT_EQ(OmbrixTest::readFile(path).size(), 47u);
}

TEST_F(CSVFileParserBaseTest, ColumnMapNamesReportsAndEntityMatching)
{
  FrameParser parser;
  parser.generateHeaderMap({"A", "B", "A"});
  EXPECT_EQ(parser.getNumberOfFields(), 2u);
  std::vector<std::string> row{"0", "1", "2"};
  std::vector<std::string> shortRow{"0"};
  // A repeated name keeps its last index; unknown names and short rows give "" and take nothing.
  for (const auto& [name, field] : {std::pair("A", "2"), std::pair("B", "1"), std::pair("C", "")})
    EXPECT_EQ(parser.getField(name, row), field) << name;
  EXPECT_EQ(parser.getField("B", shortRow), "");
  parser.setField("C", "x", row);
  parser.setField("B", "x", shortRow);
  EXPECT_EQ(shortRow, (std::vector<std::string>{"0"}));
  parser.setField("B", "x", row);
  EXPECT_EQ(row, (std::vector<std::string>{"0", "x", "2"}));

  EXPECT_EQ(parser.convertFullEntityName("A->B->C"), "A->B->C");
  parser.setUseFullEntityNames(true);
  EXPECT_EQ(parser.convertFullEntityName("A->B->C"), "C");
  EXPECT_EQ(parser.convertFullEntityName("C"), "C");

  parser.reportError("first problem", false);
  parser.reportInvalidAttribute("second problem", false);
  EXPECT_TRUE(logged("Error\tCSV File : \t first problem"));
  EXPECT_TRUE(logged("Error\tCSV File : \t second problem"));
  EXPECT_THROW_MSG(parser.reportError("third %s", true), std::runtime_error, "third %s");
  EXPECT_THROW_MSG(parser.reportInvalidAttribute("fourth", true), Ombrix::AttributeReadError, "fourth");
  EXPECT_TRUE(logged("Error\tCSV File : \t third %s"));

  using namespace CSVTest;
  EntityCollection collection;
  buildModel(collection);
  Entity* server = collection.getEntity(EntityID(4, 17));
  parser.setUseFullEntityNames(false);
  EXPECT_TRUE(parser.isEntity(server, EntityID(4, 17)));
  EXPECT_FALSE(parser.isEntity(nullptr, EntityID(4, 17)));
  EXPECT_TRUE(parser.isEntity(server, "Server", "S4"));
  EXPECT_TRUE(parser.isEntity(server, "Server", "P1, \"main\"->S4"));
  EXPECT_FALSE(parser.isEntity(server, "server", "S4"));
  EXPECT_FALSE(parser.isEntity(server, "Server", "S5"));
  EXPECT_TRUE(parser.isEntity(server, EntityID(4, 17), "Server", "S4"));
  EXPECT_FALSE(parser.isEntity(server, EntityID(5, 17), "Server", "S4"));
}

} // namespace
