#include "ombrix/exchange/StateFileReaderWriter.h"

#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "support/ExchangeFixtures.h"
#include "support/GroupingLocale.h"
#include "support/TestSupport.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

using KorvanSDK::SolveState;
using namespace Ombrix;
using namespace OmbrixTest;

namespace
{

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
  ScriptedStateFile(std::string path, std::vector<SolveState> script)
      : file(path), m_path(std::move(path)), m_script(std::move(script))
  {
    show();
  }

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

  StateFileReaderWriter file;

private:
  void show()
  {
    const SolveState next = m_script[std::min<std::size_t>(m_stops, m_script.size() - 1)];
    std::filesystem::remove(m_path);
    if (next == SolveState::Unknown)
      writeFile(m_path, "1002\tClient_Solving");
    else if (next != SolveState::NoFile)
      StateFileReaderWriter(m_path).writeState(next, 1);
  }

  std::string m_path;
  std::vector<SolveState> m_script;
  int m_stops = 0;
};

// A partner heartbeat with a fixed verdict.
class FixedHeartbeat : public AliveFileReaderWriter
{
public:
  explicit FixedHeartbeat(bool alive) : m_alive(alive) {}
  bool checkAlive() const override { return m_alive; }

private:
  bool m_alive;
};

} // namespace

TEST(StateFileReaderWriter, WritesExactBytesAndReadsThemBack)
{
  // Neither a host locale that groups digits nor the tries change a byte, and a write replaces a longer
  // earlier file whole.
  const GroupingLocale grouping;
  TempDir dir;
  const std::string path = dir.file("out.state");
  writeFile(path, "120\tWaitingForFNGeneration\t<END> and a long tail from an earlier writer");
  const struct
  {
    int value;
    int tries;
    const char* bytes;
  } cases[] = {
      {2016, 1, "2016\tCFDSolver_SolveStarted\t<END>"},
      {21003, 0, "21003\tCFDSolver_NewDataReady\t<END>"},
      {1003, -5, "1003\tClient_NewDataReady\t<END>"},
      {1, 3, "1\tInitializing\t<END>"},
      {-3, 1, "-3\tTimeOut\t<END>"},
      {-1, 1, "-1\tNoFile\t<END>"},
      {10, 1, "10\tSolving\t<END>"},
  };
  StateFileReaderWriter file(path);
  for (const auto& [value, tries, bytes] : cases)
  {
    SCOPED_TRACE(bytes);
    EXPECT_TRUE(file.writeState(state(value), tries));
    EXPECT_EQ(readFile(path), bytes);
    EXPECT_EQ(file.getState(), state(value));
    EXPECT_EQ(StateFileReaderWriter(path).readState(1), state(value));
  }
}

TEST(StateFileReaderWriter, WritesThatCannotBeMade)
{
  StateFileReaderWriter noPath;
  EXPECT_FALSE(noPath.writeState(SolveState::Solving, 1));
  EXPECT_EQ(noPath.getState(), SolveState::Unknown);
  EXPECT_FALSE(noPath.exists());
  EXPECT_EQ(noPath.readState(3), SolveState::NoFile);

  // A file that cannot be written is not reported.
  TempDir dir;
  StateFileReaderWriter unwritable(dir.file("missing-folder/out.state"));
  EXPECT_TRUE(unwritable.writeState(SolveState::Finished, 1));
  EXPECT_EQ(unwritable.getState(), SolveState::Finished);
  EXPECT_FALSE(unwritable.exists());

  // A state without a text leaves an empty file, which no reader takes for a state, and the last state.
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
  const std::string complete = "1003\tClient_NewDataReady\t<END>";
  const struct
  {
    std::optional<std::string> content; // none: no file
    int tries;
    int expected;
  } cases[] = {
      {std::nullopt, 5, -1},
      {"2016\tCFDSolver_SolveStarted", 1, 0},
      {"2016\tCFDSolver_SolveStarted\t<END>", 1, 2016},
      {"2016", 1, 0},
      {"21003\tanything at all\t<END>", 1, 21003},
      {"7\tNot a state\t<END>", 1, 7},
      {"-2\tInActive\t<END>", 1, -2},
      {"1003<END>", 1, 1003},
      {" \t1016\tClient_SolveStarted\t<END>\n", 1, 1016},
      {"2016\tCFDSolver_SolveStarted\t<END>\n99\tmore", 1, 2016},
      {"2016\tCFDSolver_SolveStarted\n<END>", 1, 0},
      // A file zero-filled by a power loss.
      {std::string("1003\tClient_NewDataReady\0\0\t<END>", 32), 1, 0},
      // A complete file, yet without tries it is not looked at.
      {complete, 0, -1},
      {complete, -1, -1},
      // No number in any try, 100 ms apart.
      {"abc", 3, -1},
      {"", 1, -1},
      {"99999999999\tSolving\t<END>", 1, -1},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.content.value_or("no file") + ", tries " + std::to_string(c.tries));
    StateFileReaderWriter file(path);
    file.writeState(SolveState::Solving, 1);
    if (c.content)
      writeFile(path, *c.content);
    else
      std::filesystem::remove(path);
    const auto start = SteadyClock::now();
    EXPECT_EQ(file.readState(c.tries), state(c.expected));
    EXPECT_EQ(file.getState(), state(c.expected));
    EXPECT_EQ(file.exists(), c.content.has_value());
    if (c.content && c.expected == -1)
    {
      EXPECT_GE(millisecondsSince(start), (c.tries - 1) * 100);
    }
  }
}

TEST(StateFileReaderWriter, WaitsTellWhyAndWhenTheyEnded)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  const SolveState answer = SolveState::Client_NewDataReady, started = SolveState::CFDSolver_SolveStarted,
                   solving = SolveState::Client_Solving, waiting = SolveState::Client_WaitForData;
  const std::string shows = path + " shows Client_NewDataReady";
  const auto to = [&](int lastSeen)
  {
    return " waiting for " + path + " to show Client_NewDataReady (last seen: " + std::to_string(lastSeen) +
           ")";
  };
  const std::string either =
      "timed out after 250 ms waiting for " + path + " to show 7 or Client_NewDataReady";
  const std::string dead = "the partner's heartbeat stopped while" + to(1002);
  const struct
  {
    std::vector<SolveState> script; // its last state is the last one read
    std::set<SolveState> awaited;
    int timeout;
    int stopAt;                       // the call of the stop function that returns true; 0: never
    std::optional<bool> partnerAlive; // none: no partner heartbeat checked
    WaitEnd end;
    std::size_t fewestReads, mostReads;
    std::string message; // "stopped after <elapsed> ms" precedes it for a stopped wait
  } cases[] = {
      {{answer}, {answer, SolveState::Client_SolveStarted}, -1, 1, true, WaitEnd::Reached, 1, 1, shows},
      // The read after the time-out is tested too.
      {{started, answer}, {answer}, 0, 0, {}, WaitEnd::Reached, 2, 2, shows},
      {{started, waiting}, {answer}, 0, 0, {}, WaitEnd::TimedOut, 2, 2, "timed out after 0 ms" + to(1001)},
      // One read before the loop, one after each 100-ms pause; the third pause takes it past 250 ms. A state
      // without a text is named by its number.
      {{started}, {answer, state(7)}, 250, 0, true, WaitEnd::TimedOut, 2, 4, either + " (last seen: 2016)"},
      {{started, solving}, {answer}, -1, 3, {}, WaitEnd::Stopped, 3, 3, to(1002)},
      {{SolveState::Unknown, SolveState::NoFile, answer}, {answer}, -1, 0, {}, WaitEnd::Reached, 3, 3, shows},
      // The partner is asked before the stop function.
      {{solving}, {answer}, -1, 1, false, WaitEnd::PartnerDead, 1, 1, dead},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.message);
    ScriptedStateFile script(path, c.script);
    std::optional<FixedHeartbeat> partner;
    if (c.partnerAlive)
      partner.emplace(*c.partnerAlive);
    int stops = 0;
    const auto start = SteadyClock::now();
    const WaitResult result =
        script.file.waitFor(c.awaited, script.advancing([&] { return ++stops == c.stopAt; }), c.timeout,
                            partner ? &*partner : nullptr);
    EXPECT_EQ(result.end, c.end);
    EXPECT_EQ(result.state, c.script.back());
    EXPECT_EQ(script.file.getState(), c.script.back());
    // The stop function is asked before each pause, and a stopped wait reads no more.
    const std::size_t reads = script.stops() + (c.end == WaitEnd::Stopped ? 0u : 1u);
    EXPECT_GE(reads, c.fewestReads);
    EXPECT_LE(reads, c.mostReads);
    // A script of several states is read across at least one pause.
    EXPECT_GE(millisecondsSince(start), std::max(c.timeout, 0) + (c.script.size() > 1 ? 100 : 0));
    EXPECT_EQ(result.message, c.end == WaitEnd::Stopped
                                  ? "stopped after " + std::to_string(result.elapsed) + " ms" + c.message
                                  : c.message);
  }
  // The plain forms give the last state read.
  ScriptedStateFile script(path, {SolveState::Client_Solving, answer});
  EXPECT_EQ(script.file.waitForState(answer, script.advancing([] { return true; }), -1),
            SolveState::Client_Solving);
  EXPECT_EQ(script.file.waitForState({answer}, script.advancing(), -1), answer);
  EXPECT_EQ(script.file.waitForState(answer, 0), answer);
  EXPECT_EQ(script.file.waitForState({SolveState::Failed}, 0), answer);
}

TEST(StateFileReaderWriter, WaitSeesTheFileWrittenByAnotherThread)
{
  TempDir dir;
  const std::string path = dir.file("in.state");
  StateFileReaderWriter reader(path);
  for (const bool notified : {false, true})
  {
    SCOPED_TRACE(notified);
    reader.setSideOptions({.notifiedWaits = notified});
    writeFile(path, "1002\tClient_Solving\t<END>");
    const auto waiting = SteadyClock::now();
    std::thread client(
        [&]
        {
          std::this_thread::sleep_for(std::chrono::milliseconds(150));
          StateFileReaderWriter(path).writeState(SolveState::Client_NewDataReady, 1);
        });
    const WaitResult result = reader.waitFor({SolveState::Client_NewDataReady}, {}, 10000);
    const auto elapsed = millisecondsSince(waiting);
    client.join();
    EXPECT_EQ(result.message, path + " shows Client_NewDataReady");
    EXPECT_GE(elapsed, 150);
    EXPECT_EQ(reader.getState(), SolveState::Client_NewDataReady);
  }
}
