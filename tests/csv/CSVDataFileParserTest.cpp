// Round trips of generated models through out.csv and in.csv are in CSVRoundTripTest, large files in
// CSVDefinitionFileParserTest; here, the exact bytes, the solution-control block, shortcuts, the reading
// options and every row error.
#include "ombrix/csv/CSVDataFileParser.h"

#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "csv/CSVTestModel.h"
#include "support/GroupingLocale.h"

#include <map>

namespace
{

using namespace CSVTest;
using Ombrix::CSVDataFileParser;
using Ombrix::CSVDefinitionFileParser;
using Table = Ombrix::CSVFileParserBase::Table;
using Row = std::vector<std::string>;

const CSVDataFileParser::ChronologySet initialAndCurrent{Chronology::Initial, Chronology::Current};
const std::string header = "EntityID,EntityType,EntityName,AttributePath,CurrentValue,Unit\n";
const std::string sc = "1-1,Solution Control,Solution Control,";
const std::string iteration12 = sc + "Results.Iteration,12,\n";
const std::string pump = "3-17,Pump,\"P1, \"\"main\"\"\",";

class CSVDataFileParserTest : public LoggedTest
{
protected:
  void SetUp() override
  {
    LoggedTest::SetUp();
    buildModel(solver);
    CSVDefinitionFileParser writer(solver);
    writer.setChronologies({Chronology::Initial});
    ASSERT_TRUE(CSVDefinitionFileParser(client).parseData(writer.generateData()));
  }

  Attribute& at(EntityCollection& collection, EntityID id, const char* path)
  {
    return collection.getEntity(id)->getAttribute(AttributePath(path));
  }
  double solverDouble(EntityID id, const char* path)
  {
    return at(solver, id, path).getDoubleValue(Chronology::Current, false);
  }
  int solverCount() { return at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false); }

  // A solver-side reader of in.csv, which now holds `content` framed; it passes read-only rows over.
  CSVDataFileParser inReader(const std::string& content)
  {
    OmbrixTest::writeFile(inPath, framed(content));
    CSVDataFileParser reader(solver, {Chronology::Current});
    reader.setSkipReadOnly(true);
    return reader;
  }

  // Every number written and read here under a host locale that groups digits and writes a decimal comma.
  const OmbrixTest::GroupingLocale locale;
  EntityCollection solver;
  EntityCollection client;
  std::string outPath = dir.file("out.csv");
  std::string inPath = dir.file("in.csv");
};

TEST_F(CSVDataFileParserTest, ColumnHeaderAndRowOrder)
{
  CSVDataFileParser parser(solver, {Chronology::Next, Chronology::Initial});
  parser.setUseFullEntityNames(true);
  const Table table = parser.generateData();
  EXPECT_EQ(table[1], (Row{"EntityID", "EntityType", "FullEntityName", "AttributePath", "InitialValue",
                           "NextValue", "Unit"}));
  std::vector<std::string> places;
  for (std::size_t i = 2; i + 1 < table.size(); ++i)
    places.push_back(table[i][0] + ":" + table[i][3]);
  // Solution control first; "Name" never carried; no rows for composites, links or shortcuts.
  EXPECT_EQ(places,
            (std::vector<std::string>{"1-1:Results.Iteration", "1-1:Results.Time", "1-1:Results.IsConverged",
                                      "1-1:Transient.Time Varying", "1-1:Transient.Definition.Time Step",
                                      "1-1:Ombrix Control.Stop On Convergence", "3-17:Speed", "3-17:Count",
                                      "3-17:On", "3-17:Label", "3-17:Ratio", "3-17:Geometry.Diameter",
                                      "3-17:Geometry.Length", "3-17:Geometry.Height", "3-17:Inlet Diameter",
                                      "4-17:Load", "5-17:Load", "6-17:Load", "7-17:Value"}));
  EXPECT_EQ(table[8], (Row{"3-17", "Pump", "P1, \"main\"", "Speed", "1.500000", "2.250000", "rpm"}));
  EXPECT_EQ(table[17][2], "P1, \"main\"->S4");

  // A reader of other chronologies than the file's applies nothing, and names the columns found and expected.
  ASSERT_TRUE(parser.saveAs(outPath));
  Attribute& count = at(client, EntityID(3, 17), "Count");
  count.setIntValue(5, Chronology::Current, false);
  CSVDataFileParser current(client, {Chronology::Current});
  current.setKorvanSDK(true);
  EXPECT_TRUE(current.parseFile(outPath));
  EXPECT_EQ(count.getIntValue(Chronology::Current, false), 5);
  EXPECT_TRUE(
      logged("Warning\tCSV File : " + outPath + "\t " + outPath +
             ", row 2: Value columns found: InitialValue, NextValue; expected: CurrentValue. Only the "
             "expected columns are read"));
  CSVDataFileParser same(client, {Chronology::Next, Chronology::Initial});
  same.setKorvanSDK(true);
  EXPECT_TRUE(same.parseFile(outPath));
  EXPECT_FALSE(logged("expected: InitialValue, NextValue. Only the expected columns are read"));

  // Solution control comes first even when the collection lists it later.
  EntityCollection collection;
  collection.addRootEntity(makeEntity("Pump", "P", EntityID(2, 2)));
  addValue(*collection.getEntity(EntityID(2, 2)), "X", AccessType::ReadWrite, 1.0);
  collection.addRootEntity(makeSolutionControl(1, false, 0, 0));
  const Table later = CSVDataFileParser(collection, {Chronology::Current}).generateData();
  ASSERT_EQ(later.size(), 2u + 6u + 1u + 1u);
  EXPECT_EQ(later[2][0], "1-1");
  EXPECT_EQ(later[8][0], "2-2");
}

TEST_F(CSVDataFileParserTest, SimulationTimeAndIterationWords)
{
  // {iteration, transient, time, timeText of the file's time, end}: NOW and END give the solver's own point.
  const std::tuple<std::string, std::string, std::string, std::string, bool> cases[] = {
      {"20", "Yes", "1.5", "20 1 1.5 nan", false},
      {"21", "No", "1.5", "21 0 nan nan", false},
      {"NOW", "No", "9", "12 1 0.5 0.25", false},
      {"END", "No", "9", "12 1 0.5 0.25", true}};
  for (const auto& [iteration, transient, time, expected, end] : cases)
  {
    SCOPED_TRACE(iteration);
    CSVDataFileParser reader =
        inReader(header + sc + "Results.Iteration," + iteration + ",\n" + sc + "Transient.Time Varying," +
                 transient + ",\n" + sc + "Results.Time," + time + ",s\n");
    ASSERT_TRUE(reader.parseFile(inPath));
    ASSERT_TRUE(reader.hasFileSimulationTime());
    EXPECT_EQ(timeText(reader.getFileSimulationTime()), expected);
    EXPECT_EQ(reader.isEndRequested(), end);
  }
  EXPECT_TRUE(logged("Processing Simulation Iteration and Time"));
  EXPECT_TRUE(logged("1-1:Results.Time Processing Attribute "));
  // Trusted reading stores a numeric iteration, but never the words.
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,NOW,\n"));
  CSVDataFileParser trusted(client, {Chronology::Current});
  trusted.setKorvanSDK(true);
  EXPECT_TRUE(trusted.parseFile(inPath));

  // A client writes NOW or END instead of its iteration in every value column.
  at(client, EntityID(1, 1), "Results.Iteration").setIntValue(7, Chronology::Current, false);
  // {word, fields of the iteration row, the file's iteration as the solver reads it (its own is 12), end}
  const std::tuple<std::string, std::string, int, bool> words[] = {
      {"", "12,7", 7, false}, {"NOW", "NOW,NOW", 12, false}, {"END", "END,END", 12, true}};
  for (const auto& [word, fields, iteration, end] : words)
  {
    SCOPED_TRACE(word);
    CSVDataFileParser writer(client, initialAndCurrent);
    writer.setIterationWord(word);
    ASSERT_TRUE(writer.saveAs(inPath));
    const std::string text = OmbrixTest::readFile(inPath);
    EXPECT_NE(text.find(sc + "Results.Iteration," + fields + ",\n"), std::string::npos) << text;
    CSVDataFileParser reader(solver, {Chronology::Current});
    reader.setSkipReadOnly(true);
    ASSERT_TRUE(reader.parseFile(inPath));
    EXPECT_EQ(reader.getFileSimulationTime().getIteration(), iteration);
    EXPECT_EQ(reader.isEndRequested(), end);
  }
  CSVDataFileParser writer(client, {Chronology::Current});
  EXPECT_THROW_MSG(writer.setIterationWord("now"), std::invalid_argument,
                   "Iteration word must be \"NOW\", \"END\" or empty, not \"now\"");
  EXPECT_EQ(writer.getIterationWord(), "");
}

TEST_F(CSVDataFileParserTest, ShortcutsWriteThroughToTheirTargetsAsUserWrites)
{
  ASSERT_TRUE(inReader(header + iteration12 + pump + "Both Diameters,0.75,m\n").parseFile(inPath));
  EXPECT_EQ(solverDouble(EntityID(3, 17), "Geometry.Diameter"), 0.75);
  EXPECT_EQ(solverDouble(EntityID(3, 17), "Inlet Diameter"), 0.75);
  EXPECT_TRUE(logged("3-17:Both Diameters Processing Shortcut target : 3-17:Geometry.Diameter"));
  EXPECT_TRUE(logged("3-17:Both Diameters Processing Shortcut target : 3-17:Inlet Diameter"));
  // The model records a user's writes.
  EXPECT_TRUE(logged("Attribute '3-17:Inlet Diameter:Current ,[3]' set to '0.750000'"));

  at(solver, EntityID(3, 17), "Inlet Diameter").setAccessType(AccessType::ReadOnly);
  solver.getEntity(EntityID(1, 1))->setType("Not Solution Control"); // no solution control needed here
  CSVDataFileParser strict = inReader(header + pump + "Both Diameters,0.5,m\n");
  strict.setSkipReadOnly(false);
  EXPECT_THROW_MSG(
      strict.parseFile(inPath), Ombrix::AttributeReadError,
      inPath + ", row 3: No Write Access to shortcut target 3-17:Inlet Diameter of 3-17:Both Diameters");
  EXPECT_EQ(solverDouble(EntityID(3, 17), "Geometry.Diameter"), 0.75);
  strict.setSkipReadOnly(true);
  EXPECT_TRUE(strict.parseFile(inPath));
  EXPECT_EQ(solverDouble(EntityID(3, 17), "Geometry.Diameter"), 0.5);
  EXPECT_EQ(solverDouble(EntityID(3, 17), "Inlet Diameter"), 0.75);
}

TEST_F(CSVDataFileParserTest, RecordsTheValuesItStoresInFileOrder)
{
  OmbrixTest::writeFile(inPath,
                        framed("EntityID,EntityType,EntityName,AttributePath,InitialValue,CurrentValue,"
                               "Unit\n" +
                               sc + "Results.Iteration,12,12,\n" + pump + "On,,No,\n" + pump +
                               "Both Diameters,0.5,0.75,m\n"));
  CSVDataFileParser reader(solver, initialAndCurrent);
  reader.setKorvanSDK(true);
  reader.setRecordAppliedValues(true);
  ASSERT_TRUE(reader.parseFile(inPath));
  // Internal writes, which the model does not record.
  EXPECT_FALSE(logged("Attribute '1-1:Results.Iteration:Current ,[3]' set to '12'"));
  std::vector<std::string> applied;
  for (const auto& value : reader.getAppliedValues())
    applied.push_back(toString(value.attribute->getEntityIDAndAttributePath()) + " " +
                      KorvanSDK::chronologyToString(value.chronology));
  EXPECT_EQ(applied, (std::vector<std::string>{
                         "1-1:Results.Iteration Initial", "1-1:Results.Iteration Current", "3-17:On Current",
                         "3-17:Geometry.Diameter Initial", "3-17:Geometry.Diameter Current",
                         "3-17:Inlet Diameter Initial", "3-17:Inlet Diameter Current"}));

  OmbrixTest::writeFile(inPath, framed(header + iteration12 + pump + "Geometry.Diameter,1,cm\n"));
  EXPECT_THROW_MSG(reader.parseFile(inPath), Ombrix::AttributeReadError,
                   inPath + ", row 4: Invalid Unit expecting m but received cm for 3-17:Geometry.Diameter");
  EXPECT_TRUE(reader.getAppliedValues().empty());
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,13,\n"));
  ASSERT_TRUE(reader.parseFile(inPath));
  EXPECT_EQ(reader.getAppliedValues().size(), 1u);
  reader.setRecordAppliedValues(false);
  EXPECT_TRUE(reader.getAppliedValues().empty());
}

TEST_F(CSVDataFileParserTest, BadRowsAreReportedWithFileAndRowAndNothingIsApplied)
{
  struct Case
  {
    const char* name;
    std::string rows;
    std::string message; // after "<file>, row 5: "
    bool attributeError;
    bool ignorable = false; // passed over with setIgnoreNonExisting
  };
  const Case cases[] = {
      {"unknown entity", "9-9,Pump,P,Speed,1,rpm\n", "Unable to find entity 9-9 'Pump' 'P'", false, true},
      {"ID with other name", "3-17,Pump,P2,Speed,1,rpm\n",
       "Unable to match entity ID with name 3-17 'Pump' 'P2'", false},
      {"ID with other type", "3-17,Valve,\"P1, \"\"main\"\"\",Speed,1,rpm\n",
       "Unable to match entity ID with name 3-17 'Valve' 'P1, \"main\"'", false},
      {"bad ID", "x3,Pump,P,Speed,1,rpm\n", "Invalid entity ID 'x3': invalid stoi argument", false},
      {"unknown attribute", pump + "Torque,1,Nm\n", "Unable to find attribute 3-17:Torque", true, true},
      {"empty unit", pump + "Speed,1,\n", "3-17:Speed Empty Unit", true},
      {"wrong unit", pump + "Speed,1,rps\n", "Invalid Unit expecting rpm but received rps for 3-17:Speed",
       true},
      {"unit on unitless", pump + "Count,1,m\n", "Invalid Unit expecting  but received m for 3-17:Count",
       true},
      {"read only", pump + "Geometry.Length,1,m\n", "No Write Access to 3-17:Geometry.Length", true},
      {"no access", pump + "Geometry.Height,1,m\n", "No Write Access to 3-17:Geometry.Height", true},
      {"bad number", pump + "Speed,fast,rpm\n",
       "Invalid value 'fast' in CurrentValue of 3-17:Speed: invalid stod argument", true},
      {"bad int", pump + "Count,99999999999,\n",
       "Invalid value '99999999999' in CurrentValue of 3-17:Count: stoi argument out of range", true},
      {"bad bool", pump + "On,perhaps,\n",
       "Invalid value 'perhaps' in CurrentValue of 3-17:On: Invalid bool text 'perhaps'", true},
      {"composite has no value", pump + "Geometry,1,\n", "Attribute 3-17:Geometry carries no value", true},
      {"short row", pump + "Speed\n", "Row has 4 fields, the column header has 6", false},
  };
  at(solver, EntityID(1, 1), "Results.Iteration").setAccessType(AccessType::ReadWrite);
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    // A good row first: it must not be applied when a later row fails.
    CSVDataFileParser reader = inReader(header + iteration12 + pump + "Count,77,\n" + c.rows);
    reader.setSkipReadOnly(c.message.find("No Write Access") == std::string::npos);
    const std::string message = inPath + ", row 5: " + c.message;
    if (c.attributeError)
      EXPECT_THROW_MSG(reader.parseFile(inPath), Ombrix::AttributeReadError, message);
    else
      EXPECT_THROW_MSG(reader.parseFile(inPath), std::runtime_error, message);
    EXPECT_TRUE(logged(message));
    EXPECT_EQ(solverCount(), -7);

    // Not fatal: the good row is applied, the bad one logged and passed over.
    reader.setFatalErrors(false);
    EXPECT_FALSE(reader.parseFile(inPath));
    EXPECT_EQ(solverCount(), 77);
    if (c.ignorable)
    {
      at(solver, EntityID(3, 17), "Count").setIntValue(-7, Chronology::Current, false);
      reader.setIgnoreNonExisting(true);
      EXPECT_TRUE(reader.parseFile(inPath));
      EXPECT_EQ(solverCount(), 77);
    }
    at(solver, EntityID(3, 17), "Count").setIntValue(-7, Chronology::Current, false);
  }
}

TEST_F(CSVDataFileParserTest, HeaderAndSolutionControlErrors)
{
  const std::pair<std::string, std::string> cases[] = {
      {"EntityID,EntityType,EntityName,AttributePath,Type,CurrentValue,Unit\n",
       ", row 2: Unknown column 'Type' in the column header"},
      {"EntityID,EntityType,EntityName,CurrentValue,Unit\n",
       ", row 2: Missing column 'AttributePath' in the column header"},
      {header + pump + "Count,5,\n", ", row 2: Missing Solution Control"},
      {"\n", ", row 2: Missing column header"},
      {header + sc + "Results.Iteration,twelve,\n",
       ", row 3: Invalid simulation time (iteration 'twelve', time '', time step '')"},
  };
  for (const auto& [content, message] : cases)
  {
    SCOPED_TRACE(message);
    OmbrixTest::writeFile(inPath, framed(content));
    EXPECT_THROW_MSG(CSVDataFileParser(solver, {Chronology::Current}).parseFile(inPath), std::runtime_error,
                     inPath + message);
  }
}

TEST_F(CSVDataFileParserTest, StrictNumbersAreWholeOrRefused)
{
  // Path, text, what the standard conversion makes of it, whether the text is entirely that number.
  const std::tuple<const char*, const char*, double, bool> cases[] = {
      // clang-format off
      {"Speed", "50OO", 50, false}, {"Speed", "5000 W/m2", 5000, false}, {"Speed", "5000,5", 5000, false},
      {"Speed", " 12", 12, false}, {"Speed", "12 ", 12, false}, {"Speed", "1e3", 1000, true},
      {"Speed", "-2.5e-3", -2.5e-3, true}, {"Speed", "0x1p3", 8, true}, {"Count", "2.5", 2, false},
      {"Count", "1e3", 1, false}, {"Count", " 12", 12, false}, {"Count", "+7", 7, true},
      {"Count", "-2147483648", -2147483648.0, true}, {"Ratio", "0.5f", 0.5, false}, {"Ratio", "0.5", 0.5, true},
      // clang-format on
  };
  const std::map<std::string, std::pair<std::string, std::string>> kinds{
      {"Speed", {"Double", "rpm"}}, {"Count", {"Int", ""}}, {"Ratio", {"Float", "-"}}};
  for (const auto& [path, text, lenient, whole] : cases)
  {
    SCOPED_TRACE(std::string(path) + " '" + text + "'");
    const auto& [type, unit] = kinds.at(path);
    Attribute& target = at(solver, EntityID(3, 17), path);
    const double before = target.getDoubleValue(Chronology::Current, false);
    CSVDataFileParser reader =
        inReader(header + iteration12 + joined({{"3-17", "Pump", "P1, \"main\"", path, text, unit}}));
    reader.setStrictNumbers(true);
    if (whole)
      EXPECT_TRUE(reader.parseFile(inPath));
    else
      EXPECT_THROW_MSG(reader.parseFile(inPath), Ombrix::AttributeReadError,
                       inPath + ", row 4: Invalid value '" + text + "' in CurrentValue of 3-17:" + path +
                           ": the text is not entirely a number of type " + type);
    EXPECT_EQ(target.getDoubleValue(Chronology::Current, false), whole ? lenient : before);
    reader.setStrictNumbers(false);
    EXPECT_TRUE(reader.parseFile(inPath));
    EXPECT_EQ(target.getDoubleValue(Chronology::Current, false), lenient);
  }
}

TEST_F(CSVDataFileParserTest, EntitiesSharingAnIDAreToldApartByTypeAndName)
{
  std::vector<const Attribute*> levels;
  for (const char* name : {"T1", "T2", "T3"})
  {
    auto tank = makeEntity("Tank", name, EntityID(8, 8));
    levels.push_back(&addValue(*tank, "Level", AccessType::ReadWrite, 0.0, "m"));
    solver.addRootEntity(std::move(tank));
  }
  EXPECT_TRUE(
      inReader(header + iteration12 + "8-8,Tank,T3,Level,3,m\n8-8,Tank,T1,Level,1,m\n8-8,Tank,T2,Level,2,m\n")
          .parseFile(inPath));
  for (std::size_t i = 0; i < levels.size(); ++i)
    EXPECT_EQ(levels[i]->getDoubleValue(Chronology::Current, false), i + 1.0) << "T" << i + 1;
  EXPECT_THROW_MSG(inReader(header + iteration12 + "8-8,Tank,T4,Level,4,m\n").parseFile(inPath),
                   std::runtime_error,
                   inPath + ", row 4: Unable to match entity ID with name 8-8 'Tank' 'T4'");
}

} // namespace
