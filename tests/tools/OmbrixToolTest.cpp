// The ombrix program run end to end: on the directory of a real example exchange (recorded and watched while
// it ran), on hand-broken copies of its files, and replaying the recording to a new solver.
#include "support/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <regex>
#include <sys/wait.h>

#if defined(OMBRIX_WITH_HDF5)
#include <hdf5.h>
#endif

namespace
{

namespace fs = std::filesystem;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;
using OmbrixTest::writeFile;

struct Result
{
  int exit;
  std::string out;
  std::string err;
};

// Runs a shell command line in `dir`, its output and errors kept in files there.
Result shell(const fs::path& dir, const std::string& command)
{
  const std::string out = (dir / "run.out").string(), err = (dir / "run.err").string();
  const int status = std::system(
      ("cd '" + dir.string() + "' || exit 2; (" + command + ") >'" + out + "' 2>'" + err + "'").c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
}

Result ombrix(const fs::path& dir, const std::string& arguments)
{
  return shell(dir, std::string(OMBRIX_TOOL) + " " + arguments);
}

// The field after "<path>," in the data row of `path` replaced by `value`.
std::string withValue(const std::string& content, const std::string& path, const std::string& value)
{
  return std::regex_replace(content, std::regex("(," + path + "),[^,]*,"), "$1," + value + ",");
}

// One example exchange of 8 steps with numbered files, recorded and watched by ombrix while it runs.
class OmbrixTool : public ::testing::Test
{
protected:
  static void SetUpTestSuite()
  {
    s_run = new TempDir;
    fs::create_directory(dir());
    const std::string mode = " --mode Sequential";
    const Result run =
        shell(s_run->path(), "(" OMBRIX_TOOL " record exchange --to run.csv --timeout 60 >record.out 2>&1; "
                             "echo $? >record.rc) & "
                             "(" OMBRIX_TOOL " watch exchange --until-finished --timeout 60 >watch.out; "
                             "echo $? >watch.rc) & " OMBRIX_EXCHANGE_CLIENT " --dir exchange" +
                                 mode + " >client.out & " OMBRIX_EXCHANGE_SOLVER " --dir exchange" + mode +
                                 " --steps 8; wait");
    ASSERT_EQ(run.exit, 0) << run.out << run.err;
  }
  static void TearDownTestSuite() { delete s_run; }

  static fs::path dir() { return s_run->path() / "exchange"; }
  static std::string file(const std::string& name) { return readFile((s_run->path() / name).string()); }
  // A copy of the example's directory to break by hand.
  fs::path copy() const
  {
    fs::copy(dir(), m_scratch.path() / "exchange");
    return m_scratch.path() / "exchange";
  }

  static TempDir* s_run;
  TempDir m_scratch;
};

TempDir* OmbrixTool::s_run = nullptr;

TEST_F(OmbrixTool, InspectsTheExampleRun)
{
  const Result inspect = ombrix(m_scratch.path(), "inspect " + dir().string() + " --grace 100000");
  EXPECT_EQ(inspect.exit, 0) << inspect.out;
  for (const char* line : {"def.csv    ", "4 entities, 21 attributes", "out7.csv", "iteration 8, time 80 s",
                           "solver  state 11 Finished; heartbeat", "out7.csv: iteration 8, time 80 s",
                           "client  state 11 Finished", "\nconsistent\n"})
    EXPECT_NE(inspect.out.find(line), std::string::npos) << line << "\n" << inspect.out;
}

TEST_F(OmbrixTool, InspectFindsHandBrokenFiles)
{
  const std::string def = readFile((dir() / "def.csv").string()),
                    out = readFile((dir() / "out7.csv").string());
  // {files written over a copy of the example's (nullopt removes one; none at all: an empty directory), the
  // line inspect reports}
  const std::pair<std::map<std::string, std::optional<std::string>>, const char*> cases[] = {
      {{{"out.state", "2016\tCFDSolver_SolveStarted"}},
       "problem: out.state: has no end marker \"<END>\": the solver's partner reads it as 0\n"},
      {{{"in.state", "12\tFailed\t<END>"}}, "problem: in.state: the client reports that it failed\n"},
      {{{"in.state", "77\tX\t<END>"}}, "problem: in.state: 77 is not a solve state of the exchange\n"},
      {{{"out.state", "2001\tCFDSolver_WaitForData\t<END>"}, {"out.alive", "100\t<END>"}},
       " d old, beyond the grace period of 100000 s: the solver stopped answering (last state 2001)\n"},
      {{{"in.alive", "1795443634"}}, "problem: in.alive: incomplete: no stamp followed by the end marker\n"},
      {{{"def.csv", def.substr(0, def.rfind("<<,END"))}}, "problem: def.csv: Missing FileFooter\n"},
      {{{"out7.csv", withValue(out, "Probe.Temperature", "warm")}},
       "out7.csv, row 12: Invalid value 'warm' in CurrentValue of 2-1:Probe.Temperature: invalid stod "
       "argument\n"},
      {{{"def.csv", std::nullopt}}, "problem: def.csv: missing, while data files are there\n"},
      {{}, "problem: holds none of the exchange files"},
  };
  for (const auto& [files, line] : cases)
  {
    SCOPED_TRACE(line);
    TempDir scratch;
    const fs::path exchange = scratch.path() / "exchange";
    if (files.empty())
      fs::create_directory(exchange);
    else
      fs::copy(dir(), exchange);
    for (const auto& [name, content] : files)
    {
      if (content)
        writeFile((exchange / name).string(), *content);
      else
        fs::remove(exchange / name);
    }
    const Result run = ombrix(scratch.path(), "inspect exchange --grace 100000");
    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.out.find(line), std::string::npos) << run.out;
  }
}

TEST_F(OmbrixTool, ValidateReportsEveryProblemWithItsRow)
{
  const fs::path d = copy();
  const std::string def = readFile((d / "def.csv").string()), out = readFile((d / "out7.csv").string());
  const struct
  {
    const char* name;
    std::string content;
    const char* options;
    int exit;
    std::string lines;
  } cases[] = {
      {"def.csv", def, "--round-trip", 0, "F: no problems\n"},
      {"out.csv", out, "--round-trip", 0, "F: no problems\n"},
      {"out.csv", "\xEF\xBB\xBF" + out, "--round-trip", 1,
       "F:1: The file begins with a UTF-8 byte-order mark, which hides its header row from the reader: save "
       "it as "
       "UTF-8 without byte-order mark\nF:1: Missing FileHeader\n"},
      {"def.csv", std::regex_replace(def, std::regex(","), ";"), "", 1,
       "F:1: Fields are separated by ';': the exchange files separate them with ',' (as a spreadsheet saves "
       "them with "
       "';' as its list separator)\nF:1: Missing FileHeader\n"},
      {"out.csv", out.substr(0, out.rfind("<<,END")), "--round-trip", 1, "F:16: Missing FileFooter\n"},
      {"out.csv", withValue(withValue(out, "Probe.Temperature", "nan"), "Mean Temperature", "-inf"),
       "--round-trip", 1,
       "F:12: CurrentValue of 2-1:Probe.Temperature ('nan') is NaN: it travels, but every computation it "
       "enters gives "
       "NaN\nF:14: CurrentValue of 2-1:Mean Temperature ('-inf') is infinite: it travels, but no solver "
       "quantity is\n"},
      {"out.csv",
       withValue(withValue(withValue(out, "Probe.Position", "1e-7"), "Probe.Temperature", "318.5"),
                 "Mean Temperature", "311.5"),
       "", 1,
       "F:13: CurrentValue of 2-1:Probe.Position ('1e-7') is written 0.000000 by the default six-decimal "
       "number "
       "format, which reads back as another number: the value changes when the model is written again (use "
       "the "
       "round-trip number format, or a unit that needs fewer decimals)\n"},
      {"out.csv",
       std::regex_replace(out, std::regex("1-1,Solution Control,Solution Control,Results.Time,.*\n"), ""),
       "--round-trip", 1,
       "F:3: Missing solution-control rows: Results.Time of 'Solution Control' 'Solution Control' are "
       "required\n"},
      {"out.csv",
       withValue(withValue(withValue(out, "Probe.Temperature", "50OO"), "Heat Flux", "\"5000,5\""),
                 "Iterations.Number of Iterations", "2.5"),
       "--round-trip", 1,
       "F:8: Invalid value '2.5' in CurrentValue of 1-1:Iterations.Number of Iterations: the text is not "
       "entirely a "
       "number of type Int\nF:12: Invalid value '50OO' in CurrentValue of 2-1:Probe.Temperature: the text is "
       "not "
       "entirely a number of type Double\nF:15: Invalid value '5000,5' in CurrentValue of 3-1:Heat Flux: the "
       "text "
       "is not entirely a number of type Double\n"},
      {"in.csv", readFile((d / "in7.csv").string()), "--skip-read-only --round-trip", 0, "F: no problems\n"},
      {"out.csv", withValue(out, "Probe.Temperature", "nan"), "--json --round-trip", 1,
       "{\"file\": \"F\", \"kind\": \"data\", \"problems\": [{\"row\": 12, \"message\": \"CurrentValue of "
       "2-1:Probe.Temperature ('nan') is NaN: it travels, but every computation it enters gives NaN\"}], "
       "\"count\": 1}\n"},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.lines);
    const std::string path = (d / c.name).string();
    writeFile(path, c.content);
    const Result run =
        ombrix(d, "validate " + path + " --def " + (dir() / "def.csv").string() + " " + c.options);
    EXPECT_EQ(run.exit, c.exit) << run.err;
    EXPECT_EQ(run.out, std::regex_replace(c.lines, std::regex("\\bF\\b"), path));
  }
  // Without the flag, every read-only row of the whole model that the client sent back is refused.
  const Result refused = ombrix(d, "validate in.csv --def " + (dir() / "def.csv").string());
  EXPECT_EQ(refused.exit, 1);
  EXPECT_EQ(refused.out.substr(0, refused.out.find('\n')),
            "in.csv:3: No Write Access to 1-1:Results.Iteration");
}

TEST_F(OmbrixTool, DiffGroupsDifferencesByAttribute)
{
  const fs::path d = copy();
  writeFile((d / "changed.csv").string(),
            withValue(readFile((d / "out7.csv").string()), "Probe.Temperature", "290.5"));
  const Result same = ombrix(d, "diff def.csv def.csv");
  EXPECT_EQ(same.exit, 0);
  EXPECT_EQ(same.out, "no differences\n");
  const Result changed = ombrix(d, "diff out7.csv changed.csv");
  EXPECT_EQ(changed.exit, 1);
  EXPECT_EQ(changed.out.substr(changed.out.find('\n')),
            "\n  Value differs290.5 expected " + changed.out.substr(changed.out.find("expected ") + 9));
  EXPECT_EQ(changed.out.substr(0, changed.out.find('\n')), "2-1:Probe.Temperature");
  const Result mixed = ombrix(d, "diff def.csv out7.csv");
  EXPECT_EQ(mixed.exit, 2);
  EXPECT_EQ(mixed.err,
            "ombrix diff: one of def.csv and out7.csv is a definition file and the other a data file: "
            "compare two of a kind\n");
}

TEST_F(OmbrixTool, RecordsAndWatchesTheRun)
{
  EXPECT_EQ(file("record.rc"), "0\n") << file("record.out");
  EXPECT_EQ(file("watch.rc"), "0\n");
  EXPECT_NE(file("watch.out").find("solver 11 Finished, iteration 8"), std::string::npos)
      << file("watch.out");
  const std::string recording = file("run.csv");
  EXPECT_EQ(recording.substr(0, 57), "iteration,time,out:1-1:Results.Iteration,out:1-1:Results.");
  std::vector<std::string> starts;
  for (std::size_t at = recording.find('\n'); at + 1 < recording.size(); at = recording.find('\n', at + 1))
    starts.push_back(recording.substr(at + 1, recording.find(',', recording.find(',', at + 1) + 1) - at - 1));
  EXPECT_EQ(starts,
            (std::vector<std::string>{"1,10", "2,20", "3,30", "4,40", "5,50", "6,60", "7,70", "8,80"}));
  // After the run, the numbered files give the same table.
  const Result again = ombrix(m_scratch.path(), "record " + dir().string() + " --to again.csv");
  EXPECT_EQ(again.exit, 0) << again.out;
  EXPECT_EQ(readFile((m_scratch.path() / "again.csv").string()), recording);
}

#if defined(OMBRIX_WITH_HDF5)
TEST_F(OmbrixTool, RecordsInHdf5)
{
  const std::string path = (m_scratch.path() / "run.h5").string();
  ASSERT_EQ(ombrix(m_scratch.path(), "record " + dir().string() + " --to " + path).exit, 0);
  const hid_t h5 = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
  ASSERT_GE(h5, 0);
  int iterations[8] = {};
  const hid_t set = H5Dopen2(h5, "/iteration", H5P_DEFAULT);
  EXPECT_GE(H5Dread(set, H5T_NATIVE_INT, H5S_ALL, H5S_ALL, H5P_DEFAULT, iterations), 0);
  EXPECT_EQ(std::vector<int>(iterations, iterations + 8), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
  const hid_t values = H5Dopen2(h5, "/values", H5P_DEFAULT);
  const hid_t space = H5Dget_space(values);
  hsize_t shape[2] = {};
  H5Sget_simple_extent_dims(space, shape, nullptr);
  EXPECT_EQ(shape[0], 8u);
  EXPECT_EQ(shape[1], 29u); // the values of out and in and in:end
  H5Sclose(space);
  H5Dclose(values);
  H5Dclose(set);
  H5Fclose(h5);
}
#endif

TEST_F(OmbrixTool, ReplaysTheRecordingToANewSolver)
{
  const std::string solver =
      std::string(OMBRIX_EXCHANGE_SOLVER) + " --dir exchange --mode Sequential --steps 8";
  const std::string replay = std::string(OMBRIX_TOOL) + " replay " + (s_run->path() / "run.csv").string() +
                             " exchange --mode Sequential --grace 5 --show 1 >replay.out; echo $? >replay.rc";
  fs::create_directory(m_scratch.path() / "exchange");
  ASSERT_EQ(shell(m_scratch.path(), "(" + replay + ") & " + solver + "; wait").exit, 0);
  EXPECT_EQ(readFile((m_scratch.path() / "replay.rc").string()), "0\n");
  EXPECT_EQ(readFile((m_scratch.path() / "replay.out").string()),
            "replayed 8 exchanges from " + (s_run->path() / "run.csv").string() +
                "; 0 solver values differ from the recording\n");
  // A solver that changed its time step no longer reproduces the recording.
  shell(m_scratch.path(), "(" + replay + ") & " + solver + " --time-step 5; wait");
  EXPECT_EQ(readFile((m_scratch.path() / "replay.rc").string()), "1\n");
  const std::string out = readFile((m_scratch.path() / "replay.out").string());
  EXPECT_EQ(out.substr(0, out.find('\n')), "iteration 1: out:1-1:Results.Time is 5, recorded 10") << out;
}

TEST_F(OmbrixTool, BadUsageGivesAMessageAndExitTwo)
{
  const struct
  {
    const char* arguments;
    const char* error;
  } cases[] = {
      {"", "A subcommand is required\nRun with --help for more information.\n"},
      {". --grace 100000", "A subcommand is required\nRun with --help for more information.\n"},
      {"inspect /nonexistent",
       "ombrix inspect: /nonexistent is not a directory: No such file or directory\n"},
      {"validate /nonexistent",
       "FILE: File does not exist: /nonexistent\nRun with --help for more information.\n"},
      {"record . --to x.csv --format xml",
       "--format: xml not in {csv,hdf5}\nRun with --help for more information.\n"},
      {"record . --to /nonexistent/x.csv",
       "ombrix record: cannot write /nonexistent/x.csv: /nonexistent: No such file or directory\n"},
      {"replay run.err .", "ombrix replay: run.err is not a recording: its first row does not begin with the "
                           "columns iteration,time\n"},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.arguments);
    const Result run = ombrix(m_scratch.path(), c.arguments);
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, c.error);
  }
  for (const char* command : {"inspect", "validate", "diff", "watch", "record", "replay"})
  {
    const Result help = ombrix(m_scratch.path(), std::string(command) + " --help");
    EXPECT_EQ(help.exit, 0);
    EXPECT_NE(help.out.find("Example:\n  ombrix " + std::string(command)), std::string::npos) << help.out;
  }
}

} // namespace
