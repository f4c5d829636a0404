// The example solver and client as separate processes in one exchange directory: complete runs in both
// file modes and with every side option, a partner killed mid-exchange, time-outs, a torn incoming file and
// refused command lines. Where one side is played by the test itself, it uses the library's own files.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/model/EntityCollection.h"

#include "support/ExchangeFixtures.h"
#include "support/TestSupport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

namespace
{

using KorvanSDK::SolveState;
using OmbrixTest::readFile;

// One exchange directory for the sides of a run; each side's output goes to <side>.stdout and
// <side>.stderr there.
struct Sides
{
  // Heartbeat 1 s and grace 3 s (the shortest safe pair) keep the detection of a dead partner within a few
  // seconds.
  OmbrixTest::ForkedChild start(const std::string& side, std::vector<std::string> extra, bool common = true)
  {
    const std::string program = side == "solver" ? OMBRIX_EXCHANGE_SOLVER : OMBRIX_EXCHANGE_CLIENT;
    std::vector<std::string> arguments = {program,   "--dir", dir.path().string(), "--heartbeat", "1",
                                          "--grace", "3"};
    arguments.resize(common ? arguments.size() : 1);
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    std::vector<char*> argv;
    for (auto& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    const std::string out = dir.file(side + ".stdout"), err = dir.file(side + ".stderr");
    return OmbrixTest::ForkedChild(
        [&](const std::function<void()>& ready)
        {
          ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
          ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDERR_FILENO);
          ready();
          ::execv(program.c_str(), argv.data());
          std::_Exit(127);
        });
  }
  std::string out(const std::string& side) const { return readFile(dir.file(side + ".stdout")); }
  std::string err(const std::string& side) const { return readFile(dir.file(side + ".stderr")); }
  SolveState state(const char* f) const { return Ombrix::StateFileReaderWriter(dir.file(f)).readState(1); }

  OmbrixTest::TempDir dir;
};

// The test plays a live client with the library's own side.
struct PlayedClient : Ombrix::ExchangeSide
{
  explicit PlayedClient(const Sides& run)
      : ExchangeSide(Ombrix::ExchangeRole::Client, run.dir.path().string())
  {
    setHeartbeat(1, 3);
    startHeartbeat();
  }
};

bool contains(const std::string& text, const std::string& part)
{
  return text.find(part) != std::string::npos;
}

TEST(ExchangeScenario, SolverAndClientCompleteInBothFileModesAndWithEverySideOption)
{
  const std::vector<std::string> cases[] = {
      {"--mode", "Sequential"},
      // Fixed by default.
      {"--waits", "Polling", "--durable", "1", "--heartbeat-judgement", "StampChanges"},
  };
  for (const auto& options : cases)
  {
    SCOPED_TRACE(options[1]);
    Sides run;
    auto client = run.start("client", options);
    std::vector<std::string> solverOptions = options;
    solverOptions.insert(solverOptions.end(), {"--steps", "3"});
    auto solver = run.start("solver", solverOptions);
    EXPECT_EQ(solver.wait(), 0) << run.err("solver");
    EXPECT_EQ(client.wait(), 0) << run.err("client");

    const std::string solverOut = run.out("solver");
    EXPECT_TRUE(contains(solverOut, "solver: finished 3 steps (3 exchanges), simulated 30.0 s")) << solverOut;
    EXPECT_TRUE(contains(run.out("client"), "client: 3 exchanges up to t 30.0 s")) << run.out("client");
    EXPECT_EQ(run.state("out.state"), SolveState::Finished);
    EXPECT_EQ(run.state("in.state"), SolveState::Finished);

    // The client's last answer, in the file the mode names, is the heater flux that the solver reports after
    // its last step.
    const bool sequential = options[1] == "Sequential";
    Ombrix::Model::EntityCollection model;
    Ombrix::CSVDefinitionFileParser(model).parseFile(run.dir.file("def.csv"));
    Ombrix::CSVDataFileParser answer(model, {KorvanSDK::Chronology::Current});
    answer.setKorvanSDK(true);
    EXPECT_TRUE(answer.parseFile(run.dir.file(sequential ? "in2.csv" : "in.csv")));
    EXPECT_EQ(answer.getFileSimulationTime().getIteration(), 3);
    const double flux = model.getEntity("Boundary", "Left End")
                            ->getAttribute(Ombrix::Model::AttributePath("Heat Flux"))
                            .getDoubleValue(KorvanSDK::Chronology::Current, false);
    char expected[64];
    std::snprintf(expected, sizeof expected, "heater flux %.1f W/m^2\n", flux);
    EXPECT_TRUE(contains(solverOut, expected)) << expected << " in\n" << solverOut;
  }
}

TEST(ExchangeScenario, TheClientEndsTheSolveWithEndOnceSettled)
{
  Sides run;
  auto client = run.start("client", {"--end-when-settled", "3"});
  auto solver = run.start("solver", {"--steps", "1000"});
  EXPECT_EQ(solver.wait(), 0) << run.err("solver");
  EXPECT_EQ(client.wait(), 0) << run.err("client");
  EXPECT_TRUE(contains(run.out("client"), "client: settled within 3.000 K, asking the solver to end\n"));
  const std::string solverOut = run.out("solver");
  const std::string asks = "solver: the client asks to end after step ";
  ASSERT_TRUE(contains(solverOut, asks)) << solverOut;
  const long step = std::stol(solverOut.substr(solverOut.find(asks) + asks.size()));
  EXPECT_GT(step, 3);
  EXPECT_LT(step, 1000);
  const std::string steps = std::to_string(step);
  EXPECT_TRUE(contains(solverOut, "solver: finished " + steps + " steps (" + steps + " exchanges)"))
      << solverOut;
}

TEST(ExchangeScenario, ADeadPartnerIsReportedByTheOtherSide)
{
  {
    Sides run;
    auto client = run.start("client", {});
    auto solver = run.start("solver", {"--steps", "1000"});
    ASSERT_TRUE(OmbrixTest::eventually([&] { return contains(run.out("solver"), "step   2"); },
                                       std::chrono::seconds(10)));
    client.kill();
    EXPECT_EQ(solver.wait(), 2);
    EXPECT_EQ(run.err("solver"), "exchange_solver: the client stopped answering: its heartbeat in " +
                                     run.dir.file("in.alive") + " is older than 3 s\n");
    EXPECT_EQ(run.state("out.state"), SolveState::Failed);
  }
  Sides run;
  auto client = run.start("client", {});
  auto solver = run.start("solver", {"--steps", "10", "--crash-at", "3"});
  EXPECT_EQ(solver.wait(), 137);
  EXPECT_EQ(client.wait(), 2);
  EXPECT_EQ(run.err("client"), "exchange_client: the solver stopped answering: its heartbeat in " +
                                   run.dir.file("out.alive") + " is older than 3 s\n");
  EXPECT_TRUE(contains(run.out("solver"), "solver: crashing on purpose at exchange 3\n"));
}

TEST(ExchangeScenario, ATornIncomingFileIsNotAppliedAndFailsTheSolver)
{
  Sides run;
  PlayedClient client(run);
  auto solver = run.start("solver", {"--steps", "5"});

  // Play the client up to its first answer, which is cut off before its footer.
  ASSERT_TRUE(client.waitForPartnerState({SolveState::FinishedWriting_Def_CSV_File}, 10000).reached());
  client.setState(SolveState::FinishedReading_Def_CSV_File);
  ASSERT_TRUE(client.waitForPartnerState({SolveState::CFDSolver_NewDataReady}, 10000).reached());
  const std::string out = readFile(run.dir.file("out.csv"));
  OmbrixTest::writeFile(run.dir.file("in.csv"), out.substr(0, out.rfind("<<,END")));
  client.setState(SolveState::Client_NewDataReady);

  EXPECT_EQ(solver.wait(), 2);
  EXPECT_EQ(run.err("solver"), "exchange_solver: Missing FileFooter\n");
  EXPECT_EQ(run.state("out.state"), SolveState::Failed);
  EXPECT_FALSE(contains(run.out("solver"), "step   1"));
}

TEST(ExchangeScenario, BadCommandLinesATakenSideAndTimeOutsEndTheSolverWithAClearMessage)
{
  Sides run;
  const std::string dir = run.dir.path().string();
  OmbrixTest::TempDir held;
  const Ombrix::ExchangeSide holder(Ombrix::ExchangeRole::Solver, held.path().string());
  // {arguments, exit code, message after the program's name and before the usage text}
  const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
      {{}, 1, "option '--dir' is required\n"},
      {{"--dir", dir, "--mode", "Automatic"}, 1, "option '--mode' is Fixed or Sequential, not 'Automatic'\n"},
      {{"--dir", dir, "--steps", "ten"}, 1, "option '--steps' wants a whole number, not 'ten'\n"},
      {{"--bogus", "1"}, 1, "unknown option '--bogus'\n"},
      {{"--dir"}, 1, "option '--dir' needs a value\n"},
      {{"--dir", dir, "--heartbeat", "2", "--grace", "3"},
       1,
       "the heartbeat must be at least 1 s and the grace period at least 2 s longer\n"},
      {{"--dir", held.path().string()},
       2,
       "The solver side of the exchange directory " + held.path().string() + " is held by process " +
           std::to_string(::getpid()) + " on host " + FileSystem::FileLock::currentProcess().host +
           ": stop that solver or give this one another directory\n"},
      // Time-outs: no client at all, then one whose heartbeat keeps the wait going until the time-out.
      {{"--dir", dir, "--timeout-ms", "300"},
       2,
       "the client did not start: no heartbeat in " + run.dir.file("in.alive") + " within 300 ms\n"},
      {{"--dir", dir, "--timeout-ms", "500"},
       2,
       "timed out after 500 ms waiting for the client to reach FinishedReading_Def_CSV_File "
       "(last seen: -1)\n"},
  };
  for (const auto& [arguments, code, message] : cases)
  {
    SCOPED_TRACE(message);
    // A row that times out waiting for an answer has a client that is alive but never answers.
    std::optional<PlayedClient> client;
    if (message.find("waiting for the client") != std::string::npos)
      client.emplace(run);
    EXPECT_EQ(run.start("solver", arguments, false).wait(), code);
    const std::string err = run.err("solver");
    EXPECT_EQ(err.substr(0, err.find("usage:")), "exchange_solver: " + message);
  }
}

} // namespace
