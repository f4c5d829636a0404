#include "ombrix/exchange/StateFileReaderWriter.h"

#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "support/GroupingLocale.h"
#include "support/TestSupport.h"

#include <chrono>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using KorvanSDK::SolveState;
using Ombrix::StateFileReaderWriter;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;
using OmbrixTest::writeFile;

namespace
{

using Clock = std::chrono::steady_clock;

std::int64_t millisecondsSince(Clock::time_point start)
{
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

SolveState state(int value)
{
  return static_cast<SolveState>(value);
}

// Plays a list of states through a real state file: the file shows the first; every call of the stop
// function that `advancing` gives the wait (made once after each read that missed) shows the next, the
// last one repeating. Unknown is a file without its end marker, NoFile no file.
class ScriptedStateFile
{
public:
  explicit ScriptedStateFile(std::vector<SolveState> script) : m_script(std::move(script)) { show(); }

  std::function<bool()> advancing(std::function<bool()> stop = {})
  {
    return [this, stop]
    {
      ++m_stops;
      show();
      return stop && stop();
    };
  }
  int stops() const { return m_stops; }

  TempDir dir;
  StateFileReaderWriter file{dir.file("in.state")};

private:
  void show()
  {
    const SolveState next = m_script[std::min<std::size_t>(m_stops, m_script.size() - 1)];
    std::remove(dir.file("in.state").c_str());
    if (next == SolveState::Unknown)
      writeFile(dir.file("in.state"), "1002\tClient_Solving");
    else if (next != SolveState::NoFile)
      StateFileReaderWriter(dir.file("in.state")).writeState(next, 1);
  }

  std::vector<SolveState> m_script;
  int m_stops = 0;
};

} // namespace

TEST(StateFileReaderWriter, WritesExactBytesAndReadsThemBack)
{
  TempDir dir;
  const std::pair<int, const char*> cases[] = {
      {2016, "2016\tCFDSolver_SolveStarted\t<END>"},
      {21003, "21003\tCFDSolver_NewDataReady\t<END>"},
      {1003, "1003\tClient_NewDataReady\t<END>"},
      {1, "1\tInitializing\t<END>"},
      {-3, "-3\tTimeOut\t<END>"},
      {-1, "-1\tNoFile\t<END>"},
  };
  StateFileReaderWriter file(dir.file("out.state"));
  for (const auto& [value, bytes] : cases)
  {
    SCOPED_TRACE(bytes);
    EXPECT_TRUE(file.writeState(state(value), 1));
    EXPECT_EQ(readFile(dir.file("out.state")), bytes);
    EXPECT_EQ(file.getState(), state(value));
    EXPECT_EQ(StateFileReaderWriter(dir.file("out.state")).readState(1), state(value));
  }
}

TEST(StateFileReaderWriter, HostLocaleChangesNoNumber)
{
  TempDir dir;
  const OmbrixTest::GroupingLocale grouping;
  StateFileReaderWriter file(dir.file("out.state"));
  EXPECT_TRUE(file.writeState(state(21003), 1));
  EXPECT_EQ(readFile(dir.file("out.state")), "21003\tCFDSolver_NewDataReady\t<END>");
  EXPECT_EQ(file.readState(1), state(21003));
}

TEST(StateFileReaderWriter, WriteTruncatesAndIgnoresTries)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  writeFile(path, "120\tWaitingForFNGeneration\t<END> and a long tail from an earlier writer");
  StateFileReaderWriter file(path);
  for (int tries : {0, -5, 3})
  {
    SCOPED_TRACE(tries);
    EXPECT_TRUE(file.writeState(SolveState::Solving, tries));
    EXPECT_EQ(readFile(path), "10\tSolving\t<END>");
  }
}

TEST(StateFileReaderWriter, WriteWithoutPathDoesNothing)
{
  StateFileReaderWriter file;
  EXPECT_FALSE(file.writeState(SolveState::Solving, 1));
  EXPECT_EQ(file.getState(), SolveState::Unknown);
  EXPECT_FALSE(file.exists());
  EXPECT_EQ(file.readState(3), SolveState::NoFile);
}

TEST(StateFileReaderWriter, UnwritableFileIsNotReported)
{
  TempDir dir;
  const std::string path = dir.file("missing-folder/out.state");
  StateFileReaderWriter file(path);
  EXPECT_TRUE(file.writeState(SolveState::Finished, 1));
  EXPECT_EQ(file.getState(), SolveState::Finished);
  EXPECT_FALSE(file.exists());
}

TEST(StateFileReaderWriter, StateWithoutTextLeavesEmptyFileAndLastState)
{
  TempDir dir;
  const std::string path = dir.file("out.state");
  StateFileReaderWriter file(path);
  for (int value : {0, 2003, 13, -4})
  {
    SCOPED_TRACE(value);
    ASSERT_TRUE(file.writeState(SolveState::Initialized, 1));
    EXPECT_THROW_MSG(file.writeState(state(value), 1), std::logic_error, "Not implemented");
    EXPECT_TRUE(file.exists());
    EXPECT_EQ(readFile(path), "");
    EXPECT_EQ(file.getState(), SolveState::Initialized);
  }
}

TEST(StateFileReaderWriter, ReadsNumberOnlyWhenEndMarkerFollows)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  const std::pair<const char*, int> cases[] = {
      {"2016\tCFDSolver_SolveStarted", 0},
      {"2016\tCFDSolver_SolveStarted\t<END>", 2016},
      {"2016\tCFDSolver_SolveStarted\t<EN", 0},
      {"2016", 0},
      {"21003\tanything at all\t<END>", 21003},
      {"1003\tCFDSolver_SolveStarted\t<END>", 1003},
      {"7\tNot a state\t<END>", 7},
      {"-2\tInActive\t<END>", -2},
      {"1003<END>", 1003},
      {"1003 x<END>y", 1003},
      {" \t1016\tClient_SolveStarted\t<END>\n", 1016},
      {"2016\tCFDSolver_SolveStarted\t<END>\n99\tmore", 2016},
      {"2016\tCFDSolver_SolveStarted\n<END>", 0},
  };
  for (const auto& [content, expected] : cases)
  {
    SCOPED_TRACE(content);
    writeFile(path, content);
    StateFileReaderWriter file(path);
    EXPECT_EQ(file.readState(1), state(expected));
    EXPECT_EQ(file.getState(), state(expected));
  }
}

TEST(StateFileReaderWriter, ZeroTriesOrMissingFileReadAsNoFile)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  StateFileReaderWriter file(path);
  EXPECT_EQ(file.readState(5), SolveState::NoFile);
  EXPECT_FALSE(file.exists());

  writeFile(path, "1003\tClient_NewDataReady\t<END>");
  EXPECT_TRUE(file.exists());
  EXPECT_EQ(file.readState(1), SolveState::Client_NewDataReady);
  // A complete file, yet without tries it is not looked at.
  for (int tries : {0, -1})
  {
    SCOPED_TRACE(tries);
    file.writeState(SolveState::Client_NewDataReady, 1);
    EXPECT_EQ(file.readState(tries), SolveState::NoFile);
    EXPECT_EQ(file.getState(), SolveState::NoFile);
  }
}

TEST(StateFileReaderWriter, UnreadableNumberReadsAsNoFileAfterTries)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  const std::pair<const char*, int> cases[] = {{"abc", 3}, {"", 1}, {"99999999999\tSolving\t<END>", 1}};
  for (const auto& [content, tries] : cases)
  {
    SCOPED_TRACE(content);
    StateFileReaderWriter file(path);
    file.writeState(SolveState::Solving, 1);
    writeFile(path, content);
    const auto start = Clock::now();
    EXPECT_EQ(file.readState(tries), SolveState::NoFile);
    EXPECT_GE(millisecondsSince(start), (tries - 1) * 100);
    EXPECT_EQ(file.getState(), SolveState::NoFile);
  }
}

TEST(StateFileReaderWriter, WaitReturnsAtOnceOnWantedState)
{
  ScriptedStateFile script({SolveState::Client_NewDataReady});
  EXPECT_EQ(script.file.waitForState({SolveState::Client_NewDataReady, SolveState::Client_SolveStarted},
                                     script.advancing(), -1),
            SolveState::Client_NewDataReady);
  EXPECT_EQ(script.stops(), 0) << "one read, no pause";
  EXPECT_EQ(script.file.waitForState(SolveState::Client_NewDataReady, 0), SolveState::Client_NewDataReady);
}

TEST(StateFileReaderWriter, ZeroTimeoutReturnsSecondReadUntested)
{
  ScriptedStateFile script({SolveState::CFDSolver_SolveStarted, SolveState::Client_WaitForData});
  const auto start = Clock::now();
  EXPECT_EQ(script.file.waitForState({SolveState::Client_NewDataReady}, script.advancing(), 0),
            SolveState::Client_WaitForData);
  EXPECT_GE(millisecondsSince(start), 100);
  EXPECT_EQ(script.stops(), 1);
  EXPECT_EQ(script.file.getState(), SolveState::Client_WaitForData);
}

TEST(StateFileReaderWriter, TimeoutEndsWaitAfterItHasPassed)
{
  ScriptedStateFile script({SolveState::CFDSolver_SolveStarted});
  const auto start = Clock::now();
  EXPECT_EQ(script.file.waitForState(SolveState::Client_NewDataReady, script.advancing(), 250),
            SolveState::CFDSolver_SolveStarted);
  EXPECT_GE(millisecondsSince(start), 250);
  // One read before the loop, one after each 100-ms pause; the third pause takes it past 250 ms.
  EXPECT_GE(script.stops() + 1, 2);
  EXPECT_LE(script.stops() + 1, 4);
}

TEST(StateFileReaderWriter, StopEndsUnlimitedWait)
{
  ScriptedStateFile script({SolveState::CFDSolver_SolveStarted, SolveState::Client_Solving});
  int stops = 0;
  EXPECT_EQ(script.file.waitForState(SolveState::Client_NewDataReady,
                                     script.advancing([&] { return ++stops == 3; }), -1),
            SolveState::Client_Solving);
  EXPECT_EQ(stops, 3);
}

TEST(StateFileReaderWriter, UnlimitedWaitEndsOnWantedStatePastUnfinishedAndMissingFiles)
{
  ScriptedStateFile script({SolveState::Unknown, SolveState::NoFile, SolveState::Client_NewDataReady});
  EXPECT_EQ(script.file.waitForState({SolveState::Client_NewDataReady}, script.advancing(), -1),
            SolveState::Client_NewDataReady);
  EXPECT_EQ(script.stops(), 2);
}

TEST(StateFileReaderWriter, WaitSeesStateWrittenByOtherThread)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  StateFileReaderWriter solver(path);
  ASSERT_TRUE(solver.writeState(SolveState::CFDSolver_NewDataReady, 1));

  const auto start = Clock::now();
  std::thread client(
      [&]
      {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        StateFileReaderWriter(path).writeState(SolveState::Client_NewDataReady, 1);
      });
  const SolveState seen = solver.waitForState(SolveState::Client_NewDataReady, 10000);
  const auto elapsed = millisecondsSince(start);
  client.join();
  EXPECT_EQ(seen, SolveState::Client_NewDataReady);
  EXPECT_GE(elapsed, 150);
  EXPECT_EQ(solver.getState(), SolveState::Client_NewDataReady);
}

TEST(StateFileReaderWriter, WaitOnFilesTimesOut)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  StateFileReaderWriter reader(path);
  EXPECT_EQ(reader.waitForState(SolveState::Client_NewDataReady, 0), SolveState::NoFile);

  writeFile(path, "1002\tClient_Solving\t<END>");
  const auto start = Clock::now();
  EXPECT_EQ(reader.waitForState(SolveState::Client_NewDataReady, 150), SolveState::Client_Solving);
  EXPECT_GE(millisecondsSince(start), 150);
}

TEST(StateFileReaderWriter, ANulByteReadsAsAnIncompleteFile)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  writeFile(path, std::string("1003\tClient_NewDataReady\0\0\t<END>", 32));
  EXPECT_EQ(StateFileReaderWriter(path).readState(1), SolveState::Unknown);
}

TEST(StateFileReaderWriter, WaitForTellsWhyItEnded)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  writeFile(path, "1002\tClient_Solving\t<END>");
  StateFileReaderWriter reader(path);
  Ombrix::WaitResult result = reader.waitFor({SolveState::Client_NewDataReady}, {}, 0);
  EXPECT_EQ(result.end, Ombrix::WaitEnd::TimedOut);
  EXPECT_EQ(result.message,
            "timed out after 0 ms waiting for " + path + " to show Client_NewDataReady (last seen: 1002)");

  Ombrix::AliveFileReaderWriter partner(dir.file("in.alive"));
  writeFile(dir.file("in.alive"), "100\t<END>");
  result = reader.waitFor({SolveState::Client_NewDataReady}, {}, -1, &partner);
  EXPECT_EQ(result.end, Ombrix::WaitEnd::PartnerDead);
  EXPECT_EQ(result.message, "the partner's heartbeat stopped while waiting for " + path +
                                " to show Client_NewDataReady (last seen: 1002)");

  reader.setSideOptions({.notifiedWaits = true});
  result = reader.waitFor({SolveState::Client_Solving}, {}, -1);
  EXPECT_TRUE(result.reached());
  EXPECT_EQ(result.message, path + " shows Client_Solving");
}
