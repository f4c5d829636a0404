#include "ombrix/exchange/ExchangeSide.h"

#include "ombrix/platform/AtomicFileWriter.h"

#include "support/ExchangeFixtures.h"
#include "support/Tables.h"
#include "support/TestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>

using KorvanSDK::SolveState;
using namespace Ombrix;
using namespace OmbrixTest;

TEST(ExchangeSide, VocabularyTexts)
{
  expectNames<WaitEnd>(
      {{0, "Reached"}, {1, "TimedOut"}, {2, "Stopped"}, {3, "PartnerDead"}, {4, "PartnerFailed"}},
      waitEndToString, waitEndFromString, static_cast<WaitEnd>(9));
  expectNames<ExchangeRole>({{0, "solver"}, {1, "client"}}, exchangeRoleToString, exchangeRoleFromString,
                            static_cast<ExchangeRole>(9));
  expectNames<HeartbeatJudgement>({{0, "SharedClock"}, {1, "StampChanges"}}, heartbeatJudgementToString,
                                  heartbeatJudgementFromString, static_cast<HeartbeatJudgement>(9));
}

TEST(ExchangeSide, ClaimsItsSideAndWaitsSayWhyTheyEnded)
{
  TempDir dir;
  const std::string inAlive = dir.file("in.alive");
  const std::string def = dir.file("def.csv");
  for (const char* name : {".out.state.1.2.tmp", ".out3.csv.1.2.tmp", ".def.csv.1.2.tmp", ".in.state.1.2.tmp",
                           ".outlet.csv.1.2.tmp", ".in.csv.1.2.tmp"})
    writeFile(dir.file(name), "");
  // The solver's waits keep the polling pace, the client's are notified.
  ExchangeSide solver(ExchangeRole::Solver, dir.path().string(),
                      {.notifiedWaits = true, .ignoreNotifications = true});
  // Claiming a side removes the temporaries of its own files only.
  std::set<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
    left.insert(entry.path().filename().string());
  EXPECT_EQ(left, (std::set<std::string>{".in.state.1.2.tmp", ".outlet.csv.1.2.tmp", ".in.csv.1.2.tmp",
                                         "out.lock"}));
  ExchangeSide client(ExchangeRole::Client, dir.path().string(), {.notifiedWaits = true});
  const auto stop = [] { return true; };

  writeFile(inAlive, "100\t<END>");
  expectEnd(solver.waitForPartnerStart(0), WaitEnd::TimedOut,
            "the client did not start: no heartbeat in " + inAlive + " within 0 ms");
  expectEnd(solver.waitForPartnerStart(-1, stop), WaitEnd::Stopped, " waiting for a heartbeat in " + inAlive);
  writeFile(inAlive, aliveStamp());
  expectEnd(solver.waitForPartnerStart(0), WaitEnd::Reached, "the client is alive");

  client.setState(SolveState::Client_Solving);
  const std::set<SolveState> answer = {SolveState::Client_NewDataReady};
  WaitResult result = solver.waitForPartnerState(answer, 0);
  expectEnd(result, WaitEnd::TimedOut,
            "timed out after 0 ms waiting for the client to reach Client_NewDataReady (last seen: 1002)");
  EXPECT_EQ(result.state, SolveState::Client_Solving);
  expectEnd(solver.waitForPartnerState(answer, -1, stop), WaitEnd::Stopped,
            " waiting for the client to reach Client_NewDataReady (last seen: 1002)");
  client.setState(SolveState::Failed);
  expectEnd(solver.waitForPartnerState(answer, -1), WaitEnd::PartnerFailed,
            "the client reports that it failed");
  // Failed, when awaited, is reached like any other state.
  expectEnd(solver.waitForPartnerState({SolveState::Failed}, 0), WaitEnd::Reached,
            "the client reached Failed");
  client.setState(SolveState::Client_NewDataReady);
  expectEnd(solver.waitForPartnerState(answer, -1), WaitEnd::Reached,
            "the client reached Client_NewDataReady");

  // An answer written after the first read, as the wait asks its stop function, is found by the next read:
  // no notification cuts the 100-ms pause short.
  client.setState(SolveState::Client_Solving);
  int asked = 0;
  result = solver.waitForPartnerState(answer, 10000,
                                      [&]
                                      {
                                        if (asked++ == 0)
                                          client.setState(SolveState::Client_NewDataReady);
                                        return false;
                                      });
  EXPECT_TRUE(result.reached()) << result.message;
  EXPECT_EQ(asked, 1);
  EXPECT_GE(result.elapsed, 100);

  // A grace period of 0 s finds every stamp too old.
  solver.setHeartbeat(1, 0);
  client.setState(SolveState::Client_Solving);
  expectEnd(solver.waitForPartnerState(answer, -1), WaitEnd::PartnerDead,
            "the client stopped answering: its heartbeat in " + inAlive + " is older than 0 s");

  // The client waits for the solver's files the same way.
  writeFile(dir.file("out.alive"), aliveStamp());
  expectEnd(client.waitForFile("def.csv", -1, stop), WaitEnd::Stopped,
            " waiting for the solver to write " + def);
  // A torn file is not complete (a header line ends in ">>" too); one renamed into place whole ends the
  // wait.
  const std::string header = "<<,START,CSV,VER04,>>\nEntityID\n";
  for (const std::string& torn : {std::string(), header.substr(0, header.find('\n') + 1), header,
                                  header + std::string(21, '\0') + "\n"})
  {
    writeFile(def, torn);
    expectEnd(client.waitForFile("def.csv", 0), WaitEnd::TimedOut,
              "timed out after 0 ms waiting for the solver to write " + def);
  }
  std::thread writer(
      [&]
      {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        FileSystem::AtomicFileWriter::replace(def, header + "<<,END,CSV,VER04,>>\n");
      });
  result = client.waitForFile("def.csv", 10000);
  writer.join();
  expectEnd(result, WaitEnd::Reached, def + " is complete");
  std::filesystem::remove(def);
  client.setHeartbeat(1, 0);
  expectEnd(client.waitForFile("def.csv", -1), WaitEnd::PartnerDead,
            "the solver stopped answering: its heartbeat in " + dir.file("out.alive") + " is older than 0 s");
}

TEST(ExchangeSide, HeartbeatJudgedByItsChangesNeedsNoSharedClock)
{
  TempDir dir;
  const std::string alive = dir.file("out.alive");
  ExchangeSide client(ExchangeRole::Client, dir.path().string(),
                      {.heartbeatJudgement = HeartbeatJudgement::StampChanges});
  client.setHeartbeat(1, 1);
  AliveFileReaderWriter sameClock(alive);
  sameClock.setGracePeriod(1);

  // The solver's clock is 1000 s behind the client's, and its stamps keep coming.
  writeFile(alive, aliveStamp(-1000));
  EXPECT_FALSE(sameClock.checkAlive());
  EXPECT_TRUE(client.partnerHeartbeat().checkAlive());
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  writeFile(alive, aliveStamp(-999));
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  EXPECT_FALSE(sameClock.checkAlive());
  EXPECT_TRUE(client.partnerHeartbeat().checkAlive());

  // Then they stop: dead once the last change is a grace period old.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  expectEnd(client.waitForPartnerState({SolveState::Solving}, -1), WaitEnd::PartnerDead,
            "the solver stopped answering: its heartbeat in " + alive + " has not changed for 1 s");
}
