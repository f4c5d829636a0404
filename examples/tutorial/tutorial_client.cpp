// The tutorial's client (docs/tutorial.md): rebuilds the solver's model from def.csv and answers every
// out.csv with the heater power that brings the tank to 300 K. Usage: tutorial_client <exchange directory>
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/ExchangeFiles.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityCollection.h"

#include <cstdio>
#include <stdexcept>
#include <string>

using namespace Ombrix;
using namespace Ombrix::Model;
using KorvanSDK::Chronology;
using KorvanSDK::SolveState;

void expect(const WaitResult& result)
{
  if (!result.reached())
    throw std::runtime_error(result.message);
}

int main(int argc, char** argv)
try
{
  if (argc != 2)
    throw std::invalid_argument("usage: tutorial_client <exchange directory>");
  const std::string directory = argv[1];
  const int timeout = 10000; // ms, for every wait on the solver

  LogManager::instance().initialize(directory + "/client.log", LogLevel::Warning);
  ExchangeFiles files(directory);
  ExchangeSide side(ExchangeRole::Client, directory, {.notifiedWaits = true});
  side.setHeartbeat(1, 5);
  side.startHeartbeat();

  side.setState(SolveState::WaitFor_Def_CSV_Write);
  expect(side.waitForPartnerStart(timeout));
  expect(side.waitForPartnerState({SolveState::FinishedWriting_Def_CSV_File}, timeout));
  side.setState(SolveState::Reading_Def_CSV_File);
  EntityCollection model;
  CSVDefinitionFileParser definition(model);
  definition.setStrictNumbers(true);
  if (!definition.parseFile(files.getDefFile()))
    throw std::runtime_error("no " + files.getDefFile());
  side.setState(SolveState::FinishedReading_Def_CSV_File);

  CSVDataFileParser data(model, {Chronology::Current});
  data.setKorvanSDK(true); // out.csv comes from the solver: its read-only results are taken as they are
  data.setStrictNumbers(true);
  data.setNumberFormat(NumberFormat::RoundTrip);
  Entity* tank = model.getEntity("Tank", "Tank 1");
  if (!tank)
    throw std::runtime_error(files.getDefFile() + " has no entity 'Tank' 'Tank 1'");
  Attribute& temperature = tank->getAttribute(AttributePath("Results.Temperature"));
  Attribute& power = tank->getAttribute(AttributePath("Heater.Power"));

  int exchanges = 0;
  while (true)
  {
    const WaitResult next =
        side.waitForPartnerState({SolveState::CFDSolver_NewDataReady, SolveState::Finished}, timeout);
    expect(next);
    if (next.state == SolveState::Finished)
      break;
    data.parseFile(files.getOutFile());
    const double answer = 100.0 * (300.0 - temperature.getDoubleValue(Chronology::Current, false));
    power.setDoubleValue(answer > 0 ? answer : 0.0, Chronology::Current, false);
    if (!data.saveAs(files.getInFile()))
      throw std::runtime_error("cannot write " + files.getInFile());
    side.setState(SolveState::Client_NewDataReady);
    expect(side.waitForPartnerState({SolveState::CFDSolver_Solving, SolveState::Finished}, timeout));
    side.setState(SolveState::Client_WaitForData);
    ++exchanges;
  }
  side.setState(SolveState::Finished);
  std::printf("client: %d exchanges, tank %.3f K\n", exchanges,
              temperature.getDoubleValue(Chronology::Current, false));
  return 0;
}
catch (const std::exception& failure)
{
  std::fprintf(stderr, "tutorial_client: %s\n", failure.what());
  return 1;
}
