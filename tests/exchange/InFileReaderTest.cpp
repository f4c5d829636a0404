#include "ombrix/exchange/InFileReader.h"

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include "log/LogTestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace
{

using namespace Ombrix;
using namespace Ombrix::Model;
using namespace KorvanSDK;

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

// The file to read holds a complete data file of the pressures 10 and 20; the log takes warnings.
class InFileReaderTest : public OmbrixTest::LogFileFixture
{
protected:
  void SetUp() override
  {
    LogFileFixture::SetUp();
    LogManager::instance().initialize(logPath, LogLevel::Warning);
    EntityCollection source;
    build(source, 10.0, 20.0);
    EXPECT_TRUE(CSVDataFileParser(source, {Chronology::Current}).saveAs(path));
    complete = OmbrixTest::readFile(path);
    build(target, 1.0, 2.0);
  }

  const std::string path = dir.file("in.csv");
  std::string complete;
  EntityCollection target;
};

TEST_F(InFileReaderTest, HandlingDecidesBetweenPartialApplyReturnAndThrow)
{
  const std::string missing = "Missing incoming file " + path;
  const std::string badUnit = path + ", row 4: Invalid Unit expecting Pa but received bar for 2-1:P";
  const std::string directory = "Incoming file " + path + " is a directory, not a data file";
  const std::string fifo = "Incoming file " + path + " is not a regular file";
  const std::string cutOff = complete.substr(0, complete.rfind("<<,END"));
  std::string wrongUnitInSecondRow = complete;
  wrongUnitInSecondRow.replace(wrongUnitInSecondRow.rfind(",Pa"), 3, ",bar");
  using H = ReadFailureHandling;
  // {handling, content or "<none>", "<directory>", "<fifo>", what read() returns when nothing is thrown,
  // the message thrown or logged under LogAndContinue ("": not checked), the pressures after}
  const std::tuple<H, std::string, bool, std::string, double, double> cases[] = {
      {H::LogAndContinue, complete, true, "", 10.0, 20.0},
      {H::LogAndContinue, "<none>", false, missing, 1.0, 2.0},
      {H::LogAndContinue, cutOff, false, "Missing FileFooter", 1.0, 2.0},
      {H::LogAndContinue, wrongUnitInSecondRow, false, "", 10.0, 2.0},
      {H::LogAndContinue, "<directory>", false, directory, 1.0, 2.0},
      {H::Fail, complete, true, "", 10.0, 20.0},
      {H::Fail, "<none>", false, missing, 1.0, 2.0},
      {H::Fail, cutOff, false, "Missing FileFooter", 1.0, 2.0},
      {H::Fail, wrongUnitInSecondRow, false, badUnit, 1.0, 2.0},
      {H::Fail, "<fifo>", false, fifo, 1.0, 2.0},
      {H::Retry, "<none>", false, missing, 1.0, 2.0},
      {H::Retry, cutOff, false, "Missing FileFooter", 1.0, 2.0},
      {H::Retry, wrongUnitInSecondRow, false, badUnit, 1.0, 2.0},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i)
  {
    const auto& [handling, content, returns, message, first, second] = cases[i];
    SCOPED_TRACE(i);
    std::filesystem::remove_all(path);
    if (content == "<directory>")
      std::filesystem::create_directory(path);
    else if (content == "<fifo>")
      ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    else if (content != "<none>")
      OmbrixTest::writeFile(path, content);
    EntityCollection collection;
    build(collection, 1.0, 2.0);
    CSVDataFileParser parser(collection, {Chronology::Current});
    const InFileReader reader(handling, 3, 1);
    LogManager::instance().initialize(logPath, LogLevel::Warning);
    if (handling == H::LogAndContinue || message.empty())
    {
      EXPECT_EQ(reader.read(parser, path), returns);
    }
    else
    {
      EXPECT_THROW_MSG(reader.read(parser, path), std::runtime_error, message);
    }
    // Under Retry a failing file is read three times, each failure but the last reported as a warning.
    std::vector<std::string> logged;
    for (const auto& line : bodies())
      if (line.find("\tExchange : ") != std::string::npos)
        logged.push_back(line);
    const std::string prefix = "Exchange : " + path + "\t ";
    std::vector<std::string> expected;
    if (handling == H::LogAndContinue && !message.empty())
      expected.push_back("\tError\t" + prefix + message);
    for (int attempt = 1; handling == H::Retry && attempt < 3; ++attempt)
      expected.push_back("\tWarning\t" + prefix + "Attempt " + std::to_string(attempt) +
                         " of 3 failed, reading again: " + message);
    EXPECT_EQ(logged, expected);
    EXPECT_EQ(parser.getFatalErrors(), handling != H::LogAndContinue);
    EXPECT_EQ(pressure(collection, 1), first);
    EXPECT_EQ(pressure(collection, 2), second);
  }
}

TEST(InFileReader, AttemptsComeFromTheOptionsAndCountOnlyForRetry)
{
  using H = ReadFailureHandling;
  const std::tuple<H, int, int> cases[] = {
      {H::Retry, 4, 4}, {H::Retry, 0, 1}, {H::Fail, 4, 1}, {H::LogAndContinue, 4, 1}};
  for (const auto& [handling, tries, attempts] : cases)
  {
    CSVEventHandlerOptions options;
    options.readFailureHandling = handling;
    options.inFileTryAttempts = tries;
    EXPECT_EQ(InFileReader(options).getAttempts(), attempts) << static_cast<int>(handling) << " " << tries;
  }
}

TEST_F(InFileReaderTest, RetryWaitsForAFileStillBeingWritten)
{
  const std::string cutOff = complete.substr(0, complete.rfind("<<,END"));
  OmbrixTest::writeFile(path, cutOff);
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
  // After the parser's own report of the cut file.
  EXPECT_EQ(OmbrixTest::withoutStamp(lines().at(2)),
            "\tWarning\tExchange : " + path +
                "\t Attempt 1 of 500 failed, reading again: Missing FileFooter");
}

} // namespace
