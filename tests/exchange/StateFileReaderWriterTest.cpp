#include "ombrix/exchange/StateFileReaderWriter.h"

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

constexpr auto state = [](int value) { return static_cast<SolveState>(value); };

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

  std::function<bool()> advancing(std::function<bool()> stop = [] { return false; })
  {
    return [this, stop]
    {
      ++m_stops;
      show();
      return stop();
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

} // namespace

TEST(StateFileReaderWriter, WritesExactBytesAndReadsThemBackOrRefusesToWrite)
{
  // Neither a host locale that groups digits nor the tries change a byte, and a write replaces a longer
  // earlier file whole.
  const GroupingLocale grouping;
  TempDir dir;
  const std::string path = dir.file("out.state");
  writeFile(path, "120\tWaitingForFNGeneration\t<END> and a long tail from an earlier writer");
  const std::tuple<int, int, const char*> cases[] = {
      {2016, 1, "2016\tCFDSolver_SolveStarted\t<END>"},
      {21003, 0, "21003\tCFDSolver_NewDataReady\t<END>"},
      {1003, -5, "1003\tClient_NewDataReady\t<END>"},
      {-3, 1, "-3\tTimeOut\t<END>"},
      {-1, 1, "-1\tNoFile\t<END>"},
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

  // Writes that cannot be made.
  StateFileReaderWriter noPath;
  EXPECT_FALSE(noPath.writeState(SolveState::Solving, 1));
  EXPECT_EQ(noPath.getState(), SolveState::Unknown);
  EXPECT_FALSE(noPath.exists());
  EXPECT_EQ(noPath.readState(3), SolveState::NoFile);

  // A file that cannot be written is not reported.
  StateFileReaderWriter unwritable(dir.file("missing-folder/out.state"));
  EXPECT_TRUE(unwritable.writeState(SolveState::Finished, 1));
  EXPECT_EQ(unwritable.getState(), SolveState::Finished);
  EXPECT_FALSE(unwritable.exists());

  // A state without a text leaves an empty file, which no reader takes for a state, and the last state.
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
  // {content (none: no file), tries, state read}
  const std::tuple<std::optional<std::string>, int, int> cases[] = {
      {std::nullopt, 5, -1},
      {"2016\tCFDSolver_SolveStarted", 1, 0},
      {"2016", 1, 0},
      {"7\tNot a state\t<END>", 1, 7},
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
  for (const auto& [content, tries, expected] : cases)
  {
    SCOPED_TRACE(content.value_or("no file") + ", tries " + std::to_string(tries));
    StateFileReaderWriter file(path);
    file.writeState(SolveState::Solving, 1);
    if (content)
      writeFile(path, *content);
    else
      std::filesystem::remove(path);
    const auto start = SteadyClock::now();
    EXPECT_EQ(file.readState(tries), state(expected));
    EXPECT_EQ(file.getState(), state(expected));
    EXPECT_EQ(file.exists(), content.has_value());
    if (content && expected == -1)
    {
      EXPECT_GE(millisecondsSince(start), (tries - 1) * 100);
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
  // {states read (the last one repeats), awaited, time-out, the call of the stop function that returns true
  // (0: never), the partner's verdict (none: not checked), end, fewest and most reads, message}
  using Row = std::tuple<std::vector<SolveState>, std::set<SolveState>, int, int, std::optional<bool>,
                         WaitEnd, std::size_t, std::size_t, std::string>;
  const Row cases[] = {
      {{answer}, {answer, SolveState::Client_SolveStarted}, -1, 1, true, WaitEnd::Reached, 1, 1, shows},
      // The read after the time-out is tested too.
      {{started, answer}, {answer}, 0, 0, {}, WaitEnd::Reached, 2, 2, shows},
      {{started, waiting}, {answer}, 0, 0, {}, WaitEnd::TimedOut, 2, 2, "timed out after 0 ms" + to(1001)},
      // One read before the loop, one after each 100-ms pause; the third pause takes it past 250 ms. A
      // state without a text is named by its number.
      {{started}, {answer, state(7)}, 250, 0, true, WaitEnd::TimedOut, 2, 4, either + " (last seen: 2016)"},
      {{started, solving}, {answer}, -1, 3, {}, WaitEnd::Stopped, 3, 3, to(1002)},
      {{SolveState::Unknown, SolveState::NoFile, answer}, {answer}, -1, 0, {}, WaitEnd::Reached, 3, 3, shows},
      // The partner is asked before the stop function.
      {{solving}, {answer}, -1, 1, false, WaitEnd::PartnerDead, 1, 1, dead},
  };
  for (const auto& [script, awaited, timeout, stopAt, partnerAlive, end, fewest, most, message] : cases)
  {
    SCOPED_TRACE(message);
    ScriptedStateFile file(path, script);
    std::optional<ScriptedHeartbeat> partner;
    if (partnerAlive)
      partner.emplace("", std::vector<bool>{*partnerAlive});
    int stops = 0;
    const auto start = SteadyClock::now();
    const WaitResult result =
        file.file.waitFor(awaited, file.advancing([&stops, at = stopAt] { return ++stops == at; }), timeout,
                          partner ? &*partner : nullptr);
    expectEnd(result, end, message);
    EXPECT_EQ(result.state, script.back());
    EXPECT_EQ(file.file.getState(), script.back());
    // The stop function is asked before each pause, and a stopped wait reads no more.
    const std::size_t reads = file.stops() + (end == WaitEnd::Stopped ? 0u : 1u);
    EXPECT_GE(reads, fewest);
    EXPECT_LE(reads, most);
    // A script of several states is read across at least one pause.
    EXPECT_GE(millisecondsSince(start), std::max(timeout, 0) + (script.size() > 1 ? 100 : 0));
  }
  // The plain forms give the last state read.
  ScriptedStateFile file(path, {SolveState::Client_Solving, answer});
  EXPECT_EQ(file.file.waitForState(answer, file.advancing([] { return true; }), -1),
            SolveState::Client_Solving);
  EXPECT_EQ(file.file.waitForState({answer}, file.advancing(), -1), answer);
  EXPECT_EQ(file.file.waitForState(answer, 0), answer);
  EXPECT_EQ(file.file.waitForState({SolveState::Failed}, 0), answer);
}

TEST(StateFileReaderWriter, NotifiedWaitSeesTheFileWrittenByAnotherThread)
{
  // Polled waits read between pauses whoever writes: the scripted waits above cover them.
  TempDir dir;
  const std::string path = dir.file("in.state");
  StateFileReaderWriter reader(path);
  reader.setSideOptions({.notifiedWaits = true});
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
