#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"
#include "ombrix/sdk/SolveState.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace KorvanSDK;

TEST(Enumerations, AttributeTypeTextsRoundTrip)
{
  const std::pair<int, const char*> cases[] = {
      {0, "Unknown"}, {1, "Int"},  {2, "Bool"}, {3, "String"},   {4, "Float"},  {5, "Composite"},
      {6, "Entity"},  {7, "Link"}, {8, "List"}, {9, "Shortcut"}, {10, "Array"}, {11, "Double"}};
  for (const auto& [value, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(attributeTypeToString(static_cast<AttributeType>(value)), text);
    EXPECT_EQ(attributeTypeFromString(text, AttributeType::Composite), static_cast<AttributeType>(value));
  }
  EXPECT_EQ(attributeTypeToString(static_cast<AttributeType>(12)), "Unknown");
  EXPECT_EQ(attributeTypeToString(static_cast<AttributeType>(-1)), "Unknown");
  EXPECT_EQ(attributeTypeFromString("int", AttributeType::Double), AttributeType::Double);
  EXPECT_EQ(attributeTypeFromString("Int ", AttributeType::Double), AttributeType::Double);
}

TEST(Enumerations, AccessAndChronologyTexts)
{
  const char* access[] = {"None", "ReadOnly", "WriteOnly", "ReadWrite"};
  for (int i = 0; i < 4; ++i)
  {
    EXPECT_EQ(accessTypeToString(static_cast<AccessType>(i)), access[i]);
    EXPECT_EQ(accessTypeFromString(access[i], AccessType::None), static_cast<AccessType>(i));
  }
  EXPECT_THROW_MSG(accessTypeToString(static_cast<AccessType>(4)), std::logic_error, "Not implemented");

  const char* chronology[] = {"Initial", "Continue", "TimeStepStart", "Current", "Next"};
  for (int i = 0; i < 5; ++i)
  {
    EXPECT_EQ(chronologyToString(static_cast<Chronology>(i)), chronology[i]);
    EXPECT_EQ(chronologyFromString(chronology[i], Chronology::Next), static_cast<Chronology>(i));
  }
  EXPECT_THROW_MSG(chronologyToString(static_cast<Chronology>(5)), std::logic_error, "Not implemented");
  EXPECT_THROW_MSG(chronologyToString(static_cast<Chronology>(-1)), std::logic_error, "Not implemented");
  EXPECT_EQ(chronologyFromString("current", Chronology::Initial), Chronology::Initial);
}

TEST(Enumerations, SolveStateNumbersAndTexts)
{
  const std::pair<int, const char*> cases[] = {{-3, "TimeOut"},
                                               {-2, "InActive"},
                                               {-1, "NoFile"},
                                               {1, "Initializing"},
                                               {3, "WaitForClientInitialization"},
                                               {4, "Initialized"},
                                               {5, "WaitForInitialized"},
                                               {10, "Solving"},
                                               {11, "Finished"},
                                               {12, "Failed"},
                                               {100, "WaitFor_Def_CSV_Write"},
                                               {101, "Reading_Def_CSV_File"},
                                               {102, "FinishedReading_Def_CSV_File"},
                                               {110, "Writing_Def_CSV_File"},
                                               {111, "FinishedWriting_Def_CSV_File"},
                                               {120, "WaitingForFNGeneration"},
                                               {121, "FinishedFNGeneration"},
                                               {1001, "Client_WaitForData"},
                                               {1002, "Client_Solving"},
                                               {1003, "Client_NewDataReady"},
                                               {1004, "Client_ReadyToSolve"},
                                               {1014, "Client_SolveStarting"},
                                               {1015, "Client_WaitForStarted"},
                                               {1016, "Client_SolveStarted"},
                                               {2001, "CFDSolver_WaitForData"},
                                               {2002, "CFDSolver_Solving"},
                                               {2014, "CFDSolver_SolveStarting"},
                                               {2015, "CFDSolver_WaitForStarted"},
                                               {2016, "CFDSolver_SolveStarted"},
                                               {21003, "CFDSolver_NewDataReady"}};
  for (const auto& [value, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(toString(static_cast<SolveState>(value)), text);
    EXPECT_EQ(solveStateFromString(text, SolveState::Unknown), static_cast<SolveState>(value));
  }
  for (int missing : {0, 2, 2003, 13, 1005})
  {
    SCOPED_TRACE(missing);
    EXPECT_THROW_MSG(toString(static_cast<SolveState>(missing)), std::logic_error, "Not implemented");
  }
}
