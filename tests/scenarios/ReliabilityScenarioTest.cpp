// Writers killed at random moments while they replace the exchange files, and a second solver started in
// a directory whose solver side is taken.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/AtomicFileWriter.h"

#include "support/TestSupport.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::Chronology;
using KorvanSDK::SolveState;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;

constexpr int kills = 50;

// Runs `write` in a loop in a child process and kills it a random pause below `longest` after the child
// has started, `kills` times. After each kill `check` gets the file's content. Returns how many kills left
// a temporary behind, that is, struck between the creation of the new content and its rename.
int killWhileWriting(const std::string& path, const std::function<void()>& write,
                     std::chrono::microseconds longest, const std::function<void(const std::string&)>& check)
{
  std::mt19937 random(20241123u);
  const std::string directory = path.substr(0, path.rfind('/'));
  const auto isTarget = [&](const std::string& name) { return directory + "/" + name == path; };
  int struckMidWrite = 0;
  for (int kill = 0; kill < kills; ++kill)
  {
    int started[2];
    if (::pipe(started) != 0)
      throw std::runtime_error("no pipe");
    const pid_t writer = ::fork();
    if (writer == 0)
    {
      const char byte = 1;
      if (::write(started[1], &byte, 1) != 1)
        std::_Exit(1);
      while (true)
        write();
    }
    // A child still waiting to be scheduled would be killed before it wrote anything.
    char byte = 0;
    const bool running = ::read(started[0], &byte, 1) == 1;
    ::close(started[0]);
    ::close(started[1]);
    if (!running)
      throw std::runtime_error("the writer did not start");
    std::this_thread::sleep_for(std::chrono::microseconds(random() % longest.count()));
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    check(readFile(path));
    struckMidWrite += FileSystem::AtomicFileWriter::removeTemporaries(directory, isTarget) > 0;
  }
  return struckMidWrite;
}

} // namespace

TEST(Reliability, AKilledWriterLeavesTheCompletePreviousOrNewFile)
{
  TempDir dir;
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
        [&](const std::string& content) { ASSERT_TRUE(content == versions[0] || content == versions[1]); });
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
      [&](const std::string& content)
      {
        ASSERT_TRUE(content == "1003\tClient_NewDataReady\t<END>" ||
                    content == "2002\tCFDSolver_Solving\t<END>")
            << content;
      });

  const std::string alive = dir.file("in.alive");
  const Ombrix::AliveFileReaderWriter aliveWriter(alive);
  aliveWriter.writeStamp();
  const int aliveStruck = killWhileWriting(
      alive, [&] { aliveWriter.writeStamp(); }, std::chrono::microseconds(3000),
      [&](const std::string& content)
      {
        const std::string now = std::to_string(std::time(nullptr));
        ASSERT_TRUE(content.size() == now.size() + 6 &&
                    content.find_first_not_of("0123456789") == now.size() &&
                    content.substr(now.size()) == "\t<END>")
            << content;
      });
  Ombrix::AliveFileReaderWriter checker(alive);
  EXPECT_TRUE(checker.checkAlive());
  // The kills did strike while files were being written, else the test would prove nothing.
  EXPECT_GT(dataStruck, 0);
  EXPECT_GT(stateStruck, 0);
  EXPECT_GT(aliveStruck, 0);
}

TEST(Reliability, ASecondSolverInTheSameDirectoryIsRefused)
{
  TempDir dir;
  const Ombrix::ExchangeSide holder(Ombrix::ExchangeRole::Solver, dir.path().string());
  const std::string command = std::string(OMBRIX_EXCHANGE_SOLVER) + " --dir " + dir.path().string() + " 2> " +
                              dir.file("solver.stderr") + " > /dev/null";
  const int status = std::system(command.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 2);
  EXPECT_EQ(readFile(dir.file("solver.stderr")),
            "exchange_solver: The solver side of the exchange directory " + dir.path().string() +
                " is held by process " + std::to_string(::getpid()) + " on host " +
                FileSystem::FileLock::currentProcess().host +
                ": stop that solver or give this one another directory\n");
}

TEST(Reliability, TheExampleRunsWithPollingDurableWritesAndHeartbeatsJudgedByChanges)
{
  TempDir dir;
  const std::string options =
      " --dir " + dir.path().string() +
      " --heartbeat 1 --grace 3 --waits Polling --durable 1 --heartbeat-judgement StampChanges";
  const std::string command = std::string(OMBRIX_EXCHANGE_CLIENT) + options + " > " + dir.file("client.txt") +
                              " 2>&1 & " + OMBRIX_EXCHANGE_SOLVER + options + " --steps 2 > " +
                              dir.file("solver.txt") + " 2>&1; wait";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_NE(readFile(dir.file("solver.txt")).find("solver: finished 2 steps (2 exchanges)"),
            std::string::npos)
      << readFile(dir.file("solver.txt"));
  EXPECT_NE(readFile(dir.file("client.txt")).find("client: 2 exchanges up to t 20.0 s"), std::string::npos)
      << readFile(dir.file("client.txt"));
}
