#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"
#include "ombrix/sdk/SolveState.h"

#include "support/Tables.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace KorvanSDK;
using OmbrixTest::expectNames;

TEST(Enumerations, AttributeTypeTexts)
{
  expectNames({{0, "Unknown"},
               {1, "Int"},
               {2, "Bool"},
               {3, "String"},
               {4, "Float"},
               {5, "Composite"},
               {6, "Entity"},
               {7, "Link"},
               {8, "List"},
               {9, "Shortcut"},
               {10, "Array"},
               {11, "Double"}},
              attributeTypeToString, attributeTypeFromString, static_cast<AttributeType>(99));
  EXPECT_EQ(attributeTypeToString(static_cast<AttributeType>(12)), "Unknown");
  EXPECT_EQ(attributeTypeToString(static_cast<AttributeType>(-1)), "Unknown");
}

TEST(Enumerations, AccessAndChronologyTexts)
{
  expectNames({{0, "None"}, {1, "ReadOnly"}, {2, "WriteOnly"}, {3, "ReadWrite"}}, accessTypeToString,
              accessTypeFromString, static_cast<AccessType>(99));
  expectNames({{0, "Initial"}, {1, "Continue"}, {2, "TimeStepStart"}, {3, "Current"}, {4, "Next"}},
              chronologyToString, chronologyFromString, static_cast<Chronology>(99));
  EXPECT_THROW_MSG(accessTypeToString(static_cast<AccessType>(4)), std::logic_error, "Not implemented");
  EXPECT_THROW_MSG(chronologyToString(static_cast<Chronology>(5)), std::logic_error, "Not implemented");
  EXPECT_THROW_MSG(chronologyToString(static_cast<Chronology>(-1)), std::logic_error, "Not implemented");
}

TEST(Enumerations, SolveStateNumbersAndTexts)
{
  // clang-format off
  expectNames({{-3, "TimeOut"}, {-2, "InActive"}, {-1, "NoFile"}, {1, "Initializing"},
               {3, "WaitForClientInitialization"}, {4, "Initialized"}, {5, "WaitForInitialized"},
               {10, "Solving"}, {11, "Finished"}, {12, "Failed"},
               {100, "WaitFor_Def_CSV_Write"}, {101, "Reading_Def_CSV_File"},
               {102, "FinishedReading_Def_CSV_File"}, {110, "Writing_Def_CSV_File"},
               {111, "FinishedWriting_Def_CSV_File"}, {120, "WaitingForFNGeneration"},
               {121, "FinishedFNGeneration"},
               {1001, "Client_WaitForData"}, {1002, "Client_Solving"}, {1003, "Client_NewDataReady"},
               {1004, "Client_ReadyToSolve"}, {1014, "Client_SolveStarting"},
               {1015, "Client_WaitForStarted"}, {1016, "Client_SolveStarted"},
               {2001, "CFDSolver_WaitForData"}, {2002, "CFDSolver_Solving"}, {2014, "CFDSolver_SolveStarting"},
               {2015, "CFDSolver_WaitForStarted"}, {2016, "CFDSolver_SolveStarted"},
               {21003, "CFDSolver_NewDataReady"}},
              [](SolveState s) { return toString(s); }, solveStateFromString, SolveState::Unknown);
  // clang-format on
  for (int missing : {0, 2, 2003, 13, 1005})
  {
    SCOPED_TRACE(missing);
    EXPECT_THROW_MSG(toString(static_cast<SolveState>(missing)), std::logic_error, "Not implemented");
  }
}
