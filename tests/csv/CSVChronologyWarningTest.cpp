// A data-file reader whose chronologies are not the file's value columns says so.
#include "ombrix/csv/CSVDataFileParser.h"

#include "csv/CSVTestModel.h"

namespace
{

using namespace CSVTest;
using Ombrix::CSVDataFileParser;

class CSVChronologyWarningTest : public LoggedTest
{
};

TEST_F(CSVChronologyWarningTest, NamesTheColumnsFoundAndExpected)
{
  EntityCollection model;
  model.addRootEntity(makeEntity("Heater", "H", EntityID(5, 1)));
  addValue(**model.begin(), "Power", AccessType::ReadWrite, 1.0);
  CSVDataFileParser writer(model, {Chronology::Initial, Chronology::Next});
  ASSERT_TRUE(writer.saveAs(dir.file("out.csv")));
  model.getEntity(EntityID(5, 1))
      ->getAttribute(AttributePath("Power"))
      .setDoubleValue(2.0, Chronology::Initial, false);

  CSVDataFileParser reader(model, {Chronology::Current});
  EXPECT_TRUE(reader.parseFile(dir.file("out.csv")));
  EXPECT_EQ(model.getEntity(EntityID(5, 1))
                ->getAttribute(AttributePath("Power"))
                .getDoubleValue(Chronology::Initial, false),
            2.0)
      << "nothing applied";
  EXPECT_TRUE(
      logged("Warning\tCSV File : " + dir.file("out.csv") + "\t " + dir.file("out.csv") +
             ", row 2: Value columns found: InitialValue, NextValue; expected: CurrentValue. Only the "
             "expected columns are read"));

  CSVDataFileParser same(model, {Chronology::Initial, Chronology::Next});
  EXPECT_TRUE(same.parseFile(dir.file("out.csv")));
  EXPECT_FALSE(logged("expected: InitialValue, NextValue. Only the expected columns are read"));
}

} // namespace
