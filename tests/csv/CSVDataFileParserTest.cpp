#include "ombrix/csv/CSVDataFileParser.h"

#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "csv/CSVTestModel.h"

#include <cmath>
#include <limits>

namespace
{

using namespace CSVTest;
using Ombrix::CSVDataFileParser;
using Ombrix::CSVDefinitionFileParser;
using Table = Ombrix::CSVFileParserBase::Table;
using Chronologies = CSVDataFileParser::ChronologySet;

const Chronologies initialAndCurrent{Chronology::Initial, Chronology::Current};

class CSVDataFileParserTest : public LoggedTest
{
protected:
  void SetUp() override
  {
    LoggedTest::SetUp();
    buildModel(solver);
    CSVDefinitionFileParser writer(solver);
    writer.setChronologies({Chronology::Initial});
    ASSERT_TRUE(writer.saveAs(dir.file("def.csv")));
    CSVDefinitionFileParser reader(client);
    ASSERT_TRUE(reader.parseFile(dir.file("def.csv")));
  }

  Attribute& at(EntityCollection& collection, EntityID id, const char* path)
  {
    return collection.getEntity(id)->getAttribute(AttributePath(path));
  }

  std::string framed(const std::string& content) const
  {
    return "<<,START,CSV,VER04,>>\n" + content + "<<,END,CSV,VER04,>>\n";
  }

  EntityCollection solver;
  EntityCollection client;
  std::string outPath = dir.file("out.csv");
  std::string inPath = dir.file("in.csv");
};

const std::string header = "EntityID,EntityType,EntityName,AttributePath,CurrentValue,Unit\n";
const std::string sc = "1-1,Solution Control,Solution Control,";

TEST_F(CSVDataFileParserTest, ColumnHeaderAndRowOrder)
{
  CSVDataFileParser parser(solver, {Chronology::Next, Chronology::Initial});
  parser.setUseFullEntityNames(true);
  const Table table = parser.generateData();
  EXPECT_EQ(table[1], (std::vector<std::string>{"EntityID", "EntityType", "FullEntityName", "AttributePath",
                                                "InitialValue", "NextValue", "Unit"}));
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
  EXPECT_EQ(table[8], (std::vector<std::string>{"3-17", "Pump", "P1, \"main\"", "Speed", "1.500000",
                                                "2.250000", "rpm"}));
  EXPECT_EQ(table[17][2], "P1, \"main\"->S4");
}

TEST_F(CSVDataFileParserTest, SolutionControlWrittenFirstEvenWhenListedLater)
{
  EntityCollection collection;
  collection.addRootEntity(makeEntity("Pump", "P", EntityID(2, 2)));
  addDouble(*collection.getEntity(EntityID(2, 2)), "X", AccessType::ReadWrite, 1.0);
  collection.addRootEntity(makeSolutionControl(1, false, 0, 0));
  CSVDataFileParser parser(collection, {Chronology::Current});
  const Table table = parser.generateData();
  EXPECT_EQ(table[2][0], "1-1");
  EXPECT_EQ(table[table.size() - 2][0], "2-2");
  EXPECT_EQ(table.size(), 2u + 6u + 1u + 1u);
}

TEST_F(CSVDataFileParserTest, OutThenInRoundTrip)
{
  // Solver to client: everything, as internal writes.
  at(solver, EntityID(3, 17), "Speed").setDoubleValue(7.75, Chronology::Current, false);
  at(solver, EntityID(3, 17), "Label").setStringValue("a,b\r\nc \"d\"", Chronology::Current, false);
  at(solver, EntityID(1, 1), "Results.Iteration").setIntValue(13, Chronology::Current, false);
  at(solver, EntityID(5, 17), "Load").setDoubleValue(-2.5, Chronology::Current, false);
  CSVDataFileParser out(solver, initialAndCurrent);
  ASSERT_TRUE(out.saveAs(outPath));
  CSVDataFileParser clientReader(client, initialAndCurrent);
  clientReader.setKorvanSDK(true);
  ASSERT_TRUE(clientReader.parseFile(outPath));
  EXPECT_EQ(CSVDataFileParser(client, initialAndCurrent).generateData(), out.generateData());
  EXPECT_EQ(at(client, EntityID(3, 17), "Label").getStringValue(Chronology::Current, false),
            "a,b\r\nc \"d\"");
  ASSERT_TRUE(clientReader.hasFileSimulationTime());
  EXPECT_EQ(clientReader.getFileSimulationTime().getIteration(), 13);
  EXPECT_TRUE(clientReader.getFileSimulationTime().isTransient());
  EXPECT_EQ(clientReader.getFileSimulationTime().getTime(), 0.5);
  EXPECT_EQ(clientReader.getFileSimulationTime().getTimeStep(), 0.25);
  EXPECT_TRUE(logged("Processing Simulation Iteration and Time"));
  EXPECT_TRUE(logged("3-17:Speed Processing Attribute "));

  // Client to solver: user writes; read-only rows are skipped.
  at(client, EntityID(3, 17), "Count").setIntValue(42, Chronology::Current, true);
  at(client, EntityID(3, 17), "Geometry.Length").setDoubleValue(99.0, Chronology::Current, false);
  CSVDataFileParser in(client, {Chronology::Current});
  ASSERT_TRUE(in.saveAs(inPath));
  CSVDataFileParser solverReader(solver, {Chronology::Current});
  solverReader.setSkipReadOnly(true);
  ASSERT_TRUE(solverReader.parseFile(inPath));
  EXPECT_EQ(at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false), 42);
  EXPECT_EQ(at(solver, EntityID(3, 17), "Geometry.Length").getDoubleValue(Chronology::Current, false), 2.0);
  EXPECT_FALSE(solverReader.isEndRequested());

  // Without skipping, the read-only rows are refused and nothing at all is applied.
  at(client, EntityID(3, 17), "Count").setIntValue(43, Chronology::Current, true);
  ASSERT_TRUE(in.saveAs(inPath));
  CSVDataFileParser strict(solver, {Chronology::Current});
  EXPECT_THROW_MSG(strict.parseFile(inPath), Ombrix::AttributeReadError,
                   inPath + ", row 3: No Write Access to 1-1:Results.Iteration");
  EXPECT_EQ(at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false), 42);
}

TEST_F(CSVDataFileParserTest, LargeFileIsTheTextOfTheGeneratedTable)
{
  addCells(solver, 500); // more rows than one write batch
  CSVDataFileParser out(solver, initialAndCurrent);
  ASSERT_TRUE(out.saveAs(outPath));
  const std::string text = OmbrixTest::readFile(outPath);
  EXPECT_EQ(text, joined(out.generateData()));
  EXPECT_NE(text.find("\n114-17,Cell,\"C,14\",Value9,9.014000,9.014000,Pa\n"), std::string::npos);

  EXPECT_FALSE(out.saveAs(dir.file("missing/out.csv")));
  EXPECT_FALSE(std::filesystem::exists(dir.file("missing")));
}

TEST_F(CSVDataFileParserTest, RoundTripNumberFormatIsBitIdentical)
{
  at(solver, EntityID(3, 17), "Speed").setDoubleValue(1e-7, Chronology::Current, false);
  at(solver, EntityID(3, 17), "Ratio").setFloatValue(1.0f / 3.0f, Chronology::Current, false);
  at(solver, EntityID(4, 17), "Load").setDoubleValue(std::nextafter(1.0, 2.0), Chronology::Current, false);
  for (auto format : {NumberFormat::Fixed, NumberFormat::RoundTrip})
  {
    SCOPED_TRACE(format == NumberFormat::Fixed ? "fixed" : "round trip");
    CSVDataFileParser out(solver, {Chronology::Current});
    out.setNumberFormat(format);
    ASSERT_TRUE(out.saveAs(outPath));
    CSVDataFileParser reader(client, {Chronology::Current});
    reader.setKorvanSDK(true);
    ASSERT_TRUE(reader.parseFile(outPath));
    const double speed = at(client, EntityID(3, 17), "Speed").getDoubleValue(Chronology::Current, false);
    const float ratio = at(client, EntityID(3, 17), "Ratio").getFloatValue(Chronology::Current, false);
    const double load = at(client, EntityID(4, 17), "Load").getDoubleValue(Chronology::Current, false);
    if (format == NumberFormat::Fixed)
    {
      EXPECT_EQ(speed, 0.0); // "%f" keeps six decimals only
      EXPECT_EQ(load, 1.0);
    }
    else
    {
      EXPECT_EQ(speed, 1e-7);
      EXPECT_EQ(ratio, 1.0f / 3.0f);
      EXPECT_EQ(load, std::nextafter(1.0, 2.0));
    }
  }
}

TEST_F(CSVDataFileParserTest, SimulationTimeFromTheSolutionControlRows)
{
  struct Case
  {
    const char* name;
    std::string iteration, transient, time;
    int expectedIteration;
    bool expectedTransient;
    double expectedTime;
    bool end;
  };
  const Case cases[] = {
      {"transient", "20", "Yes", "1.5", 20, true, 1.5, false},
      {"steady", "21", "No", "1.5", 21, false, std::numeric_limits<double>::quiet_NaN(), false},
      {"NOW is the current point", "NOW", "No", "9", 12, true, 0.5, false},
      {"END asks to stop", "END", "No", "9", 12, true, 0.5, true},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration," + c.iteration + ",\n" + sc +
                                         "Transient.Time Varying," + c.transient + ",\n" + sc +
                                         "Results.Time," + c.time + ",s\n"));
    CSVDataFileParser reader(solver, {Chronology::Current});
    reader.setSkipReadOnly(true);
    ASSERT_TRUE(reader.parseFile(inPath));
    ASSERT_TRUE(reader.hasFileSimulationTime());
    const Ombrix::CSVSimulationTime t = reader.getFileSimulationTime();
    EXPECT_EQ(t.getIteration(), c.expectedIteration);
    EXPECT_EQ(t.isTransient(), c.expectedTransient);
    if (c.expectedTransient)
    {
      EXPECT_EQ(t.getTime(), c.expectedTime);
    }
    EXPECT_EQ(reader.isEndRequested(), c.end);
  }
  // Trusted reading stores a numeric iteration, but never the words.
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,NOW,\n"));
  CSVDataFileParser trusted(client, {Chronology::Current});
  trusted.setKorvanSDK(true);
  EXPECT_TRUE(trusted.parseFile(inPath));
}

TEST_F(CSVDataFileParserTest, AWriterAnswersNowOrEndInsteadOfTheIteration)
{
  at(client, EntityID(1, 1), "Results.Iteration").setIntValue(7, Chronology::Current, false);
  struct Case
  {
    std::string word;
    std::string field; // what the iteration row carries
    int iteration;     // the file's iteration as the solver reads it (its own is 12)
    bool end;
  };
  for (const Case& c : {Case{"", "7", 7, false}, Case{"NOW", "NOW", 12, false}, Case{"END", "END", 12, true}})
  {
    SCOPED_TRACE(c.word);
    CSVDataFileParser writer(client, {Chronology::Initial, Chronology::Current});
    writer.setIterationWord(c.word);
    ASSERT_TRUE(writer.saveAs(inPath));
    const std::string text = OmbrixTest::readFile(inPath);
    const std::string initial = c.word.empty() ? "12" : c.word; // both columns carry the word
    EXPECT_NE(text.find(sc + "Results.Iteration," + initial + "," + c.field + ",\n"), std::string::npos)
        << text;

    CSVDataFileParser reader(solver, {Chronology::Current});
    reader.setSkipReadOnly(true);
    ASSERT_TRUE(reader.parseFile(inPath));
    EXPECT_EQ(reader.getFileSimulationTime().getIteration(), c.iteration);
    EXPECT_EQ(reader.isEndRequested(), c.end);
  }
  CSVDataFileParser writer(client, {Chronology::Current});
  EXPECT_THROW_MSG(writer.setIterationWord("now"), std::invalid_argument,
                   "Iteration word must be \"NOW\", \"END\" or empty, not \"now\"");
  EXPECT_EQ(writer.getIterationWord(), "");
}

TEST_F(CSVDataFileParserTest, ShortcutsWriteThroughToTheirTargets)
{
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,12,\n" +
                                       "3-17,Pump,\"P1, \"\"main\"\"\",Both Diameters,0.75,m\n"));
  CSVDataFileParser reader(solver, {Chronology::Current});
  reader.setSkipReadOnly(true);
  ASSERT_TRUE(reader.parseFile(inPath));
  EXPECT_EQ(at(solver, EntityID(3, 17), "Geometry.Diameter").getDoubleValue(Chronology::Current, false),
            0.75);
  EXPECT_EQ(at(solver, EntityID(3, 17), "Inlet Diameter").getDoubleValue(Chronology::Current, false), 0.75);
  EXPECT_TRUE(logged("3-17:Both Diameters Processing Shortcut target : 3-17:Geometry.Diameter"));
  EXPECT_TRUE(logged("3-17:Both Diameters Processing Shortcut target : 3-17:Inlet Diameter"));

  at(solver, EntityID(3, 17), "Inlet Diameter").setAccessType(AccessType::ReadOnly);
  CSVDataFileParser strict(solver, {Chronology::Current});
  OmbrixTest::writeFile(inPath, framed(header + "3-17,Pump,\"P1, \"\"main\"\"\",Both Diameters,0.5,m\n"));
  strict.setFatalErrors(true);
  solver.getEntity(EntityID(1, 1))->setType("Not Solution Control"); // no solution control needed here
  EXPECT_THROW_MSG(
      strict.parseFile(inPath), Ombrix::AttributeReadError,
      inPath + ", row 3: No Write Access to shortcut target 3-17:Inlet Diameter of 3-17:Both Diameters");
  EXPECT_EQ(at(solver, EntityID(3, 17), "Geometry.Diameter").getDoubleValue(Chronology::Current, false),
            0.75);
  strict.setSkipReadOnly(true);
  EXPECT_TRUE(strict.parseFile(inPath));
  EXPECT_EQ(at(solver, EntityID(3, 17), "Geometry.Diameter").getDoubleValue(Chronology::Current, false), 0.5);
  EXPECT_EQ(at(solver, EntityID(3, 17), "Inlet Diameter").getDoubleValue(Chronology::Current, false), 0.75);
}

TEST_F(CSVDataFileParserTest, RecordsTheValuesItStoresInFileOrder)
{
  const std::string pump = "3-17,Pump,\"P1, \"\"main\"\"\",";
  OmbrixTest::writeFile(inPath,
                        framed("EntityID,EntityType,EntityName,AttributePath,InitialValue,CurrentValue,"
                               "Unit\n" +
                               sc + "Results.Iteration,12,12,\n" + pump + "On,,No,\n" + pump +
                               "Both Diameters,0.5,0.75,m\n"));
  CSVDataFileParser reader(solver, initialAndCurrent);
  reader.setKorvanSDK(true);
  reader.setRecordAppliedValues(true);
  ASSERT_TRUE(reader.parseFile(inPath));
  Attribute* iteration = &at(solver, EntityID(1, 1), "Results.Iteration");
  Attribute* on = &at(solver, EntityID(3, 17), "On");
  Attribute* diameter = &at(solver, EntityID(3, 17), "Geometry.Diameter");
  Attribute* inlet = &at(solver, EntityID(3, 17), "Inlet Diameter");
  std::vector<std::pair<Attribute*, Chronology>> applied;
  for (const auto& value : reader.getAppliedValues())
    applied.emplace_back(value.attribute, value.chronology);
  EXPECT_EQ(applied, (std::vector<std::pair<Attribute*, Chronology>>{{iteration, Chronology::Initial},
                                                                     {iteration, Chronology::Current},
                                                                     {on, Chronology::Current},
                                                                     {diameter, Chronology::Initial},
                                                                     {diameter, Chronology::Current},
                                                                     {inlet, Chronology::Initial},
                                                                     {inlet, Chronology::Current}}));

  OmbrixTest::writeFile(inPath,
                        framed(header + sc + "Results.Iteration,12,\n" + pump + "Geometry.Diameter,1,cm\n"));
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
    std::string message;
    bool attributeError;
  };
  const std::string pump = "3-17,Pump,\"P1, \"\"main\"\"\",";
  const Case cases[] = {
      {"unknown entity", "9-9,Pump,P,Speed,1,rpm\n", ", row 5: Unable to find entity 9-9 'Pump' 'P'", false},
      {"ID with other name", "3-17,Pump,P2,Speed,1,rpm\n",
       ", row 5: Unable to match entity ID with name 3-17 'Pump' 'P2'", false},
      {"ID with other type", "3-17,Valve,\"P1, \"\"main\"\"\",Speed,1,rpm\n",
       ", row 5: Unable to match entity ID with name 3-17 'Valve' 'P1, \"main\"'", false},
      {"bad ID", "x3,Pump,P,Speed,1,rpm\n", ", row 5: Invalid entity ID 'x3': invalid stoi argument", false},
      {"unknown attribute", pump + "Torque,1,Nm\n", ", row 5: Unable to find attribute 3-17:Torque", true},
      {"empty unit", pump + "Speed,1,\n", ", row 5: 3-17:Speed Empty Unit", true},
      {"wrong unit", pump + "Speed,1,rps\n",
       ", row 5: Invalid Unit expecting rpm but received rps for 3-17:Speed", true},
      {"unit on unitless", pump + "Count,1,m\n",
       ", row 5: Invalid Unit expecting  but received m for 3-17:Count", true},
      {"read only", pump + "Geometry.Length,1,m\n", ", row 5: No Write Access to 3-17:Geometry.Length", true},
      {"no access", pump + "Geometry.Height,1,m\n", ", row 5: No Write Access to 3-17:Geometry.Height", true},
      {"bad number", pump + "Speed,fast,rpm\n",
       ", row 5: Invalid value 'fast' in CurrentValue of 3-17:Speed: invalid stod argument", true},
      {"bad int", pump + "Count,99999999999,\n",
       ", row 5: Invalid value '99999999999' in CurrentValue of 3-17:Count: stoi argument out of range",
       true},
      {"bad bool", pump + "On,perhaps,\n",
       ", row 5: Invalid value 'perhaps' in CurrentValue of 3-17:On: Invalid bool text 'perhaps'", true},
      {"composite has no value", pump + "Geometry,1,\n", ", row 5: Attribute 3-17:Geometry carries no value",
       true},
      {"short row", pump + "Speed\n", ", row 5: Row has 4 fields, the column header has 6", false},
  };
  at(solver, EntityID(1, 1), "Results.Iteration").setAccessType(AccessType::ReadWrite);
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    const bool skipReadOnly = c.message.find("No Write Access") == std::string::npos;
    // A good row first: it must not be applied when a later row fails.
    OmbrixTest::writeFile(inPath,
                          framed(header + sc + "Results.Iteration,12,\n" + pump + "Count,77,\n" + c.rows));
    CSVDataFileParser reader(solver, {Chronology::Current});
    reader.setSkipReadOnly(skipReadOnly);
    if (c.attributeError)
      EXPECT_THROW_MSG(reader.parseFile(inPath), Ombrix::AttributeReadError, inPath + c.message);
    else
      EXPECT_THROW_MSG(reader.parseFile(inPath), std::runtime_error, inPath + c.message);
    EXPECT_TRUE(logged(inPath + c.message));
    EXPECT_EQ(at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false), -7);

    // Not fatal: the good row is applied, the bad one logged and passed over.
    CSVDataFileParser lenient(solver, {Chronology::Current});
    lenient.setFatalErrors(false);
    lenient.setSkipReadOnly(skipReadOnly);
    EXPECT_FALSE(lenient.parseFile(inPath));
    EXPECT_EQ(at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false), 77);
    at(solver, EntityID(3, 17), "Count").setIntValue(-7, Chronology::Current, false);
  }
}

TEST_F(CSVDataFileParserTest, RepeatedColumnTakesItsLastPlace)
{
  const std::string pump = "3-17,Pump,\"P1, \"\"main\"\"\",";
  OmbrixTest::writeFile(
      inPath, framed("EntityID,EntityType,EntityName,AttributePath,Unit,CurrentValue,Unit\n" + sc +
                     "Results.Iteration,,12,\n" + pump + "Speed,x,3.5,rpm\n" + pump + "Count,,5\n"));
  CSVDataFileParser reader(solver, {Chronology::Current});
  reader.setSkipReadOnly(true);
  EXPECT_THROW_MSG(reader.parseFile(inPath), std::runtime_error,
                   inPath + ", row 5: Row has 6 fields, the column header has 7");
  reader.setFatalErrors(false);
  EXPECT_FALSE(reader.parseFile(inPath));
  EXPECT_EQ(at(solver, EntityID(3, 17), "Speed").getDoubleValue(Chronology::Current, false), 3.5);
}

TEST_F(CSVDataFileParserTest, RefusesNamesThatPathsCannotCarry)
{
  const std::pair<const char*, const char*> cases[] = {
      {"a.b", "the attribute 'a.b' of 3-17:Geometry has a '.' in its name"},
      {"", "an attribute of 3-17:Geometry has an empty name"},
  };
  for (const auto& [name, refusal] : cases)
  {
    SCOPED_TRACE(name);
    EntityCollection model;
    buildModel(model);
    addDouble(static_cast<CompositeAttribute&>(at(model, EntityID(3, 17), "Geometry")), "Added",
              AccessType::ReadWrite, 1.0)
        .setType(name);
    const std::string message =
        std::string("Cannot write the data file: ") + refusal + ", which attribute paths cannot carry";
    CSVDataFileParser out(model, {Chronology::Current});
    EXPECT_THROW_MSG(out.saveAs(outPath), std::runtime_error, message);
    EXPECT_FALSE(std::filesystem::exists(outPath)); // no half-written file is left
    EXPECT_TRUE(logged(message));
  }
}

TEST_F(CSVDataFileParserTest, EntitiesSharingAnIDAreToldApartByTypeAndName)
{
  for (const char* name : {"T1", "T2", "T3"})
  {
    auto tank = makeEntity("Tank", name, EntityID(8, 8));
    addDouble(*tank, "Level", AccessType::ReadWrite, 0.0, "m");
    solver.addRootEntity(std::move(tank));
  }
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,12,\n" + "8-8,Tank,T3,Level,3,m\n" +
                                       "8-8,Tank,T1,Level,1,m\n" + "8-8,Tank,T2,Level,2,m\n"));
  CSVDataFileParser reader(solver, {Chronology::Current});
  reader.setSkipReadOnly(true);
  EXPECT_TRUE(reader.parseFile(inPath));
  for (std::size_t i = 0; i < solver.size(); ++i)
  {
    if (solver[i]->type() != "Tank")
      continue;
    EXPECT_EQ(solver[i]->getAttribute(AttributePath("Level")).getDoubleValue(Chronology::Current, false),
              solver[i]->name() == "T1"   ? 1.0
              : solver[i]->name() == "T2" ? 2.0
                                          : 3.0);
  }
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,12,\n8-8,Tank,T4,Level,4,m\n"));
  EXPECT_THROW_MSG(reader.parseFile(inPath), std::runtime_error,
                   inPath + ", row 4: Unable to match entity ID with name 8-8 'Tank' 'T4'");
}

TEST_F(CSVDataFileParserTest, IgnoreNonExisting)
{
  OmbrixTest::writeFile(inPath, framed(header + sc + "Results.Iteration,12,\n" + "9-9,Pump,P,Speed,1,rpm\n" +
                                       "3-17,Pump,\"P1, \"\"main\"\"\",Torque,1,Nm\n" +
                                       "3-17,Pump,\"P1, \"\"main\"\"\",Count,5,\n"));
  CSVDataFileParser reader(solver, {Chronology::Current});
  reader.setSkipReadOnly(true);
  reader.setIgnoreNonExisting(true);
  EXPECT_TRUE(reader.parseFile(inPath));
  EXPECT_EQ(at(solver, EntityID(3, 17), "Count").getIntValue(Chronology::Current, false), 5);
}

TEST_F(CSVDataFileParserTest, HeaderAndSolutionControlErrors)
{
  struct Case
  {
    const char* name;
    std::string content;
    std::string message;
  };
  const Case cases[] = {
      {"unknown column", "EntityID,EntityType,EntityName,AttributePath,Type,CurrentValue,Unit\n",
       ", row 2: Unknown column 'Type' in the column header"},
      {"missing path column", "EntityID,EntityType,EntityName,CurrentValue,Unit\n",
       ", row 2: Missing column 'AttributePath' in the column header"},
      {"missing solution control", header + "3-17,Pump,\"P1, \"\"main\"\"\",Count,5,\n",
       ", row 2: Missing Solution Control"},
      {"bad iteration", header + sc + "Results.Iteration,twelve,\n",
       ", row 3: Invalid simulation time (iteration 'twelve', time '', time step '')"},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    OmbrixTest::writeFile(inPath, framed(c.content));
    CSVDataFileParser reader(solver, {Chronology::Current});
    EXPECT_THROW_MSG(reader.parseFile(inPath), std::runtime_error, inPath + c.message);
  }
}

TEST_F(CSVDataFileParserTest, UserWritesAreLoggedByTheModel)
{
  OmbrixTest::writeFile(
      inPath, framed(header + sc + "Results.Iteration,12,\n" + "3-17,Pump,\"P1, \"\"main\"\"\",Count,5,\n"));
  const std::string before = OmbrixTest::readFile(logPath);
  CSVDataFileParser reader(solver, {Chronology::Current});
  reader.setSkipReadOnly(true);
  ASSERT_TRUE(reader.parseFile(inPath));
  const std::string after = OmbrixTest::readFile(logPath);
  EXPECT_NE(after.find("Count", before.size()), std::string::npos);
}

} // namespace
