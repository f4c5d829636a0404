// The tutorial's solver (docs/tutorial.md): a tank heated by a power that the client chooses, exchanged
// once per iteration through an exchange directory. Usage: tutorial_solver <exchange directory>
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/ExchangeFiles.h"
#include "ombrix/exchange/ExchangeSide.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ModelBuilding.h"

#include <cstdio>
#include <stdexcept>
#include <string>

using namespace Ombrix;
using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using KorvanSDK::SolveState;

// Throws the wait's own sentence ("the client stopped answering: ...") when it did not reach its goal.
void expect(const WaitResult& result)
{
  if (!result.reached())
    throw std::runtime_error(result.message);
}

void buildModel(EntityCollection& model)
{
  // The solution-control entity: iteration, time and flags at the paths of the model's definition.
  model.addRootEntity(makeSolutionControlEntity(model.getSolutionControlDefinition(), EntityID(1, 1)));

  // Every entity gets a fixed ID: the files name entities by ID, type and name, so IDs must be the same
  // in every run (an entity made without one gets a new ID each time).
  auto tank = std::make_unique<Entity>("Tank", "Tank 1", EntityID(2, 1), AccessType::ReadWrite);
  addAttributeAt(*tank, AttributePath("Results.Temperature"), AttributeType::Double, AccessType::ReadOnly,
                 "K");
  addAttributeAt(*tank, AttributePath("Heater.Power"), AttributeType::Double, AccessType::ReadWrite, "W");
  auto* sensors = static_cast<ListAttribute*>(
      tank->createAttribute(AttributeType::List, "Sensors", AccessType::ReadOnly));
  sensors->setOwnsEntities(true); // def.csv carries owning lists and links only
  model.addRootEntity(std::move(tank));

  // An entity added below a list after its root joined the model is not listed by the model until the list
  // is rebuilt; def.csv refuses to write it before.
  auto inlet = std::make_unique<Entity>("Sensor", "Inlet", EntityID(3, 1), AccessType::ReadWrite);
  addAttributeAt(*inlet, AttributePath("Reading"), AttributeType::Double, AccessType::ReadOnly, "K");
  sensors->addEntity(std::move(inlet));
  model.rebuildChildEntitiesList();
}

int main(int argc, char** argv)
try
{
  if (argc != 2)
    throw std::invalid_argument("usage: tutorial_solver <exchange directory>");
  const std::string directory = argv[1];
  const int timeout = 10000; // ms, for every wait on the client

  LogManager::instance().initialize(directory + "/solver.log", LogLevel::Warning);
  EntityCollection model;
  buildModel(model);

  ExchangeFiles files(directory);
  ExchangeSide side(ExchangeRole::Solver, directory, {.notifiedWaits = true});
  side.setHeartbeat(1, 5); // write our heartbeat every second; the client is dead after 5 s without one
  side.startHeartbeat();

  side.setState(SolveState::Writing_Def_CSV_File);
  CSVDefinitionFileParser definition(model);
  definition.setChronologies({Chronology::Initial}); // lists, links and shortcuts travel at Initial
  definition.setNumberFormat(NumberFormat::RoundTrip);
  if (!definition.saveAs(files.getDefFile()))
    throw std::runtime_error("cannot write " + files.getDefFile());
  side.setState(SolveState::FinishedWriting_Def_CSV_File);
  expect(side.waitForPartnerStart(timeout));
  expect(side.waitForPartnerState({SolveState::FinishedReading_Def_CSV_File}, timeout));

  CSVDataFileParser data(model, {Chronology::Current});
  data.setSkipReadOnly(true); // in.csv carries the whole model: take only what the client may write
  data.setStrictNumbers(true);
  data.setNumberFormat(NumberFormat::RoundTrip);
  Entity& control = *model.getEntity(EntityID(1, 1));
  Attribute& iterationValue = control.getAttribute(model.getSolutionControlDefinition().getIterationPath());
  Attribute& temperature =
      model.getEntity(EntityID(2, 1))->getAttribute(AttributePath("Results.Temperature"));
  Attribute& power = model.getEntity(EntityID(2, 1))->getAttribute(AttributePath("Heater.Power"));

  double tank = 290.0; // K
  for (int iteration = 1; iteration <= 20; ++iteration)
  {
    tank += 0.01 * power.getDoubleValue(Chronology::Current, false) - 0.1 * (tank - 290.0);
    iterationValue.setIntValue(iteration, Chronology::Current, false);
    temperature.setDoubleValue(tank, Chronology::Current, false);

    if (!data.saveAs(files.getOutFile()))
      throw std::runtime_error("cannot write " + files.getOutFile());
    side.setState(SolveState::CFDSolver_NewDataReady);
    expect(side.waitForPartnerState({SolveState::Client_NewDataReady}, timeout));
    data.parseFile(files.getInFile()); // throws, naming file and row, on a bad row
    side.setState(SolveState::CFDSolver_Solving);
    expect(side.waitForPartnerState({SolveState::Client_WaitForData}, timeout));
  }
  side.setState(SolveState::Finished);
  std::printf("solver: 20 iterations, tank %.3f K, heater %.1f W\n", tank,
              power.getDoubleValue(Chronology::Current, false));
  return 0;
}
catch (const std::exception& failure)
{
  std::fprintf(stderr, "tutorial_solver: %s\n", failure.what());
  return 1;
}
