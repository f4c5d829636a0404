// Writers killed at random moments while they replace the exchange files.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/AtomicFileWriter.h"

#include "support/ExchangeFixtures.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <random>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::Chronology;
using KorvanSDK::SolveState;
using OmbrixTest::readFile;

// Runs `write` in a loop in a child process and kills it a random pause below `longest` after the child
// has started, 50 times and on until a kill has struck mid-write (500 at most: under load the sleeps are
// coarse and a small file's write window is easily missed); `accepted` must hold for the file's content after
// each kill. Returns how many kills left a temporary behind, that is, struck between the creation of the new
// content and its rename.
int killWhileWriting(const std::string& path, const std::function<void()>& write,
                     std::chrono::microseconds longest,
                     const std::function<bool(const std::string&)>& accepted)
{
  std::mt19937 random(20241123u);
  const std::string directory = path.substr(0, path.rfind('/'));
  int struckMidWrite = 0;
  for (int kill = 0; kill < 50 || (struckMidWrite == 0 && kill < 500); ++kill)
  {
    OmbrixTest::ForkedChild writer(
        [&](const std::function<void()>& ready)
        {
          ready();
          while (true)
            write();
        });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % longest.count()));
    writer.kill();
    const std::string content = readFile(path);
    EXPECT_TRUE(accepted(content)) << "kill " << kill << ": " << content.substr(0, 100);
    struckMidWrite +=
        FileSystem::AtomicFileWriter::removeTemporaries(directory, [&](const std::string& name)
                                                        { return directory + "/" + name == path; }) > 0;
  }
  return struckMidWrite;
}

} // namespace

TEST(Reliability, AKilledWriterLeavesTheCompletePreviousOrNewFile)
{
  OmbrixTest::TempDir dir;
  // The model goes before the small files' writers are forked, which then copy little.
  int dataStruck = 0;
  {
    // 10^4 entities of 10 values: a data file of 10^5 rows.
    EntityCollection model;
    for (int e = 0; e < 10000; ++e)
    {
      auto entity = std::make_unique<Entity>("Cell", "C" + std::to_string(e),
                                             KorvanSDK::AccessType::ReadWrite, nullptr);
      entity->setUniqueID(EntityID(e, 100));
      for (int a = 0; a < 10; ++a)
        entity->createAttribute(KorvanSDK::AttributeType::Double, "T" + std::to_string(a),
                                KorvanSDK::AccessType::ReadWrite);
      model.addRootEntity(std::move(entity));
    }
    auto& flipped =
        static_cast<DoubleAttribute&>(model.getEntity(EntityID(0, 100))->getAttribute(AttributePath("T0")));
    Ombrix::CSVDataFileParser parser(model, {Chronology::Current});
    const std::string data = dir.file("out.csv");
    std::string versions[2];
    const auto start = std::chrono::steady_clock::now();
    for (int v = 0; v < 2; ++v)
    {
      flipped.set(v, Chronology::Current);
      ASSERT_TRUE(parser.saveAs(data));
      versions[v] = readFile(data);
    }
    // Kills spread over the first half of a write.
    const auto halfWrite = (std::chrono::steady_clock::now() - start) / 4;
    dataStruck = killWhileWriting(
        data,
        [&]
        {
          flipped.set(1 - flipped.get(Chronology::Current), Chronology::Current);
          parser.saveAs(data);
        },
        std::chrono::duration_cast<std::chrono::microseconds>(halfWrite) + std::chrono::microseconds(1000),
        [&](const std::string& content) { return content == versions[0] || content == versions[1]; });
    EXPECT_TRUE(parser.parseFile(data));
  }

  const std::string state = dir.file("in.state");
  const Ombrix::StateFileReaderWriter stateWriter(state);
  stateWriter.writeState(SolveState::CFDSolver_Solving, 1);
  int next = 0;
  const int stateStruck = killWhileWriting(
      state,
      [&] {
        stateWriter.writeState(++next % 2 ? SolveState::Client_NewDataReady : SolveState::CFDSolver_Solving,
                               1);
      },
      std::chrono::microseconds(3000),
      [](const std::string& content) {
        return content == "1003\tClient_NewDataReady\t<END>" || content == "2002\tCFDSolver_Solving\t<END>";
      });

  const std::string alive = dir.file("in.alive");
  const Ombrix::AliveFileReaderWriter aliveWriter(alive);
  const std::int64_t before = std::time(nullptr);
  aliveWriter.writeStamp();
  const int aliveStruck = killWhileWriting(
      alive, [&] { aliveWriter.writeStamp(); }, std::chrono::microseconds(3000),
      [&](const std::string& content) { return OmbrixTest::stampOf(content) >= before; });
  EXPECT_TRUE(Ombrix::AliveFileReaderWriter(alive).checkAlive());
  // The kills did strike while files were being written, else the test would prove nothing.
  EXPECT_GT(dataStruck, 0);
  EXPECT_GT(stateStruck, 0);
  EXPECT_GT(aliveStruck, 0);
}
