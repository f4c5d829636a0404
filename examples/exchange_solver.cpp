// The solver side of the example exchange: a transient 1D heat equation in a rod, heated at its left end
// by a flux that an external client controls, held at the ambient temperature at its right end. Writes
// def.csv, then per synchronised time step out.csv with the probe temperature, and applies the client's
// in.csv. Run it with exchange_client in the same directory (examples/run_exchange.sh does both).
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/InFileReader.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/SolutionControl.h"
#include "ombrix/model/ValueAttribute.h"

#include "ExchangeExample.h"
#include "HeatedRod.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

using namespace Ombrix::Model;
using namespace ExchangeExample;
using HeatedRod::buildModel;
using HeatedRod::Rod;
using KorvanSDK::Chronology;

class Solver
{
public:
  Solver(const Arguments& arguments)
      : m_options(exchangeOptions(arguments)), m_files(m_options.ombrixDirectory, m_options.fileMode),
        m_side(Ombrix::ExchangeRole::Solver, m_files.getOmbrixPath(), arguments, m_options),
        m_rod(static_cast<std::size_t>(arguments.number("cells"))), m_steps(arguments.number("steps")),
        m_timeStep(arguments.real("time-step")), m_syncStart(arguments.number("sync-start")),
        m_syncInterval(arguments.number("sync-interval")), m_crashAt(arguments.number("crash-at")),
        m_verbose(arguments.number("verbose") != 0)
  {
    if (m_rod.temperature.size() < 2 || m_steps < 1 || !(m_timeStep > 0) || m_syncInterval < 1)
      throw std::invalid_argument("cells >= 2, steps >= 1, time-step > 0 and sync-interval >= 1 are needed");
    buildModel(m_model, m_rod, arguments.number("field-entities"));
    // in.csv carries the whole model back; only what the client may write is taken from it.
    m_parser.setSkipReadOnly(true);
    m_side.prepare(m_parser);
    Entity* solid = m_model.getEntity(EntityID(2, 1));
    m_probe = &solid->getAttribute(AttributePath("Probe.Temperature"));
    m_mean = &solid->getAttribute(AttributePath("Mean Temperature"));
    m_heater = &solid->getAttribute(AttributePath("Heater Flux"));
    m_ambient = &m_model.getEntity(EntityID(4, 1))->getAttribute(AttributePath("Temperature"));
  }

  int run()
  {
    return m_side.reportingFailure([this] { return runExchange(); });
  }

private:
  int runExchange()
  {
    removeOwnFiles(m_files, {"def.csv", "out.state", "out.alive"}, "out");
    m_side.setState(SolveState::Initializing);
    m_side.startHeartbeat();

    m_side.setState(SolveState::Writing_Def_CSV_File);
    Ombrix::CSVDefinitionFileParser definition(m_model);
    definition.setChronologies({Chronology::Initial, Chronology::Current});
    m_side.prepare(definition);
    publish(0, 0.0, false);
    if (!definition.saveAs(m_files.getDefFile()))
      throw ExchangeFailure("cannot write " + m_files.getDefFile());
    m_side.setState(SolveState::FinishedWriting_Def_CSV_File);
    std::printf("solver: %zu entities in %s, waiting for the client\n", m_model.size(),
                m_files.getDefFile().c_str());
    std::fflush(stdout);
    m_side.waitForPartner();
    m_side.waitFor({SolveState::FinishedReading_Def_CSV_File}, m_account);

    m_account = TimeAccount{}; // the exchanges alone, not the start-up
    Stopwatch total;
    long exchanges = 0;
    long steps = 0;
    bool endRequested = false;
    for (long step = 1; step <= m_steps && !endRequested; ++step)
    {
      steps = step;
      Stopwatch watch;
      const double change = m_rod.step(m_heater->getDoubleValue(Chronology::Current, false), m_timeStep);
      m_rod.ambient = m_ambient->getDoubleValue(Chronology::Current, false);
      publish(step, static_cast<double>(step) * m_timeStep, change < 1e-3);
      m_account.compute += watch.lap();
      const bool sync = step >= m_syncStart && (step - m_syncStart) % m_syncInterval == 0;
      if (sync)
      {
        ++exchanges;
        if (exchanges == m_crashAt)
          crash("solver", exchanges);
        endRequested = exchange(step);
      }
      if (m_verbose || sync)
        std::printf("step %3ld  t %7.1f s  probe %8.3f K  heater flux %9.1f W/m^2%s\n", step,
                    static_cast<double>(step) * m_timeStep,
                    m_probe->getDoubleValue(Chronology::Current, false),
                    m_heater->getDoubleValue(Chronology::Current, false), sync ? "" : "  (no exchange)");
      if (endRequested)
        std::printf("solver: the client asks to end after step %ld\n", step);
      std::fflush(stdout);
    }
    const double wall = total.lap();
    m_side.setState(SolveState::Finished);
    m_side.stopHeartbeat();

    const double perExchange = exchanges ? 1000.0 / static_cast<double>(exchanges) : 0.0;
    std::printf(
        "solver: finished %ld steps (%ld exchanges), simulated %.1f s; probe %.3f K, heater flux %.1f "
        "W/m^2\n",
        steps, exchanges, static_cast<double>(steps) * m_timeStep,
        m_probe->getDoubleValue(Chronology::Current, false),
        m_heater->getDoubleValue(Chronology::Current, false));
    std::printf("solver: wall time per exchange %.1f ms: waiting for the client %.1f ms, data files %.1f ms, "
                "solving %.1f ms\n",
                wall * perExchange, m_account.waiting * perExchange, m_account.files * perExchange,
                m_account.compute * perExchange);
    return exitSuccess;
  }

  // Writes the solve's state into the model: solution control and the rod's outputs.
  void publish(long step, double time, bool converged)
  {
    Entity& control = *m_model.getEntity(EntityID(1, 1));
    const SolutionControlDefinition& d = m_model.getSolutionControlDefinition();
    const auto set = [&](const AttributePath& path, auto value)
    {
      Attribute& attribute = control.getAttribute(path);
      if constexpr (std::is_same_v<decltype(value), bool>)
        attribute.setBoolValue(value, Chronology::Current, false);
      else if constexpr (std::is_same_v<decltype(value), int>)
        attribute.setIntValue(value, Chronology::Current, false);
      else
        attribute.setDoubleValue(value, Chronology::Current, false);
    };
    set(d.getIterationPath(), static_cast<int>(step));
    set(d.getNumberOfIterationsPath(), static_cast<int>(m_steps));
    set(d.getIsFirstIterationPath(), step == 1);
    set(d.getIsLastIterationPath(), step == m_steps);
    set(d.getIsTransientPath(), true);
    set(d.getTimePath(), time);
    set(d.getTimeStepPath(), m_timeStep);
    set(d.getTotalSimulationTimePath(), static_cast<double>(m_steps) * m_timeStep);
    set(d.getIsConvergedPath(), converged);
    m_probe->setDoubleValue(m_rod.at(m_rod.probePosition), Chronology::Current, false);
    m_mean->setDoubleValue(m_rod.mean(), Chronology::Current, false);
    if (m_model.size() > 4)
      publishField();
  }

  // The field entities sample the rod along its length.
  void publishField()
  {
    const std::size_t count = m_model.size() - 4;
    for (std::size_t e = 0; e < count; ++e)
    {
      Entity* cell = m_model.getEntity(EntityID(static_cast<int>(e), 100));
      for (int a = 0; a < 10; ++a)
      {
        const double x = m_rod.length * static_cast<double>(e * 10 + static_cast<std::size_t>(a)) /
                         static_cast<double>(count * 10);
        cell->getAttribute(AttributePath("T" + std::to_string(a)))
            .setDoubleValue(m_rod.at(x), Chronology::Current, false);
      }
    }
  }

  // One synchronised exchange: out.csv and our state, the client's answer, in.csv, then the
  // acknowledgement that keeps both state files strictly alternating (no state is ever read twice).
  // Returns whether the client asked to end the solve ("END" in its iteration field).
  bool exchange(long step)
  {
    Stopwatch watch;
    // One parser for the whole run: it keeps the storage of the last file read for the next one.
    Ombrix::CSVDataFileParser& parser = m_parser;
    const std::string outFile = m_files.getOutFile();
    if (!parser.saveAs(outFile))
      throw ExchangeFailure("cannot write " + outFile);
    m_account.files += watch.lap();
    m_side.setState(SolveState::CFDSolver_NewDataReady);
    m_side.waitFor({SolveState::Client_NewDataReady}, m_account);

    watch.lap();
    const std::string inFile = m_files.getInFile();
    Ombrix::InFileReader(m_options).read(parser, inFile);
    m_account.files += watch.lap();
    if (!parser.hasFileSimulationTime() || parser.getFileSimulationTime().getIteration() != step)
      throw ExchangeFailure(inFile + " does not answer step " + std::to_string(step));
    m_side.setState(SolveState::CFDSolver_Solving);
    m_side.waitFor({SolveState::Client_WaitForData}, m_account);
    m_files.increaseSequentialFileCounter(1);
    return m_parser.isEndRequested();
  }

  Ombrix::CSVEventHandlerOptions m_options;
  ExchangeFiles<Ombrix::InterfaceCSVCommonSolver> m_files;
  Side m_side;
  Rod m_rod;
  long m_steps;
  double m_timeStep;
  long m_syncStart;
  long m_syncInterval;
  long m_crashAt;
  bool m_verbose;
  EntityCollection m_model;
  Ombrix::CSVDataFileParser m_parser{m_model, {Chronology::Current}};
  Attribute* m_probe = nullptr;
  Attribute* m_mean = nullptr;
  Attribute* m_heater = nullptr;
  Attribute* m_ambient = nullptr;
  TimeAccount m_account;
};

} // namespace

int main(int argc, char** argv)
{
  auto known = commonOptions();
  known.insert({{"steps", "40"},
                {"time-step", "10"},
                {"cells", "40"},
                {"sync-start", "1"},
                {"sync-interval", "1"},
                {"field-entities", "0"}});
  return runProgram<Solver>("exchange_solver", argc, argv, known);
}
