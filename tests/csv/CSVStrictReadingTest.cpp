// Strict numbers and the error observer of the CSV readers.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "csv/CSVTestModel.h"

#include <map>
#include <tuple>

namespace
{

using namespace CSVTest;
using Ombrix::AttributeReadError;
using Ombrix::CSVDataFileParser;
using Ombrix::CSVDefinitionFileParser;
using Table = Ombrix::CSVFileParserBase::Table;

// One entity 5-1 with a value of each number kind.
void buildHeater(EntityCollection& collection)
{
  auto heater = makeEntity("Heater", "H", EntityID(5, 1));
  addValue(*heater, "Power", AccessType::ReadWrite, 0.0);
  add<IntAttribute>(*heater, AttributeType::Int, "Count", AccessType::ReadWrite).set(0, Chronology::Initial);
  add<FloatAttribute>(*heater, AttributeType::Float, "Ratio", AccessType::ReadWrite)
      .set(0.0f, Chronology::Initial);
  collection.addRootEntity(std::move(heater));
}

Table dataRows(const std::string& path, const std::string& text)
{
  return {{"<<", "START", "CSV", "VER04", ">>"},
          {"EntityID", "EntityType", "EntityName", "AttributePath", "CurrentValue", "Unit"},
          {"5-1", "Heater", "H", path, text, ""},
          {"<<", "END", "CSV", "VER04", ">>"}};
}

TEST(CSVStrictReadingTest, DataValuesWholeOrRefused)
{
  // Path, text, what the standard conversion makes of it, whether the text is entirely that number.
  const std::tuple<const char*, const char*, double, bool> cases[] = {
      // clang-format off
      {"Power", "50OO", 50, false}, {"Power", "5000 W/m2", 5000, false}, {"Power", "5000,5", 5000, false},
      {"Power", " 12", 12, false}, {"Power", "12 ", 12, false}, {"Power", "1e3", 1000, true},
      {"Power", "-2.5e-3", -2.5e-3, true}, {"Power", "0x1p3", 8, true}, {"Count", "2.5", 2, false},
      {"Count", "1e3", 1, false}, {"Count", " 12", 12, false}, {"Count", "+7", 7, true},
      {"Count", "-2147483648", -2147483648.0, true}, {"Ratio", "0.5f", 0.5, false}, {"Ratio", "0.5", 0.5, true},
      // clang-format on
  };
  const std::map<std::string, std::string> types{{"Power", "Double"}, {"Count", "Int"}, {"Ratio", "Float"}};
  for (const auto& [path, text, lenient, whole] : cases)
  {
    SCOPED_TRACE(std::string(path) + " '" + text + "'");
    EntityCollection model;
    buildHeater(model);
    const Attribute& target = model.getEntity(EntityID(5, 1))->getAttribute(AttributePath(path));
    CSVDataFileParser reader(model, {Chronology::Current});
    reader.setStrictNumbers(true);
    if (whole)
      EXPECT_TRUE(reader.parseData(dataRows(path, text)));
    else
      EXPECT_THROW_MSG(reader.parseData(dataRows(path, text)), AttributeReadError,
                       "CSV rows, row 3: Invalid value '" + std::string(text) + "' in CurrentValue of 5-1:" +
                           path + ": the text is not entirely a number of type " + types.at(path));
    EXPECT_EQ(target.getDoubleValue(Chronology::Current, false), whole ? lenient : 0.0);
    reader.setStrictNumbers(false);
    EXPECT_TRUE(reader.parseData(dataRows(path, text)));
    EXPECT_EQ(target.getDoubleValue(Chronology::Current, false), lenient);
  }
}

TEST(CSVStrictReadingTest, DefinitionValuesAndObserverCollectsEveryError)
{
  EntityCollection solver;
  buildHeater(solver);
  CSVDefinitionFileParser writer(solver);
  writer.setChronologies({Chronology::Initial});
  Table rows = writer.generateData();
  rows[4][6] = "0,25"; // Ratio's InitialValue
  EntityCollection client;
  CSVDefinitionFileParser reader(client);
  EXPECT_TRUE(reader.parseData(rows)) << "lenient: 0,25 reads as 0";
  rows[3].resize(2); // Count: a row error of another kind beside it
  reader.setStrictNumbers(true);
  std::vector<std::string> seen;
  reader.setErrorObserver([&](const std::string& message) { seen.push_back(message); });
  reader.setFatalErrors(false);
  EXPECT_FALSE(reader.parseData(rows));
  EXPECT_EQ(seen, (std::vector<std::string>{
                      "CSV rows, row 4: Row has 2 fields, the column header has 8",
                      "CSV rows, row 5: Invalid value '0,25' in InitialValue of 5-1:Ratio: the text is not "
                      "entirely a number of type Float"}));

  seen.clear();
  reader.setFatalErrors(true);
  EXPECT_THROW(reader.parseData({rows.front()}), std::runtime_error);
  EXPECT_EQ(seen, std::vector<std::string>{"Missing FileHeader"}) << "frame errors too, before the throw";
}

} // namespace
