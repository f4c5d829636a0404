// The client side of the example exchange: rebuilds the solver's model from def.csv, then per exchange
// reads the probe temperature from out.csv and answers, in in.csv, with the heater flux that a PI
// controller chooses to drive the probe to its set point. Ends when the solver has finished.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/InFileReader.h"
#include "ombrix/model/EntityCollection.h"

#include "ExchangeExample.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{

using namespace Ombrix::Model;
using namespace ExchangeExample;
using KorvanSDK::Chronology;

// Proportional-integral control with a limited output; the integral stops growing while the output is
// saturated (no wind-up).
class Controller
{
public:
  Controller(double setPoint, double gain, double resetTime, double maximum)
      : m_setPoint(setPoint), m_gain(gain), m_resetTime(resetTime), m_maximum(maximum)
  {
  }

  double answer(double measured, double dt)
  {
    const double error = m_setPoint - measured;
    const double integral = m_integral + error * dt;
    const double output = m_gain * (error + integral / m_resetTime);
    const double limited = std::clamp(output, 0.0, m_maximum);
    if (limited == output)
      m_integral = integral;
    return limited;
  }

  double getSetPoint() const { return m_setPoint; }

private:
  double m_setPoint;
  double m_gain;
  double m_resetTime;
  double m_maximum;
  double m_integral = 0;
};

class Client
{
public:
  explicit Client(const Arguments& arguments)
      : m_options(exchangeOptions(arguments)), m_files(m_options.ombrixDirectory, m_options.fileMode),
        m_side(Ombrix::ExchangeRole::Client, m_files.getOmbrixPath(), arguments, m_options),
        m_controller(arguments.real("set-point"), arguments.real("gain"), arguments.real("reset-time"),
                     arguments.real("max-flux")),
        m_crashAt(arguments.number("crash-at")), m_settledWithin(arguments.real("end-when-settled")),
        m_verbose(arguments.number("verbose") != 0)
  {
    if (!(arguments.real("reset-time") > 0) || !(arguments.real("max-flux") > 0))
      throw std::invalid_argument("reset-time and max-flux must be positive");
  }

  int run()
  {
    return m_side.reportingFailure([this] { return runExchange(); });
  }

private:
  int runExchange()
  {
    removeOwnFiles(m_files, {"in.state", "in.alive"}, "in");
    m_side.setState(SolveState::WaitFor_Def_CSV_Write);
    m_side.startHeartbeat();
    m_side.waitForPartner();
    m_side.waitFor({SolveState::FinishedWriting_Def_CSV_File}, m_account);

    Stopwatch watch;
    m_side.setState(SolveState::Reading_Def_CSV_File);
    Ombrix::CSVDefinitionFileParser definition(m_model);
    m_side.prepare(definition);
    definition.parseFile(m_files.getDefFile());
    Entity* solid = m_model.getEntity("Solid", "Rod");
    if (!solid)
      throw ExchangeFailure(m_files.getDefFile() + " has no entity 'Solid' 'Rod' to control");
    m_account.files += watch.lap();
    m_side.setState(SolveState::FinishedReading_Def_CSV_File);

    m_account = TimeAccount{}; // the exchanges alone, not the start-up
    Stopwatch total;
    // One parser for the whole run: it keeps the storage of the last file read for the next one. The
    // solver's read-only results are taken as they are.
    Ombrix::CSVDataFileParser parser(m_model, {Chronology::Current});
    parser.setKorvanSDK(true);
    m_side.prepare(parser);
    long exchanges = 0;
    int settled = 0; // consecutive exchanges with the probe within m_settledWithin of the set point
    double probe = 0;
    double flux = 0;
    double time = 0;
    while (m_side.waitFor({SolveState::CFDSolver_NewDataReady, SolveState::Finished}, m_account) !=
           SolveState::Finished)
    {
      ++exchanges;
      if (exchanges == m_crashAt)
        crash("client", exchanges);
      watch.lap();
      Ombrix::InFileReader(m_options).read(parser, m_files.getOutFile());
      m_account.files += watch.lap();
      const Ombrix::CSVSimulationTime simulated = parser.getFileSimulationTime();
      probe = valueOf(*solid, "Probe.Temperature");
      const double dt = std::isnan(simulated.getTimeStep()) ? 1.0 : simulated.getTimeStep();
      time = std::isnan(simulated.getTime()) ? time + dt : simulated.getTime();
      flux = m_controller.answer(probe, dt);
      // Through the shortcut: the value lands on the left end's heat flux, inside the rod's list.
      solid->getAttribute(AttributePath("Heater Flux")).setDoubleValue(flux, Chronology::Current, false);
      settled = std::abs(probe - m_controller.getSetPoint()) <= m_settledWithin ? settled + 1 : 0;
      if (settled == 3)
      {
        // Settled for three exchanges: answer "END" instead of the iteration, and the solver stops.
        parser.setIterationWord(Ombrix::CSVDataFileParser::iterationEnd);
        std::printf("client: settled within %.3f K, asking the solver to end\n", m_settledWithin);
      }
      m_account.compute += watch.lap();
      if (!parser.saveAs(m_files.getInFile()))
        throw ExchangeFailure("cannot write " + m_files.getInFile());
      m_account.files += watch.lap();
      m_side.setState(SolveState::Client_NewDataReady);
      if (m_verbose)
        std::printf("client: iteration %d  probe %.3f K  flux %.1f W/m^2\n", simulated.getIteration(), probe,
                    flux);
      m_side.waitFor({SolveState::CFDSolver_Solving, SolveState::Finished}, m_account);
      m_side.setState(SolveState::Client_WaitForData);
      m_files.increaseSequentialFileCounter(1);
    }
    const double wall = total.lap();
    m_side.setState(SolveState::Finished);
    m_side.stopHeartbeat();

    const double perExchange = exchanges ? 1000.0 / static_cast<double>(exchanges) : 0.0;
    std::printf(
        "client: %ld exchanges up to t %.1f s; probe %.3f K against set point %.3f K (off by %.3f K), last "
        "flux %.1f W/m^2\n",
        exchanges, time, probe, m_controller.getSetPoint(), probe - m_controller.getSetPoint(), flux);
    std::printf("client: wall time per exchange %.1f ms: waiting for the solver %.1f ms, data files %.1f ms, "
                "control %.3f ms\n",
                wall * perExchange, m_account.waiting * perExchange, m_account.files * perExchange,
                m_account.compute * perExchange);
    return exitSuccess;
  }

  Ombrix::CSVEventHandlerOptions m_options;
  ExchangeFiles<Ombrix::InterfaceCSVCommon> m_files;
  Side m_side;
  Controller m_controller;
  long m_crashAt;
  double m_settledWithin; // K; 0: never ask the solver to end
  bool m_verbose;
  EntityCollection m_model;
  TimeAccount m_account;
};

} // namespace

int main(int argc, char** argv)
{
  auto known = commonOptions();
  known.insert({{"set-point", "330"},
                {"gain", "4000"},
                {"reset-time", "60"},
                {"max-flux", "60000"},
                {"end-when-settled", "0"}});
  return runProgram<Client>("exchange_client", argc, argv, known);
}
