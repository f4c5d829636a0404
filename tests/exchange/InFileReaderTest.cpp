#include "ombrix/exchange/InFileReader.h"

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Ombrix::CSVDataFileParser;
using Ombrix::InFileReader;
using Ombrix::ReadFailureHandling;

// Two entities with one writable pressure each.
void build(EntityCollection& collection, double first, double second)
{
  int id = 1;
  for (double value : {first, second})
  {
    auto entity = std::make_unique<Entity>("Valve", "V" + std::to_string(id));
    entity->setUniqueID(EntityID(id++, 1));
    auto* pressure = static_cast<DoubleAttribute*>(
        entity->createAttribute(AttributeType::Double, "P", AccessType::ReadWrite));
    pressure->setUnit("Pa");
    pressure->set(value, Chronology::Current);
    collection.addRootEntity(std::move(entity));
  }
}

double pressure(EntityCollection& collection, int id)
{
  auto& attribute =
      static_cast<DoubleAttribute&>(collection.getEntity(EntityID(id, 1))->getAttribute(AttributePath("P")));
  return attribute.get(Chronology::Current);
}

class InFileReaderTest : public ::testing::Test
{
protected:
  InFileReaderTest()
  {
    build(source, 10.0, 20.0);
    build(target, 1.0, 2.0);
    CSVDataFileParser writer(source, {Chronology::Current});
    EXPECT_TRUE(writer.saveAs(path));
    complete = OmbrixTest::readFile(path);
  }

  std::string cutOff() const { return complete.substr(0, complete.rfind("<<,END")); }
  std::string wrongUnitInSecondRow() const
  {
    std::string text = complete;
    text.replace(text.rfind(",Pa"), 3, ",bar");
    return text;
  }

  OmbrixTest::TempDir dir;
  const std::string path = dir.file("in.csv");
  std::string complete;
  EntityCollection source;
  EntityCollection target;
};

TEST_F(InFileReaderTest, HandlingDecidesBetweenPartialApplyReturnAndThrow)
{
  const std::string missing = "Missing incoming file " + path;
  const std::string badUnit = path + ", row 4: Invalid Unit expecting Pa but received bar for 2-1:P";
  struct Case
  {
    ReadFailureHandling handling;
    std::string content; // empty: no file
    bool returns;        // only when nothing is thrown
    std::string thrown;  // empty: nothing thrown
    double first, second;
  };
  const std::vector<Case> cases = {
      {ReadFailureHandling::LogAndContinue, complete, true, "", 10.0, 20.0},
      {ReadFailureHandling::LogAndContinue, "", false, "", 1.0, 2.0},
      {ReadFailureHandling::LogAndContinue, cutOff(), false, "", 1.0, 2.0},
      {ReadFailureHandling::LogAndContinue, wrongUnitInSecondRow(), false, "", 10.0, 2.0},
      {ReadFailureHandling::Fail, complete, true, "", 10.0, 20.0},
      {ReadFailureHandling::Fail, "", false, missing, 1.0, 2.0},
      {ReadFailureHandling::Fail, cutOff(), false, "Missing FileFooter", 1.0, 2.0},
      {ReadFailureHandling::Fail, wrongUnitInSecondRow(), false, badUnit, 1.0, 2.0},
      {ReadFailureHandling::Retry, "", false, missing, 1.0, 2.0},
      {ReadFailureHandling::Retry, cutOff(), false, "Missing FileFooter", 1.0, 2.0},
      {ReadFailureHandling::Retry, wrongUnitInSecondRow(), false, badUnit, 1.0, 2.0},
  };
  for (std::size_t i = 0; i < cases.size(); ++i)
  {
    const Case& c = cases[i];
    SCOPED_TRACE(i);
    std::filesystem::remove(path);
    if (!c.content.empty())
      OmbrixTest::writeFile(path, c.content);
    EntityCollection collection;
    build(collection, 1.0, 2.0);
    CSVDataFileParser parser(collection, {Chronology::Current});
    const InFileReader reader(c.handling, 3, 1);
    if (c.thrown.empty())
      EXPECT_EQ(reader.read(parser, path), c.returns);
    else
      EXPECT_THROW_MSG(reader.read(parser, path), std::runtime_error, c.thrown);
    EXPECT_EQ(parser.getFatalErrors(), c.handling != ReadFailureHandling::LogAndContinue);
    EXPECT_EQ(pressure(collection, 1), c.first);
    EXPECT_EQ(pressure(collection, 2), c.second);
  }
}

TEST_F(InFileReaderTest, DirectoryIsRefusedAsSuch)
{
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  CSVDataFileParser parser(target, {Chronology::Current});
  EXPECT_THROW_MSG(InFileReader(ReadFailureHandling::Fail).read(parser, path), std::runtime_error,
                   "Incoming file " + path + " is a directory, not a data file");
  EXPECT_FALSE(InFileReader(ReadFailureHandling::LogAndContinue).read(parser, path));
}

TEST_F(InFileReaderTest, AttemptsComeFromTheOptionsAndCountOnlyForRetry)
{
  Ombrix::CSVEventHandlerOptions options;
  options.inFileTryAttempts = 4;
  options.readFailureHandling = ReadFailureHandling::Retry;
  EXPECT_EQ(InFileReader(options).getAttempts(), 4);
  options.inFileTryAttempts = 0;
  EXPECT_EQ(InFileReader(options).getAttempts(), 1);
  options.inFileTryAttempts = 4;
  options.readFailureHandling = ReadFailureHandling::Fail;
  EXPECT_EQ(InFileReader(options).getAttempts(), 1);
}

TEST_F(InFileReaderTest, RetryWaitsForAFileStillBeingWritten)
{
  OmbrixTest::writeFile(path, cutOff());
  // The writer finishes while the reader retries; it renames a complete file into place, as a writer
  // that must never expose a torn file would.
  std::thread writer(
      [this]
      {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        OmbrixTest::writeFile(path + ".tmp", complete);
        std::filesystem::rename(path + ".tmp", path);
      });
  CSVDataFileParser parser(target, {Chronology::Current});
  const bool applied = InFileReader(ReadFailureHandling::Retry, 500, 10).read(parser, path);
  writer.join();
  EXPECT_TRUE(applied);
  EXPECT_EQ(pressure(target, 1), 10.0);
  EXPECT_EQ(pressure(target, 2), 20.0);
}

} // namespace
