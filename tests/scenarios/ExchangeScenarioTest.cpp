// The example solver and client as separate processes in one exchange directory: complete runs in both
// file modes, a partner killed mid-exchange, time-outs, and a torn incoming file. Where one side is
// played by the test itself, it uses the library's own state and alive files.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/model/EntityCollection.h"

#include "support/TestSupport.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{

using KorvanSDK::SolveState;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;

// A child process whose standard output and error go to files; killed if still running when destroyed.
class Process
{
public:
  Process(const std::string& program, std::vector<std::string> arguments, const std::string& outFile,
          const std::string& errFile)
  {
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (auto& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    const int error = posix_spawn(&m_pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
      throw std::runtime_error("cannot start " + program);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process()
  {
    if (!m_status)
    {
      ::kill(m_pid, SIGKILL);
      ::waitpid(m_pid, nullptr, 0);
    }
  }

  // The exit code, or nullopt when the process is still running after `limit` (it is then killed, so
  // that a test fails instead of hanging) or ended by a signal (-signal).
  std::optional<int> wait(std::chrono::seconds limit = std::chrono::seconds(60))
  {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!m_status)
    {
      int status = 0;
      if (::waitpid(m_pid, &status, WNOHANG) == m_pid)
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
      else if (std::chrono::steady_clock::now() > deadline)
      {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        m_status = -SIGKILL;
        return std::nullopt;
      }
      else
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return m_status;
  }

  void kill() const { ::kill(m_pid, SIGKILL); }

private:
  pid_t m_pid = -1;
  std::optional<int> m_status;
};

// Heartbeat 1 s and grace 3 s (the shortest safe pair) keep the detection of a dead partner within a few
// seconds.
std::vector<std::string> common(const TempDir& dir, std::vector<std::string> extra = {})
{
  std::vector<std::string> arguments = {"--dir", dir.path().string(), "--heartbeat", "1", "--grace", "3"};
  arguments.insert(arguments.end(), extra.begin(), extra.end());
  return arguments;
}

std::unique_ptr<Process> start(const char* program, const TempDir& dir, const std::string& side,
                               std::vector<std::string> arguments)
{
  return std::make_unique<Process>(program, std::move(arguments), dir.file(side + ".stdout"),
                                   dir.file(side + ".stderr"));
}

bool contains(const std::string& text, const std::string& part)
{
  return text.find(part) != std::string::npos;
}

// Polls until `path` holds `part` (or ten seconds passed).
bool waitForText(const std::string& path, const std::string& part)
{
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!contains(readFile(path), part))
  {
    if (std::chrono::steady_clock::now() > deadline)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

TEST(ExchangeScenario, SolverAndClientCompleteInBothFileModes)
{
  for (const std::string mode : {"Fixed", "Sequential"})
  {
    SCOPED_TRACE(mode);
    TempDir dir;
    auto client = start(OMBRIX_EXCHANGE_CLIENT, dir, "client", common(dir, {"--mode", mode}));
    auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--mode", mode, "--steps", "3"}));
    EXPECT_EQ(solver->wait(), 0) << readFile(dir.file("solver.stderr"));
    EXPECT_EQ(client->wait(), 0) << readFile(dir.file("client.stderr"));

    const std::string solverOut = readFile(dir.file("solver.stdout"));
    const std::string clientOut = readFile(dir.file("client.stdout"));
    EXPECT_TRUE(contains(solverOut, "solver: finished 3 steps (3 exchanges), simulated 30.0 s")) << solverOut;
    EXPECT_TRUE(contains(clientOut, "client: 3 exchanges up to t 30.0 s")) << clientOut;
    EXPECT_EQ(Ombrix::StateFileReaderWriter(dir.file("out.state")).readState(1), SolveState::Finished);
    EXPECT_EQ(Ombrix::StateFileReaderWriter(dir.file("in.state")).readState(1), SolveState::Finished);

    const bool sequential = mode == "Sequential";
    EXPECT_EQ(std::filesystem::exists(dir.file("out.csv")), !sequential);
    for (const char* name : {"out0.csv", "out2.csv", "in0.csv", "in2.csv"})
      EXPECT_EQ(std::filesystem::exists(dir.file(name)), sequential) << name;

    // The client's last answer is the heater flux that the solver reports after its last step.
    Ombrix::Model::EntityCollection model;
    Ombrix::CSVDefinitionFileParser(model).parseFile(dir.file("def.csv"));
    Ombrix::CSVDataFileParser answer(model, {KorvanSDK::Chronology::Current});
    answer.setKorvanSDK(true);
    EXPECT_TRUE(answer.parseFile(dir.file(sequential ? "in2.csv" : "in.csv")));
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
  TempDir dir;
  auto client = start(OMBRIX_EXCHANGE_CLIENT, dir, "client", common(dir, {"--end-when-settled", "3"}));
  auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--steps", "1000"}));
  EXPECT_EQ(solver->wait(), 0) << readFile(dir.file("solver.stderr"));
  EXPECT_EQ(client->wait(), 0) << readFile(dir.file("client.stderr"));
  const std::string solverOut = readFile(dir.file("solver.stdout"));
  EXPECT_TRUE(contains(readFile(dir.file("client.stdout")),
                       "client: settled within 3.000 K, asking the solver to end\n"));
  long step = 0;
  const auto at = solverOut.find("solver: the client asks to end after step ");
  ASSERT_NE(at, std::string::npos) << solverOut;
  step = std::stol(solverOut.substr(at + std::string("solver: the client asks to end after step ").size()));
  EXPECT_GT(step, 3);
  EXPECT_LT(step, 1000);
  EXPECT_TRUE(contains(solverOut, "solver: finished " + std::to_string(step) + " steps (" +
                                      std::to_string(step) + " exchanges)"))
      << solverOut;
}

TEST(ExchangeScenario, AKilledClientIsReportedByTheSolver)
{
  TempDir dir;
  auto client = start(OMBRIX_EXCHANGE_CLIENT, dir, "client", common(dir));
  auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--steps", "1000"}));
  ASSERT_TRUE(waitForText(dir.file("solver.stdout"), "step   2"));
  client->kill();
  EXPECT_EQ(solver->wait(), 2);
  EXPECT_EQ(readFile(dir.file("solver.stderr")),
            "exchange_solver: the client stopped answering: its heartbeat in " + dir.file("in.alive") +
                " is older than 3 s\n");
  EXPECT_EQ(Ombrix::StateFileReaderWriter(dir.file("out.state")).readState(1), SolveState::Failed);
}

TEST(ExchangeScenario, ACrashedSolverIsReportedByTheClient)
{
  TempDir dir;
  auto client = start(OMBRIX_EXCHANGE_CLIENT, dir, "client", common(dir));
  auto solver =
      start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--steps", "10", "--crash-at", "3"}));
  EXPECT_EQ(solver->wait(), 137);
  EXPECT_EQ(client->wait(), 2);
  EXPECT_EQ(readFile(dir.file("client.stderr")),
            "exchange_client: the solver stopped answering: its heartbeat in " + dir.file("out.alive") +
                " is older than 3 s\n");
  EXPECT_TRUE(contains(readFile(dir.file("solver.stdout")), "solver: crashing on purpose at exchange 3\n"));
}

TEST(ExchangeScenario, TimeOutsEndTheWaitWithAClearMessage)
{
  // No client at all.
  {
    TempDir dir;
    auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--timeout-ms", "300"}));
    EXPECT_EQ(solver->wait(), 2);
    EXPECT_EQ(readFile(dir.file("solver.stderr")),
              "exchange_solver: the client did not start: no heartbeat in " + dir.file("in.alive") +
                  " within 300 ms\n");
  }
  // A client that is alive but never answers: the heartbeat keeps the wait going until the time-out.
  {
    TempDir dir;
    Ombrix::AliveFileReaderWriter heartbeat(dir.file("in.alive"));
    heartbeat.setInterval(1);
    heartbeat.start();
    auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--timeout-ms", "500"}));
    EXPECT_EQ(solver->wait(), 2);
    EXPECT_EQ(readFile(dir.file("solver.stderr")),
              "exchange_solver: timed out after 500 ms waiting for the client to reach "
              "FinishedReading_Def_CSV_File (last seen: -1)\n");
  }
}

TEST(ExchangeScenario, ATornIncomingFileIsNotAppliedAndFailsTheSolver)
{
  TempDir dir;
  Ombrix::AliveFileReaderWriter heartbeat(dir.file("in.alive"));
  heartbeat.setInterval(1);
  heartbeat.start();
  Ombrix::StateFileReaderWriter clientState(dir.file("in.state"));
  Ombrix::StateFileReaderWriter solverState(dir.file("out.state"));
  auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", common(dir, {"--steps", "5"}));

  // Play the client up to its first answer, which is cut off before its footer.
  ASSERT_EQ(solverState.waitForState(SolveState::FinishedWriting_Def_CSV_File, 10000),
            SolveState::FinishedWriting_Def_CSV_File);
  clientState.writeState(SolveState::FinishedReading_Def_CSV_File, 1);
  ASSERT_EQ(solverState.waitForState(SolveState::CFDSolver_NewDataReady, 10000),
            SolveState::CFDSolver_NewDataReady);
  const std::string out = readFile(dir.file("out.csv"));
  OmbrixTest::writeFile(dir.file("in.csv"), out.substr(0, out.rfind("<<,END")));
  clientState.writeState(SolveState::Client_NewDataReady, 1);

  EXPECT_EQ(solver->wait(), 2);
  EXPECT_EQ(readFile(dir.file("solver.stderr")), "exchange_solver: Missing FileFooter\n");
  EXPECT_EQ(solverState.readState(1), SolveState::Failed);
  EXPECT_FALSE(contains(readFile(dir.file("solver.stdout")), "step   1"));
}

TEST(ExchangeScenario, BadCommandLinesAreRefusedWithUsage)
{
  TempDir dir;
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "exchange_solver: option '--dir' is required\n"},
      {{"--dir", dir.path().string(), "--mode", "Automatic"},
       "exchange_solver: option '--mode' is Fixed or Sequential, not 'Automatic'\n"},
      {{"--dir", dir.path().string(), "--steps", "ten"},
       "exchange_solver: option '--steps' wants a whole number, not 'ten'\n"},
      {{"--bogus", "1"}, "exchange_solver: unknown option '--bogus'\n"},
      {{"--dir"}, "exchange_solver: option '--dir' needs a value\n"},
      {{"--dir", dir.path().string(), "--heartbeat", "2", "--grace", "3"},
       "exchange_solver: the heartbeat must be at least 1 s and the grace period at least 2 s longer\n"},
  };
  for (const auto& [arguments, message] : cases)
  {
    SCOPED_TRACE(message);
    auto solver = start(OMBRIX_EXCHANGE_SOLVER, dir, "solver", arguments);
    EXPECT_EQ(solver->wait(), 1);
    const std::string err = readFile(dir.file("solver.stderr"));
    EXPECT_EQ(err.substr(0, err.find("usage:")), message);
  }
}

} // namespace
