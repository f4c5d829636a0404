#include "ombrix/exchange/ExchangeSide.h"

#include "ombrix/platform/AtomicFileWriter.h"

#include "support/TestSupport.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

using KorvanSDK::SolveState;
using Ombrix::ExchangeRole;
using Ombrix::ExchangeSide;
using Ombrix::WaitEnd;
using OmbrixTest::TempDir;
using OmbrixTest::writeFile;

namespace
{

std::string stamp(std::int64_t secondsFromNow)
{
  return std::to_string(static_cast<std::int64_t>(std::time(nullptr)) + secondsFromNow) + "\t<END>";
}

} // namespace

TEST(ExchangeSide, VocabularyTexts)
{
  for (auto [end, text] : {std::pair{WaitEnd::Reached, "Reached"},
                           {WaitEnd::TimedOut, "TimedOut"},
                           {WaitEnd::Stopped, "Stopped"},
                           {WaitEnd::PartnerDead, "PartnerDead"},
                           {WaitEnd::PartnerFailed, "PartnerFailed"}})
  {
    EXPECT_EQ(Ombrix::waitEndToString(end), text);
    EXPECT_EQ(Ombrix::waitEndFromString(text, WaitEnd::Reached), end);
  }
  EXPECT_EQ(Ombrix::waitEndFromString("reached", WaitEnd::Stopped), WaitEnd::Stopped);
  EXPECT_EQ(Ombrix::exchangeRoleToString(ExchangeRole::Client), "client");
  EXPECT_EQ(Ombrix::exchangeRoleFromString("solver", ExchangeRole::Client), ExchangeRole::Solver);
  EXPECT_EQ(Ombrix::heartbeatJudgementToString(Ombrix::HeartbeatJudgement::StampChanges), "StampChanges");
  EXPECT_EQ(Ombrix::heartbeatJudgementFromString("SharedClock", Ombrix::HeartbeatJudgement::StampChanges),
            Ombrix::HeartbeatJudgement::SharedClock);
}

TEST(ExchangeSide, WaitsSayWhyTheyEnded)
{
  TempDir dir;
  const std::string alive = dir.file("in.alive");
  ExchangeSide solver(ExchangeRole::Solver, dir.path().string(), {.notifiedWaits = true});
  ExchangeSide client(ExchangeRole::Client, dir.path().string());

  writeFile(alive, "100\t<END>");
  Ombrix::WaitResult result = solver.waitForPartnerStart(0);
  EXPECT_EQ(result.end, WaitEnd::TimedOut);
  EXPECT_EQ(result.message, "the client did not start: no heartbeat in " + alive + " within 0 ms");
  writeFile(alive, stamp(0));
  EXPECT_TRUE(solver.waitForPartnerStart(0).reached());

  client.setState(SolveState::Client_Solving);
  const std::set<SolveState> answer = {SolveState::Client_NewDataReady};
  result = solver.waitForPartnerState(answer, 0);
  EXPECT_EQ(result.end, WaitEnd::TimedOut);
  EXPECT_EQ(result.state, SolveState::Client_Solving);
  EXPECT_EQ(result.message,
            "timed out after 0 ms waiting for the client to reach Client_NewDataReady (last seen: 1002)");
  result = solver.waitForPartnerState(answer, -1, [] { return true; });
  EXPECT_EQ(result.end, WaitEnd::Stopped);
  EXPECT_EQ(result.message, "stopped after " + std::to_string(result.elapsed) +
                                " ms waiting for the client to reach Client_NewDataReady (last seen: 1002)");

  client.setState(SolveState::Failed);
  result = solver.waitForPartnerState(answer, -1);
  EXPECT_EQ(result.end, WaitEnd::PartnerFailed);
  EXPECT_EQ(result.message, "the client reports that it failed");
  client.setState(SolveState::Client_NewDataReady);
  result = solver.waitForPartnerState(answer, -1);
  EXPECT_TRUE(result.reached());
  EXPECT_EQ(result.message, "the client reached Client_NewDataReady");

  // A grace period of 0 s finds every stamp too old.
  solver.setHeartbeat(1, 0);
  client.setState(SolveState::Client_Solving);
  result = solver.waitForPartnerState(answer, -1);
  EXPECT_EQ(result.end, WaitEnd::PartnerDead);
  EXPECT_EQ(result.message, "the client stopped answering: its heartbeat in " + alive + " is older than 0 s");
}

TEST(ExchangeSide, MissingNotificationsLeaveThePollingPace)
{
  TempDir dir;
  ExchangeSide solver(ExchangeRole::Solver, dir.path().string(),
                      {.notifiedWaits = true, .ignoreNotifications = true});
  ExchangeSide client(ExchangeRole::Client, dir.path().string());
  writeFile(dir.file("in.alive"), stamp(0));
  client.setState(SolveState::Client_Solving);
  // The answer comes after the first read, as the wait asks its stop function, and no notification can
  // cut the 100-ms pause short: the next read finds it.
  int asked = 0;
  const Ombrix::WaitResult result =
      solver.waitForPartnerState({SolveState::Client_NewDataReady}, 10000,
                                 [&]
                                 {
                                   if (asked++ == 0)
                                     client.setState(SolveState::Client_NewDataReady);
                                   return false;
                                 });
  EXPECT_TRUE(result.reached()) << result.message;
  EXPECT_EQ(asked, 1);
  EXPECT_GE(result.elapsed, 100);
}

TEST(ExchangeSide, WaitsForACompleteCSVFile)
{
  TempDir dir;
  const std::string def = dir.file("def.csv");
  ExchangeSide solver(ExchangeRole::Solver, dir.path().string());
  ExchangeSide client(ExchangeRole::Client, dir.path().string(), {.notifiedWaits = true});
  writeFile(dir.file("out.alive"), stamp(0));
  const std::string header = "<<,START,CSV,VER04,>>\nEntityID\n";
  for (const std::string& torn : {std::string(), header, header + std::string(21, '\0') + "\n"})
  {
    writeFile(def, torn);
    const Ombrix::WaitResult result = client.waitForFile("def.csv", 0);
    EXPECT_EQ(result.end, WaitEnd::TimedOut);
    EXPECT_EQ(result.message, "timed out after 0 ms waiting for the solver to write " + def);
  }
  std::thread writer(
      [&]
      {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        FileSystem::AtomicFileWriter::replace(def, header + "<<,END,CSV,VER04,>>\n");
      });
  const Ombrix::WaitResult result = client.waitForFile("def.csv", 10000);
  writer.join();
  EXPECT_TRUE(result.reached()) << result.message;
}

TEST(ExchangeSide, ClaimingRemovesTheTemporariesOfItsOwnFilesOnly)
{
  TempDir dir;
  for (const char* name : {".out.state.1.2.tmp", ".out3.csv.1.2.tmp", ".def.csv.1.2.tmp", ".in.state.1.2.tmp",
                           ".outlet.csv.1.2.tmp", ".in.csv.1.2.tmp"})
    writeFile(dir.file(name), "");
  const ExchangeSide solver(ExchangeRole::Solver, dir.path().string());
  std::set<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
    left.insert(entry.path().filename().string());
  EXPECT_EQ(left, (std::set<std::string>{".in.state.1.2.tmp", ".outlet.csv.1.2.tmp", ".in.csv.1.2.tmp",
                                         "out.lock"}));
}

TEST(ExchangeSide, HeartbeatJudgedByItsChangesNeedsNoSharedClock)
{
  TempDir dir;
  const std::string alive = dir.file("out.alive");
  ExchangeSide client(ExchangeRole::Client, dir.path().string(),
                      {.heartbeatJudgement = Ombrix::HeartbeatJudgement::StampChanges});
  client.setHeartbeat(1, 1);
  Ombrix::AliveFileReaderWriter sameClock(alive);
  sameClock.setGracePeriod(1);

  // The solver's clock is 1000 s behind the client's, and its stamps keep coming.
  writeFile(alive, stamp(-1000));
  EXPECT_FALSE(sameClock.checkAlive());
  EXPECT_TRUE(client.partnerHeartbeat().checkAlive());
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  writeFile(alive, stamp(-999));
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  EXPECT_FALSE(sameClock.checkAlive());
  EXPECT_TRUE(client.partnerHeartbeat().checkAlive());

  // Then they stop: dead once the last change is a grace period old.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  const Ombrix::WaitResult result = client.waitForPartnerState({SolveState::Solving}, -1);
  EXPECT_EQ(result.end, WaitEnd::PartnerDead);
  EXPECT_EQ(result.message,
            "the solver stopped answering: its heartbeat in " + alive + " has not changed for 1 s");
}
