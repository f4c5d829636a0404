#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/platform/CSVParser.h"

#include "csv/CSVTestModel.h"
#include "support/GroupingLocale.h"

#include <cmath>
#include <functional>

namespace
{

using namespace CSVTest;
using Ombrix::CSVDataFileParser;
using Ombrix::CSVDefinitionFileParser;
using Table = Ombrix::CSVFileParserBase::Table;
using Chronologies = CSVDefinitionFileParser::ChronologySet;

const Chronologies allChronologies{Chronology::Initial, Chronology::Continue, Chronology::TimeStepStart,
                                   Chronology::Current, Chronology::Next};

class CSVDefinitionFileParserTest : public LoggedTest
{
protected:
  // Numbers written and read under a host locale that groups digits and writes a decimal comma.
  const OmbrixTest::GroupingLocale locale;
  std::string path = dir.file("def.csv");
};

ValueType speedStorage(const EntityCollection& collection)
{
  return static_cast<const DoubleAttribute&>(
             *collection.findAttribute(EntityID(3, 17), AttributePath("Speed")))
      .getStorageType();
}

const std::string header = "EntityID,EntityType,EntityName,Access,AttributePath,Type,InitialValue,Unit\n";
const std::string fullHeader =
    "EntityID,EntityType,FullEntityName,Access,AttributePath,Type,InitialValue,Unit\n";

TEST_F(CSVDefinitionFileParserTest, ColumnHeader)
{
  // Value columns in the order of the chronologies.
  const std::tuple<Chronologies, bool, std::string> cases[] = {
      {{}, false, "EntityID,EntityType,EntityName,Access,AttributePath,Type,Unit\n"},
      {allChronologies, true,
       "EntityID,EntityType,FullEntityName,Access,AttributePath,Type,InitialValue,ContinueValue,"
       "TimeStepStartValue,CurrentValue,NextValue,Unit\n"},
  };
  for (const auto& [chronologies, fullNames, text] : cases)
  {
    SCOPED_TRACE(text);
    EntityCollection collection;
    CSVDefinitionFileParser parser(collection);
    parser.setChronologies(chronologies);
    parser.setUseFullEntityNames(fullNames);
    const Table table = parser.generateData();
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(joined({table[1]}), text);
  }
  EXPECT_EQ(joined({CSVDefinitionFileParser::dataHeader(false), CSVDefinitionFileParser::dataHeader(true)}),
            "EntityID,EntityType,EntityName,AttributePath,Type,Access,InitValue,Unit\n"
            "EntityID,EntityType,FullEntityName,AttributePath,Type,Access,InitValue,Unit\n");
}

TEST_F(CSVDefinitionFileParserTest, WrittenRows)
{
  EntityCollection collection;
  buildModel(collection);
  // A shortcut target that does not resolve is left out.
  static_cast<ShortcutAttribute&>(
      collection.getEntity(EntityID(3, 17))->getAttribute(AttributePath("Both Diameters")))
      .addShortcut(AttributePath("Nowhere"));
  CSVDefinitionFileParser parser(collection);
  parser.setChronologies({Chronology::Initial, Chronology::Current});
  const Table table = parser.generateData();
  auto rowOf = [&](const std::string& id, const std::string& path)
  {
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const auto& r) { return r.size() > 4 && r[0] == id && r[4] == path; });
    return row == table.end() ? std::vector<std::string>() : *row;
  };
  using Row = std::vector<std::string>;
  EXPECT_EQ(rowOf("3-17", "Speed"), (Row{"3-17", "Pump", "P1, \"main\"", "ReadWrite", "Speed", "Double",
                                         "1.500000", "2.250000", "rpm"}));
  EXPECT_EQ(rowOf("3-17", "On"),
            (Row{"3-17", "Pump", "P1, \"main\"", "ReadWrite", "On", "Bool", "Yes", "Yes", ""}));
  EXPECT_EQ(rowOf("3-17", "Geometry"),
            (Row{"3-17", "Pump", "P1, \"main\"", "ReadWrite", "Geometry", "Composite", "", "", ""}));
  EXPECT_EQ(rowOf("3-17", "Geometry.Height")[3], "None");
  EXPECT_EQ(rowOf("3-17", "Both Diameters")[6], "Geometry.Diameter|Inlet Diameter");
  EXPECT_EQ(rowOf("3-17", "Servers")[6], "R|Owns:4-17|Owns:5-17");
  EXPECT_EQ(rowOf("3-17", "Backup")[6], "Spare|Owns:6-17");
  EXPECT_EQ(rowOf("3-17", "Slots")[6], "Slot|Owns:7-17");

  // One row per attribute and nothing else; entities in the collection's pre-order.
  std::vector<std::string> order;
  for (std::size_t i = 2; i + 1 < table.size(); ++i)
  {
    EXPECT_FALSE(table[i][4].empty());
    if (order.empty() || order.back() != table[i][0])
      order.push_back(table[i][0]);
  }
  EXPECT_EQ(order, (std::vector<std::string>{"1-1", "3-17", "4-17", "5-17", "6-17", "7-17"}));
}

TEST_F(CSVDefinitionFileParserTest, RefusesWhatTheFileCannotCarry)
{
  struct Case
  {
    const char* name;
    std::function<void(EntityCollection&, Entity& pump, CSVDefinitionFileParser&)> change;
    std::string message;
    std::string dataMessage = ""; // when the data file refuses it too
  };
  const auto at = [](Entity& pump, const char* path) -> Attribute&
  { return pump.getAttribute(AttributePath(path)); };
  const auto link = [&](Entity& pump, const char* path) -> EntityLinkAttributeBase&
  { return static_cast<EntityLinkAttributeBase&>(at(pump, path)); };
  const Case cases[] = {
      {"no Initial", [](auto&, auto&, auto& p) { p.setChronologies({Chronology::Current}); },
       "3-17:Both Diameters is a Shortcut, whose content goes in the InitialValue column: add Initial to the "
       "chronologies"},
      {"'.' in a name",
       [&](auto&, auto& pump, auto&) {
         addValue(static_cast<CompositeAttribute&>(at(pump, "Geometry")), "a.b", AccessType::ReadWrite, 1.0);
       },
       "the attribute 'a.b' of 3-17:Geometry has a '.' in its name, the separator of attribute paths",
       "the attribute 'a.b' of 3-17:Geometry has a '.' in its name, which attribute paths cannot carry"},
      {"empty name",
       [](auto&, auto& pump, auto&) { addValue(pump, "Blank", AccessType::ReadWrite, 1.0).setType(""); },
       "an attribute of 3-17 has an empty name, which attribute paths cannot carry",
       "an attribute of 3-17 has an empty name, which attribute paths cannot carry"},
      {"link not owning", [&](auto&, auto& pump, auto&) { link(pump, "Slots").setOwnsEntities(false); },
       "3-17:Slots holds 7-17 'A1' without owning it; the file carries only entities that their link owns"},
      {"held entity without attributes",
       [&](auto& c, auto& pump, auto&)
       {
         static_cast<LinkAttribute&>(link(pump, "Backup"))
             .addEntity(makeEntity("Server", "C", EntityID(8, 17)));
         c.rebuildChildEntitiesList();
       },
       "3-17:Backup holds 8-17 'C', which has no attributes; the file carries an entity through the rows "
       "of its attributes only"},
      {"entity list not rebuilt",
       [&](auto&, auto& pump, auto&)
       {
         auto server = makeEntity("Server", "S9", EntityID(9, 17));
         addValue(*server, "Load", AccessType::ReadWrite, 1.0);
         static_cast<ListAttribute&>(link(pump, "Servers")).addEntity(std::move(server));
       },
       "3-17:Servers holds 9-17 'S9', which is not in the collection's entity list "
       "(rebuildChildEntitiesList)"},
      {"'|' in a relationship",
       [&](auto&, auto& pump, auto&) { link(pump, "Servers").setRelationShipType("R|S"); },
       "the relationship type 'R|S' of 3-17:Servers contains '|', the separator of the entities listed after "
       "it"},
      {"'|' in a shortcut target",
       [&](auto&, auto& pump, auto&)
       {
         addValue(pump, "p|q", AccessType::ReadWrite, 1.0);
         static_cast<ShortcutAttribute&>(at(pump, "Both Diameters")).addShortcut(AttributePath("p|q"));
       },
       "the target 'p|q' of the shortcut 3-17:Both Diameters contains '|', the separator of shortcut "
       "targets"},
      {"shortcut cycle",
       [](auto&, auto& pump, auto&)
       {
         add<ShortcutAttribute>(pump, AttributeType::Shortcut, "Loop", AccessType::ReadWrite)
             .addShortcut(AttributePath("Loop"));
       },
       "the shortcut 3-17:Loop leads back to itself through its targets"},
      {"shared ID",
       [](auto& c, auto&, auto&)
       {
         auto twin = makeEntity("Pump", "Twin", EntityID(3, 17));
         addValue(*twin, "Speed", AccessType::ReadWrite, 1.0);
         c.addRootEntity(std::move(twin));
       },
       "entities 3-17 'P1, \"main\"' and 'Twin' share the ID 3-17"},
      {"full name through a named placed entity",
       [](auto& c, auto& pump, auto& p)
       {
         auto& bay = add<Entity>(pump, AttributeType::Entity, "Bay", AccessType::ReadWrite);
         bay.setName("B1");
         auto held = makeEntity("Item", "H", EntityID(10, 17));
         addValue(*held, "X", AccessType::ReadWrite, 1.0);
         auto& list = add<ListAttribute>(bay, AttributeType::List, "Held", AccessType::ReadWrite);
         list.setOwnsEntities(true);
         list.addEntity(std::move(held));
         c.rebuildChildEntitiesList();
         p.setUseFullEntityNames(true);
       },
       "the full name of 10-17 'H' runs through the entity 'B1' placed in a composite, whose name the "
       "file cannot carry"},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    OmbrixTest::writeFile(path, "earlier file");
    EntityCollection collection;
    buildModel(collection);
    CSVDefinitionFileParser writer(collection);
    writer.setChronologies({Chronology::Initial});
    c.change(collection, *collection.getEntity(EntityID(3, 17)), writer);
    const std::string message = "Cannot write the definition file: " + c.message;
    EXPECT_THROW_MSG(writer.saveAs(path), std::runtime_error, message);
    EXPECT_THROW_MSG(writer.generateData(), std::runtime_error, message);
    EXPECT_EQ(OmbrixTest::readFile(path), "earlier file");
    EXPECT_TRUE(logged(message));
    if (!c.dataMessage.empty())
    {
      const std::string dataMessage = "Cannot write the data file: " + c.dataMessage;
      EXPECT_THROW_MSG(CSVDataFileParser(collection, {Chronology::Current}).saveAs(path), std::runtime_error,
                       dataMessage);
      EXPECT_EQ(OmbrixTest::readFile(path), "earlier file");
      EXPECT_TRUE(logged(dataMessage));
    }
  }
}

TEST_F(CSVDefinitionFileParserTest, WarnsOfWhatItReadsBackOtherwise)
{
  EntityCollection source;
  buildModel(source);
  Entity& pump = *source.getEntity(EntityID(3, 17));
  source.getEntity(EntityID(7, 17))->setAccessType(AccessType::ReadOnly);
  auto& geometry = static_cast<CompositeAttribute&>(pump.getAttribute(AttributePath("Geometry")));
  auto& bay = add<Entity>(geometry, AttributeType::Entity, "Bay", AccessType::ReadOnly);
  bay.setName("B1");
  addValue(bay, "X", AccessType::ReadWrite, 2.5, "m");
  add<ListAttribute>(pump, AttributeType::List, "Refs", AccessType::ReadWrite);
  source.addRootEntity(makeEntity("Tank", "Empty", EntityID(8, 8)));
  source.rebuildChildEntitiesList();
  CSVDefinitionFileParser writer(source);
  writer.setChronologies({Chronology::Initial});
  ASSERT_TRUE(writer.saveAs(path));
  EntityCollection target;
  ASSERT_TRUE(CSVDefinitionFileParser(target).parseFile(path));
  EXPECT_TRUE(logged("3-17 Processing Entity"));
  EXPECT_TRUE(logged("3-17:Geometry.Diameter Processing Attribute"));
  for (
      const char* warning :
      {"1 root entities without attributes are not written (the file carries an entity through the rows "
       "of its attributes only): first 8-8 'Empty'",
       "1 entities are read back with access ReadWrite (the file carries no access of an entity): first 7-17 "
       "'A1' (ReadOnly)",
       "1 links without entities that do not own entities are read back as owning them (the file carries the "
       "flag only with held entities): first 3-17:Refs",
       "1 entities placed in a composite are read back without their name and with a new ID (the file "
       "carries only their path and access): first 3-17:Geometry.Bay"})
    EXPECT_TRUE(logged(warning)) << warning;
  // Initial alone cannot carry a second chronology: read back with simple storage.
  EXPECT_EQ(speedStorage(target), ValueType::Simple);
}

// More rows than one write batch: def.csv and out.csv are the text of their generated tables; every
// chronology and full names read back an equal collection, with chronological storage.
TEST_F(CSVDefinitionFileParserTest, LargeFilesAreTheTextOfTheGeneratedTablesAndReadBackEqual)
{
  EntityCollection source, target;
  buildModel(source);
  addCells(source, 400);
  CSVDefinitionFileParser writer(source);
  writer.setChronologies(allChronologies);
  writer.setUseFullEntityNames(true);
  writer.setNumberFormat(NumberFormat::RoundTrip); // the cells' values need every digit
  const std::string outPath = dir.file("out.csv");
  const CSVDataFileParser out(source, {Chronology::Initial, Chronology::Current});
  ASSERT_TRUE(out.saveAs(outPath));
  const std::string text = OmbrixTest::readFile(outPath);
  EXPECT_EQ(text, joined(out.generateData()));
  EXPECT_NE(text.find("\n114-17,Cell,\"C,14\",Value9,9.014000,9.014000,Pa\n"), std::string::npos);
  ASSERT_TRUE(writer.saveAs(path));
  EXPECT_EQ(OmbrixTest::readFile(path), joined(writer.generateData()));
  ASSERT_TRUE(CSVDefinitionFileParser(target).parseFile(path));
  EXPECT_TRUE(source.isEqual(target));
  EXPECT_EQ(target.getEntity(EntityID(5, 17))->getName(true), "P1, \"main\"->S5");
  EXPECT_EQ(speedStorage(target), ValueType::Chronological);
  EXPECT_FALSE(writer.saveAs(dir.file("missing/def.csv")));
  EXPECT_FALSE(std::filesystem::exists(dir.file("missing")));
}

TEST_F(CSVDefinitionFileParserTest, BadRowsNameFileAndRow)
{
  struct Case
  {
    const char* name;
    std::string content;
    std::string message;
    bool attributeError;
  };
  const std::string p = "2-2,Probe,P,";
  const Case cases[] = {
      {"no content rows", "", "Missing FileFooter", false},
      {"unknown column", "EntityID,EntityType,EntityName,Access,AttributePath,Type,Colour\n",
       ", row 2: Unknown column 'Colour' in the column header", false},
      {"missing column", "EntityID,EntityType,EntityName,AttributePath,Type\n",
       ", row 2: Missing column 'Access' in the column header", false},
      {"short row", header + "2-2,Probe,P\n", ", row 3: Row has 3 fields, the column header has 8", false},
      {"bad ID", header + "x-2,Probe,P,ReadWrite,A,Int,1,\n",
       ", row 3: Invalid entity ID 'x-2': invalid stoi argument", false},
      {"row for the entity itself", header + p + "ReadWrite,,Entity,,\n", ", row 3: AttributePath is Empty",
       true},
      {"name and type do not match", header + p + "ReadWrite,A,Int,1,\n2-2,Probe,Q,ReadWrite,B,Int,1,\n",
       ", row 4: Entity name and type do not match ID 2-2", false},
      {"unknown type", header + p + "ReadWrite,A,Colour,,\n",
       ", row 3: Invalid entity attribute model (unknown type 'Colour' of 2-2:A)", true},
      {"unknown access", header + p + "Sometimes,A,Int,1,\n",
       ", row 3: Invalid entity attribute model (unknown access 'Sometimes' of 2-2:A)", true},
      {"no composite above", header + p + "ReadWrite,G.A,Int,1,\n",
       ", row 3: Invalid entity attribute model (no composite above 2-2:G.A)", true},
      {"defined twice", header + p + "ReadWrite,A,Int,1,\n" + p + "ReadWrite,A,Int,2,\n",
       ", row 4: Invalid entity attribute model (2-2:A defined twice)", true},
      {"bad number", header + p + "ReadWrite,A,Double,fast,m\n",
       ", row 3: Invalid value 'fast' in InitialValue of 2-2:A: invalid stod argument", true},
      {"bad bool", header + p + "ReadWrite,A,Bool,maybe,\n",
       ", row 3: Invalid value 'maybe' in InitialValue of 2-2:A: Invalid bool text 'maybe'", true},
      {"bad link word", header + p + "ReadWrite,L,List,R|Has:3-3,\n", ", row 3: Unsupported link type Has",
       true},
      {"composite reported as owner",
       header + p + "ReadWrite,G,Composite,R|Owns:3-3,\n3-3,Item,I,ReadWrite,X,Int,1,\n",
       ", row 3: Reported owner not a link, list or array (2-2:G is of type Composite)", true},
      {"entity attribute reported as owner", header + p + "ReadWrite,E,Entity,R|Links:3-3,\n",
       ", row 3: Reported owner not a link, list or array (2-2:E is of type Entity)", true},
      {"full name not below its holder",
       fullHeader + p + "ReadWrite,L,List,R|Owns:3-3,\n3-3,Item,Q->I,ReadWrite,X,Int,1,\n",
       ", row 4: Full entity name 'Q->I' of 3-3 does not begin with the full name of its holder, 'P'", false},
      {"link holding two", header + p + "ReadWrite,L,Link,R|Owns:3-3|Owns:4-4,\n",
       ", row 3: Unsupported link type Link holding 2 entities in 2-2:L", true},
      {"held entity missing", header + p + "ReadWrite,L,List,R|Owns:3-3,\n",
       ", row 3: Unable to find entity 3-3 held by 2-2:L", false},
      {"held twice",
       header + p + "ReadWrite,L,List,R|Owns:3-3,\n" + p +
           "ReadWrite,M,List,R|Owns:3-3,\n3-3,Item,I,ReadWrite,X,Int,1,\n",
       ", row 4: Entity 3-3 held by 2-2:M is held twice", false},
      {"holds itself", header + p + "ReadWrite,L,List,R|Owns:2-2,\n",
       ", row 3: Entity 2-2 would hold itself through 2-2:L", false},
      {"shortcut cycle", header + p + "ReadWrite,A,Shortcut,B,\n" + p + "ReadWrite,B,Shortcut,A,\n",
       ", row 3: Shortcut targets itself (A)", false},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    OmbrixTest::writeFile(path, framed(c.content));
    EntityCollection target;
    buildModel(target);
    const std::size_t before = target.size();
    CSVDefinitionFileParser reader(target);
    const bool frame = c.message == "Missing FileFooter";
    const std::string expected = frame ? c.message : path + c.message;
    if (c.attributeError)
      EXPECT_THROW_MSG(reader.parseFile(path), Ombrix::AttributeReadError, expected);
    else
      EXPECT_THROW_MSG(reader.parseFile(path), std::runtime_error, expected);
    EXPECT_EQ(target.size(), before); // the collection is untouched by a failed read
    EXPECT_TRUE(logged(expected));

    // Not fatal: logged, the row passed over, false returned; header errors still throw.
    EntityCollection lenient;
    CSVDefinitionFileParser tolerant(lenient);
    tolerant.setFatalErrors(false);
    if (frame || c.message.find("in the column header") != std::string::npos)
      EXPECT_THROW(tolerant.parseFile(path), std::runtime_error);
    else
      EXPECT_FALSE(tolerant.parseFile(path));
  }
}

TEST_F(CSVDefinitionFileParserTest, OlderAndRepeatedColumnsAndNonFatalReads)
{
  EntityCollection target;
  CSVDefinitionFileParser reader(target);
  const auto probe = [&](const char* path) -> Attribute&
  { return target.getEntity(EntityID(2, 2))->getAttribute(AttributePath(path)); };
  // The older "InitValue" column is still read; without an entity row, entities get access ReadWrite.
  OmbrixTest::writeFile(path,
                        framed("EntityID,EntityType,EntityName,AttributePath,Type,Access,InitValue,Unit\n"
                               "2-2,Probe,P,Level,Double,ReadWrite,4.5,m\n"));
  EXPECT_TRUE(reader.parseFile(path));
  EXPECT_EQ(target.getEntity(EntityID(2, 2))->getAccessType(), AccessType::ReadWrite);
  EXPECT_EQ(probe("Level").getDoubleValue(Chronology::Initial, false), 4.5);
  EXPECT_EQ(probe("Level").getUnit(), "m");

  // The header map keeps the last "Unit", beyond the number of distinct names: rows must still be
  // checked against the header's width.
  OmbrixTest::writeFile(path, framed("EntityID,EntityType,EntityName,Access,AttributePath,Type,Unit,"
                                     "InitialValue,Unit\n2-2,Probe,P,ReadWrite,Level,Double,x,4.5,cm\n"
                                     "2-2,Probe,P,ReadWrite,Depth,Double,x,1.5\n"));
  EXPECT_THROW_MSG(reader.parseFile(path), std::runtime_error,
                   path + ", row 4: Row has 8 fields, the column header has 9");
  reader.setFatalErrors(false);
  EXPECT_FALSE(reader.parseFile(path));
  EXPECT_EQ(probe("Level").getUnit(), "cm");

  // Not fatal: the good rows are kept, and the attribute of a bad value keeps its default value.
  OmbrixTest::writeFile(path,
                        framed(header + "2-2,Probe,P,ReadWrite,A,Int,x,\n2-2,Probe,P,ReadWrite,B,Int,5,\n"));
  EXPECT_FALSE(reader.parseFile(path));
  EXPECT_EQ(probe("B").getIntValue(Chronology::Initial, false), 5);
  EXPECT_EQ(probe("A").getIntValue(Chronology::Initial, false), 0);

  // "Links:" holds entities without owning them, "Owns:" owns them.
  OmbrixTest::writeFile(path, framed(header + "2-2,Probe,P,ReadWrite,L,List,R|Links:3-3,\n" +
                                     "2-2,Probe,P,ReadWrite,M,List,R|Owns:4-4,\n" +
                                     "3-3,Item,I,ReadWrite,X,Int,1,\n4-4,Item,J,ReadWrite,X,Int,1,\n"));
  EXPECT_TRUE(reader.parseFile(path));
  EXPECT_FALSE(static_cast<ListAttribute&>(probe("L")).getOwnsEntities());
  EXPECT_TRUE(static_cast<ListAttribute&>(probe("M")).getOwnsEntities());
}

TEST_F(CSVDefinitionFileParserTest, StrictNumbersAndTheErrorObserver)
{
  EntityCollection solver;
  solver.addRootEntity(makeEntity("Heater", "H", EntityID(5, 1)));
  addValue(**solver.begin(), "Count", AccessType::ReadWrite, 0);
  addValue(**solver.begin(), "Ratio", AccessType::ReadWrite, 0.0f);
  CSVDefinitionFileParser writer(solver);
  writer.setChronologies({Chronology::Initial});
  Table rows = writer.generateData();
  rows[3][6] = "0,25"; // Ratio's InitialValue
  EntityCollection client;
  CSVDefinitionFileParser reader(client);
  EXPECT_TRUE(reader.parseData(rows)) << "lenient: 0,25 reads as 0";
  rows[2].resize(2); // Count: a row error of another kind beside it
  reader.setStrictNumbers(true);
  std::vector<std::string> seen;
  reader.setErrorObserver([&](const std::string& message) { seen.push_back(message); });
  reader.setFatalErrors(false);
  EXPECT_FALSE(reader.parseData(rows));
  EXPECT_EQ(seen, (std::vector<std::string>{
                      "CSV rows, row 3: Row has 2 fields, the column header has 8",
                      "CSV rows, row 4: Invalid value '0,25' in InitialValue of 5-1:Ratio: the text is not "
                      "entirely a number of type Float"}));

  seen.clear();
  reader.setFatalErrors(true);
  EXPECT_THROW(reader.parseData({rows.front()}), std::runtime_error);
  EXPECT_EQ(seen, std::vector<std::string>{"Missing FileHeader"}) << "frame errors too, before the throw";
}

} // namespace
