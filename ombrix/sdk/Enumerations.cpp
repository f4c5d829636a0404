// Text forms of the host SDK's enumerations.
#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"
#include "ombrix/sdk/NameTable.h"
#include "ombrix/sdk/SolveState.h"

#include <stdexcept>

namespace KorvanSDK
{
namespace
{

constexpr auto attributeTypes = Ombrix::makeNameTable<AttributeType>({
    {AttributeType::Unknown, "Unknown"},
    {AttributeType::Int, "Int"},
    {AttributeType::Bool, "Bool"},
    {AttributeType::String, "String"},
    {AttributeType::Float, "Float"},
    {AttributeType::Composite, "Composite"},
    {AttributeType::Entity, "Entity"},
    {AttributeType::Link, "Link"},
    {AttributeType::List, "List"},
    {AttributeType::Shortcut, "Shortcut"},
    {AttributeType::Array, "Array"},
    {AttributeType::Double, "Double"},
});

constexpr auto accessTypes = Ombrix::makeNameTable<AccessType>({
    {AccessType::None, "None"},
    {AccessType::ReadOnly, "ReadOnly"},
    {AccessType::WriteOnly, "WriteOnly"},
    {AccessType::ReadWrite, "ReadWrite"},
});

constexpr auto chronologies = Ombrix::makeNameTable<Chronology>({
    {Chronology::Initial, "Initial"},
    {Chronology::Continue, "Continue"},
    {Chronology::TimeStepStart, "TimeStepStart"},
    {Chronology::Current, "Current"},
    {Chronology::Next, "Next"},
});

constexpr auto solveStates = Ombrix::makeNameTable<SolveState>({
    {SolveState::TimeOut, "TimeOut"},
    {SolveState::InActive, "InActive"},
    {SolveState::NoFile, "NoFile"},
    {SolveState::Initializing, "Initializing"},
    {SolveState::WaitForClientInitialization, "WaitForClientInitialization"},
    {SolveState::Initialized, "Initialized"},
    {SolveState::WaitForInitialized, "WaitForInitialized"},
    {SolveState::Solving, "Solving"},
    {SolveState::Finished, "Finished"},
    {SolveState::Failed, "Failed"},
    {SolveState::WaitFor_Def_CSV_Write, "WaitFor_Def_CSV_Write"},
    {SolveState::Reading_Def_CSV_File, "Reading_Def_CSV_File"},
    {SolveState::FinishedReading_Def_CSV_File, "FinishedReading_Def_CSV_File"},
    {SolveState::Writing_Def_CSV_File, "Writing_Def_CSV_File"},
    {SolveState::FinishedWriting_Def_CSV_File, "FinishedWriting_Def_CSV_File"},
    {SolveState::WaitingForFNGeneration, "WaitingForFNGeneration"},
    {SolveState::FinishedFNGeneration, "FinishedFNGeneration"},
    {SolveState::Client_WaitForData, "Client_WaitForData"},
    {SolveState::Client_Solving, "Client_Solving"},
    {SolveState::Client_NewDataReady, "Client_NewDataReady"},
    {SolveState::Client_ReadyToSolve, "Client_ReadyToSolve"},
    {SolveState::Client_SolveStarting, "Client_SolveStarting"},
    {SolveState::Client_WaitForStarted, "Client_WaitForStarted"},
    {SolveState::Client_SolveStarted, "Client_SolveStarted"},
    {SolveState::CFDSolver_WaitForData, "CFDSolver_WaitForData"},
    {SolveState::CFDSolver_Solving, "CFDSolver_Solving"},
    {SolveState::CFDSolver_SolveStarting, "CFDSolver_SolveStarting"},
    {SolveState::CFDSolver_WaitForStarted, "CFDSolver_WaitForStarted"},
    {SolveState::CFDSolver_SolveStarted, "CFDSolver_SolveStarted"},
    {SolveState::CFDSolver_NewDataReady, "CFDSolver_NewDataReady"},
});

template <typename E, std::size_t N> std::string nameOrThrow(const Ombrix::NameTable<E, N>& table, E value)
{
  if (const auto name = table.findName(value))
    return std::string(*name);
  throw std::logic_error("Not implemented");
}

} // namespace

std::string attributeTypeToString(AttributeType type)
{
  return std::string(attributeTypes.nameOr(type, "Unknown"));
}

AttributeType attributeTypeFromString(const std::string& text, AttributeType fallback)
{
  return attributeTypes.valueOr(text, fallback);
}

std::string accessTypeToString(AccessType access)
{
  return nameOrThrow(accessTypes, access);
}

AccessType accessTypeFromString(const std::string& text, AccessType fallback)
{
  return accessTypes.valueOr(text, fallback);
}

std::string chronologyToString(Chronology chronology)
{
  return nameOrThrow(chronologies, chronology);
}

Chronology chronologyFromString(const std::string& text, Chronology fallback)
{
  return chronologies.valueOr(text, fallback);
}

std::string toString(SolveState state)
{
  return nameOrThrow(solveStates, state);
}

SolveState solveStateFromString(const std::string& text, SolveState fallback)
{
  return solveStates.valueOr(text, fallback);
}

} // namespace KorvanSDK
