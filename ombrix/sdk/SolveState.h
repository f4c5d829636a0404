// The solve states that solver and client exchange through the state files. The numbers are part of
// the file format, gaps included.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace KorvanSDK
{

enum class SolveState : std::int32_t
{
  TimeOut = -3,
  InActive = -2,
  NoFile = -1,
  Unknown = 0,
  Initializing = 1,
  WaitForClientInitialization = 3,
  Initialized = 4,
  WaitForInitialized = 5,
  Solving = 10,
  Finished = 11,
  Failed = 12,
  WaitFor_Def_CSV_Write = 100,
  Reading_Def_CSV_File = 101,
  FinishedReading_Def_CSV_File = 102,
  Writing_Def_CSV_File = 110,
  FinishedWriting_Def_CSV_File = 111,
  WaitingForFNGeneration = 120,
  FinishedFNGeneration = 121,
  Client_WaitForData = 1001,
  Client_Solving = 1002,
  Client_NewDataReady = 1003,
  Client_ReadyToSolve = 1004,
  Client_SolveStarting = 1014,
  Client_WaitForStarted = 1015,
  Client_SolveStarted = 1016,
  CFDSolver_WaitForData = 2001,
  CFDSolver_Solving = 2002,
  CFDSolver_SolveStarting = 2014,
  CFDSolver_WaitForStarted = 2015,
  CFDSolver_SolveStarted = 2016,
  CFDSolver_NewDataReady = 21003,
};

// The state's text ("Solving", "CFDSolver_NewDataReady", ...). `Unknown` and values outside the
// enumeration have none: std::logic_error("Not implemented").
OMBRIX_API std::string toString(SolveState state);
// Exact, case-sensitive match of the texts of toString; anything else gives `fallback`.
OMBRIX_API SolveState solveStateFromString(const std::string& text, SolveState fallback);

} // namespace KorvanSDK
