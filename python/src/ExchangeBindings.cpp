// The exchange protocol's files for Python: state files (write, read, wait), alive files (the heartbeat
// writer, whose thread never touches Python, and the checker), the exchange directory's file names and
// the options record. Every wait and every file access runs with the GIL released; waits stay
// interruptible (Ctrl-C) because their stop function looks at Python's signals every poll.
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/ExchangeFiles.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"
#include "ombrix/exchange/InterfaceCSVCommonSolver.h"
#include "ombrix/exchange/StateFileReaderWriter.h"

#include "Bindings.h"

#include <functional>
#include <optional>
#include <pybind11/functional.h>
#include <pybind11/stl.h>
#include <set>

namespace OmbrixPython
{

using namespace pybind11::literals;
using KorvanSDK::SolveState;

namespace
{

// The stop function of a library wait, called between polls with the GIL released: true when the
// partner's heartbeat is stale, when Python has a pending signal, or when the caller's `stop` says so.
// A Python error (KeyboardInterrupt, or one raised by `stop`) is kept and raised once the wait is over.
class WaitStop
{
public:
  WaitStop(py::object stop, const Ombrix::AliveFileReaderWriter* partner)
      : m_stop(std::move(stop)), m_partner(partner)
  {
  }

  std::function<bool()> function()
  {
    return [this]
    {
      if (m_partner && !m_partner->checkAlive())
        return true;
      py::gil_scoped_acquire gil;
      if (PyErr_CheckSignals() != 0)
        return m_failed = true;
      if (m_stop.is_none())
        return false;
      const py::object answer = py::reinterpret_steal<py::object>(PyObject_CallNoArgs(m_stop.ptr()));
      const int stop = answer ? PyObject_IsTrue(answer.ptr()) : -1;
      if (stop < 0)
        return m_failed = true;
      return stop == 1;
    };
  }

  // With the GIL held, after the wait.
  void raisePending() const
  {
    if (m_failed)
      throw py::error_already_set();
  }

private:
  py::object m_stop;
  const Ombrix::AliveFileReaderWriter* m_partner;
  bool m_failed = false;
};

struct StateFile
{
  explicit StateFile(const std::string& path_) : file(path_), path(path_) {}
  Ombrix::StateFileReaderWriter file;
  std::string path;
};

struct AliveFile
{
  AliveFile(const std::string& path_, int interval, int gracePeriod) : file(path_), path(path_)
  {
    file.setInterval(interval);
    file.setGracePeriod(gracePeriod);
  }
  Ombrix::AliveFileReaderWriter file;
  std::string path;
};

SolveState waitForState(StateFile& state, const std::set<SolveState>& states, int timeout, py::object stop,
                        const AliveFile* partner)
{
  WaitStop stopper(std::move(stop), partner ? &partner->file : nullptr);
  SolveState result;
  {
    py::gil_scoped_release released;
    result = state.file.waitForState(states, stopper.function(), timeout);
  }
  stopper.raisePending();
  return result;
}

bool waitForAlive(const AliveFile& alive, int timeout, py::object stop)
{
  WaitStop stopper(std::move(stop), nullptr);
  bool result = false;
  {
    py::gil_scoped_release released;
    result = alive.file.waitForAlive(stopper.function(), timeout);
  }
  stopper.raisePending();
  return result;
}

using Ombrix::ExchangeFiles;

ExchangeFiles makeExchangeFiles(const std::string& directory, Ombrix::CSVFileMode mode, bool solver)
{
  if (solver)
    return ExchangeFiles(Ombrix::InterfaceCSVCommonSolver(directory, mode));
  return ExchangeFiles(Ombrix::InterfaceCSVCommon(directory, mode));
}

} // namespace

void bindExchange(py::module_& module)
{
  auto states = py::enum_<SolveState>(module, "SolveState",
                                      "The states written to the state files (C++ KorvanSDK::SolveState).");
  for (SolveState state : {SolveState::TimeOut,
                           SolveState::InActive,
                           SolveState::NoFile,
                           SolveState::Unknown,
                           SolveState::Initializing,
                           SolveState::WaitForClientInitialization,
                           SolveState::Initialized,
                           SolveState::WaitForInitialized,
                           SolveState::Solving,
                           SolveState::Finished,
                           SolveState::Failed,
                           SolveState::WaitFor_Def_CSV_Write,
                           SolveState::Reading_Def_CSV_File,
                           SolveState::FinishedReading_Def_CSV_File,
                           SolveState::Writing_Def_CSV_File,
                           SolveState::FinishedWriting_Def_CSV_File,
                           SolveState::WaitingForFNGeneration,
                           SolveState::FinishedFNGeneration,
                           SolveState::Client_WaitForData,
                           SolveState::Client_Solving,
                           SolveState::Client_NewDataReady,
                           SolveState::Client_ReadyToSolve,
                           SolveState::Client_SolveStarting,
                           SolveState::Client_WaitForStarted,
                           SolveState::Client_SolveStarted,
                           SolveState::CFDSolver_WaitForData,
                           SolveState::CFDSolver_Solving,
                           SolveState::CFDSolver_SolveStarting,
                           SolveState::CFDSolver_WaitForStarted,
                           SolveState::CFDSolver_SolveStarted,
                           SolveState::CFDSolver_NewDataReady})
  {
    // Unknown has no text in the library; its name here is the enumerator's.
    const std::string name = state == SolveState::Unknown ? "Unknown" : KorvanSDK::toString(state);
    states.value(name.c_str(), state);
  }
  py::enum_<Ombrix::CSVFileMode>(
      module, "FileMode",
      "How the data files are named: Fixed (in.csv, out.csv) or Sequential (in0.csv, "
      "...) (C++ Ombrix::CSVFileMode).")
      .value("Automatic", Ombrix::CSVFileMode::Automatic)
      .value("Fixed", Ombrix::CSVFileMode::Fixed)
      .value("Sequential", Ombrix::CSVFileMode::Sequential);
  py::enum_<Ombrix::SyncMode>(module, "SyncMode")
      .value("Iteration", Ombrix::SyncMode::Iteration)
      .value("TimeStep", Ombrix::SyncMode::TimeStep)
      .value("Disabled", Ombrix::SyncMode::Disabled);
  py::enum_<Ombrix::StateFileMode>(module, "StateFileMode")
      .value("Off", Ombrix::StateFileMode::Off)
      .value("WriteOnly", Ombrix::StateFileMode::WriteOnly)
      .value("WriteAndWait", Ombrix::StateFileMode::WriteAndWait);
  py::enum_<Ombrix::ReadFailureHandling>(module, "ReadFailureHandling",
                                         "What a read does with a missing or faulty incoming file.")
      .value("LogAndContinue", Ombrix::ReadFailureHandling::LogAndContinue)
      .value("Fail", Ombrix::ReadFailureHandling::Fail)
      .value("Retry", Ombrix::ReadFailureHandling::Retry);

  py::class_<StateFile>(
      module, "StateFile",
      "One state file of the exchange (C++ Ombrix::StateFileReaderWriter). Content: number, "
      "tab, text, \"\\t<END>\".")
      .def(py::init<const std::string&>(), "path"_a)
      .def_readonly("path", &StateFile::path)
      .def(
          "write",
          [](StateFile& f, SolveState state)
          {
            py::gil_scoped_release released;
            return f.file.writeState(state, 1);
          },
          "state"_a, "Replaces the file's content with `state`; False only for an empty path.")
      .def(
          "read",
          [](StateFile& f, int tries)
          {
            py::gil_scoped_release released;
            return f.file.readState(tries);
          },
          "tries"_a = 5,
          "The state in the file: NoFile when missing or unreadable after `tries` tries 100 ms apart, "
          "Unknown while it is being written.")
      .def_property_readonly(
          "state", [](StateFile& f) { return f.file.getState(); }, "The last state read or written.")
      .def("exists", [](const StateFile& f) { return f.file.exists(); })
      .def("wait_for", &waitForState, "states"_a, "timeout_ms"_a = -1, "stop"_a = py::none(),
           "partner"_a = nullptr,
           "Reads the file every 100 ms until it shows one of `states`, `timeout_ms` passed (negative: no "
           "limit), `partner` (an AliveFile) is no longer alive, or `stop()` returns True. Returns the last "
           "state read, which the caller tests. Ctrl-C ends the wait with KeyboardInterrupt.");

  py::class_<AliveFile>(
      module, "AliveFile",
      "The heartbeat of one side (C++ Ombrix::AliveFileReaderWriter): as a writer, a thread "
      "of its own, outside Python, rewrites the file every `interval` seconds; as a checker it "
      "judges the other side alive while the stamp is younger than `grace_period` seconds.")
      .def(py::init<const std::string&, int, int>(), "path"_a, "interval"_a = 10, "grace_period"_a = 30)
      .def_readonly("path", &AliveFile::path)
      .def(
          "start", [](AliveFile& f) { f.file.start(); }, "Starts the writer thread unless it runs.")
      .def(
          "stop",
          [](AliveFile& f)
          {
            py::gil_scoped_release released;
            f.file.stop();
          },
          "Stops the writer thread; returns within about a second.")
      .def_property_readonly("running", [](const AliveFile& f) { return f.file.isRunning(); })
      .def(
          "check_alive",
          [](const AliveFile& f)
          {
            py::gil_scoped_release released;
            return f.file.checkAlive();
          },
          "Reads the stamp as needed and returns the verdict.")
      .def_property_readonly(
          "is_alive", [](const AliveFile& f) { return f.file.isAlive(); },
          "The last verdict, without reading.")
      .def("wait_for_alive", &waitForAlive, "timeout_ms"_a = -1, "stop"_a = py::none(),
           "Checks every 100 ms until alive (True), `stop()` returns True or `timeout_ms` passed (False, "
           "after one last check).")
      .def_property(
          "interval", [](const AliveFile& f) { return f.file.getInterval(); },
          [](AliveFile& f, int seconds)
          {
            if (f.file.isRunning())
              throw py::value_error(
                  "the heartbeat interval cannot change while the writer runs; stop it first");
            f.file.setInterval(seconds);
          })
      .def_property(
          "grace_period", [](const AliveFile& f) { return f.file.getGracePeriod(); },
          [](AliveFile& f, int seconds) { f.file.setGracePeriod(seconds); });

  py::class_<ExchangeFiles>(module, "ExchangeFiles",
                            "The exchange directory and its file names (C++ Ombrix::InterfaceCSVCommon; with "
                            "solver=True Ombrix::InterfaceCSVCommonSolver, whose directory comes from "
                            "ZQ_KORVANOMBRIXDIRECTORY when it is set).")
      .def(py::init(&makeExchangeFiles), "directory"_a, "mode"_a = Ombrix::CSVFileMode::Fixed,
           "solver"_a = false)
      .def_property_readonly("directory", &ExchangeFiles::getOmbrixPath)
      .def_property("mode", &ExchangeFiles::getFileMode, &ExchangeFiles::setFileMode)
      .def_property_readonly("auto_mode", &ExchangeFiles::isAutoFileMode)
      .def_property_readonly("def_file", &ExchangeFiles::getDefFile)
      .def_property_readonly("init_file", &ExchangeFiles::getInitFile)
      .def_property_readonly("in_file", &ExchangeFiles::getInFile, "in.csv, or in<n>.csv in Sequential mode.")
      .def_property_readonly("out_file", &ExchangeFiles::getOutFile,
                             "out.csv, or out<n>.csv in Sequential mode.")
      .def_property_readonly("in_state_file", &ExchangeFiles::getInStateFile)
      .def_property_readonly("out_state_file", &ExchangeFiles::getOutStateFile)
      .def_property_readonly("in_alive_file", &ExchangeFiles::getInAliveFile)
      .def_property_readonly("out_alive_file", &ExchangeFiles::getOutAliveFile)
      .def("advance", &ExchangeFiles::increaseSequentialFileCounter, "step"_a = 1,
           "Moves the numbered data file names on (Sequential mode only); once per exchanged data set.")
      .def("reset", &ExchangeFiles::resetSequentialFileCounter)
      .def_static("in_name", &ExchangeFiles::inFile, "n"_a = py::none(), "\"in.csv\", or \"in<n>.csv\".")
      .def_static("out_name", &ExchangeFiles::outFile, "n"_a = py::none(), "\"out.csv\", or \"out<n>.csv\".");

  py::class_<Ombrix::CSVEventHandlerOptions>(module, "Options",
                                             "The settings of the CSV exchange (C++ "
                                             "Ombrix::CSVEventHandlerOptions).")
      .def(py::init<>())
      .def_readwrite("directory", &Ombrix::CSVEventHandlerOptions::ombrixDirectory)
      .def_readwrite("in_file_try_attempts", &Ombrix::CSVEventHandlerOptions::inFileTryAttempts)
      .def_readwrite("file_mode", &Ombrix::CSVEventHandlerOptions::fileMode)
      .def_readwrite("sync_mode", &Ombrix::CSVEventHandlerOptions::syncMode)
      .def_readwrite("sync_start_iteration", &Ombrix::CSVEventHandlerOptions::syncStartIteration)
      .def_readwrite("sync_iteration_interval", &Ombrix::CSVEventHandlerOptions::syncIterationInterval)
      .def_readwrite("use_full_entity_names", &Ombrix::CSVEventHandlerOptions::useFullEntityNames)
      .def_readwrite("state_file_mode", &Ombrix::CSVEventHandlerOptions::stateFileMode)
      .def_readwrite("read_failure_handling", &Ombrix::CSVEventHandlerOptions::readFailureHandling)
      .def_readwrite("solver_heartbeat_interval", &Ombrix::CSVEventHandlerOptions::solverHeartBeatInterval,
                     "Seconds between two heartbeats of a side.")
      .def_readwrite("client_heartbeat_grace_period",
                     &Ombrix::CSVEventHandlerOptions::clientHeartBeatGracePeriod,
                     "Seconds for which a partner's heartbeat counts.")
      .def(
          "__eq__",
          [](const Ombrix::CSVEventHandlerOptions& a, const Ombrix::CSVEventHandlerOptions& b)
          { return a == b; },
          py::is_operator())
      .def("__repr__",
           [](const Ombrix::CSVEventHandlerOptions& o)
           {
             return "Options(directory=" + py::repr(py::str(o.ombrixDirectory)).cast<std::string>() +
                    ", file_mode=" + Ombrix::csvFileModeToString(o.fileMode) +
                    ", read_failure_handling=" + Ombrix::readFailureHandlingToString(o.readFailureHandling) +
                    ", in_file_try_attempts=" + std::to_string(o.inFileTryAttempts) +
                    ", solver_heartbeat_interval=" + std::to_string(o.solverHeartBeatInterval) +
                    ", client_heartbeat_grace_period=" + std::to_string(o.clientHeartBeatGracePeriod) + ")";
           });
}

} // namespace OmbrixPython
