#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/TrivialEventHandlerOptions.h"

#include "support/GroupingLocale.h"
#include "support/Tables.h"

#include <gtest/gtest.h>

using namespace Ombrix;
using FileSystem::DataStreamKind;
using OmbrixTest::streamed;

namespace
{

const CSVEventHandlerOptions sample = {.ombrixDirectory = "C:/exchange dir/\"quoted\"\\tail",
                                       .inFileTryAttempts = 7,
                                       .fileMode = CSVFileMode::Sequential,
                                       .syncMode = SyncMode::TimeStep,
                                       .syncStartIteration = 1234567,
                                       .syncIterationInterval = 5,
                                       .useFullEntityNames = true,
                                       .stateFileMode = StateFileMode::WriteOnly,
                                       .readFailureHandling = ReadFailureHandling::Retry,
                                       .solverHeartBeatInterval = 2,
                                       .clientHeartBeatGracePeriod = 9};

AIEventHandlerOptions aiSample()
{
  using Reference = Model::AttributeReference<Model::Attribute>;
  AIEventHandlerOptions options;
  for (const char* name : {"surrogate", "drag"})
  {
    const Reference input(Model::EntityID(1, 2), Model::AttributePath("In"));
    const Reference output(Model::EntityID(3, 4), Model::AttributePath(std::string("Out.") + name));
    options.functors.emplace_back(name, nullptr, AIFunctor::References{input}, AIFunctor::References{output},
                                  nullptr);
  }
  return options;
}

} // namespace

TEST(ExchangeModes, Texts)
{
  OmbrixTest::expectNames<SyncMode>({{0, "Iteration"}, {1, "TimeStep"}, {2, "Disabled"}}, syncModeToString,
                                    syncModeFromString, static_cast<SyncMode>(9));
  OmbrixTest::expectNames<StateFileMode>({{0, "Off"}, {1, "WriteOnly"}, {2, "WriteAndWait"}},
                                         stateFileModeToString, stateFileModeFromString,
                                         static_cast<StateFileMode>(9));
  OmbrixTest::expectNames<ReadFailureHandling>({{0, "LogAndContinue"}, {1, "Fail"}, {2, "Retry"}},
                                               readFailureHandlingToString, readFailureHandlingFromString,
                                               static_cast<ReadFailureHandling>(9));
}

TEST(CSVEventHandlerOptions, EqualityIgnoresOnlyTheFullNameFlag)
{
  const CSVEventHandlerOptions base = sample;
  CSVEventHandlerOptions other = base;
  other.useFullEntityNames = !base.useFullEntityNames;
  EXPECT_TRUE(base == other);
  EXPECT_FALSE(base != other);
  const std::vector<void (*)(CSVEventHandlerOptions&)> changes = {
      [](CSVEventHandlerOptions& o) { o.ombrixDirectory += "x"; },
      [](CSVEventHandlerOptions& o) { ++o.inFileTryAttempts; },
      [](CSVEventHandlerOptions& o) { o.fileMode = CSVFileMode::Fixed; },
      [](CSVEventHandlerOptions& o) { o.syncMode = SyncMode::Iteration; },
      [](CSVEventHandlerOptions& o) { ++o.syncStartIteration; },
      [](CSVEventHandlerOptions& o) { ++o.syncIterationInterval; },
      [](CSVEventHandlerOptions& o) { o.stateFileMode = StateFileMode::Off; },
      [](CSVEventHandlerOptions& o) { o.readFailureHandling = ReadFailureHandling::Fail; },
      [](CSVEventHandlerOptions& o) { ++o.solverHeartBeatInterval; },
      [](CSVEventHandlerOptions& o) { ++o.clientHeartBeatGracePeriod; },
  };
  for (std::size_t i = 0; i < changes.size(); ++i)
  {
    SCOPED_TRACE(i);
    CSVEventHandlerOptions changed = base;
    changes[i](changed);
    EXPECT_FALSE(base == changed);
    EXPECT_TRUE(base != changed);
  }
}

TEST(CSVEventHandlerOptions, StreamsEveryKeyInOrderAndReadsItBackTheTrivialGroupToo)
{
  // A host's locale changes no number of the record.
  const OmbrixTest::GroupingLocale grouping;
  EXPECT_EQ(streamed(sample, DataStreamKind::Text), R"(<CSVEventHandlerOptions>
  OmbrixDirectory "C:/exchange dir/\"quoted\"\\tail"
  InFileTryAttempts 7
  FileMode 2
  SyncMode 1
  SyncStartIteration 1234567
  SyncIterationInterval 5
  UseFullEntityNames true
  StateFileMode 1
  ReadFailureHandling 2
  SolverHeartBeatInterval 2
  ClientHeartBeatGracePeriod 9
</CSVEventHandlerOptions>
)");
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    SCOPED_TRACE(static_cast<int>(kind));
    CSVEventHandlerOptions flagOff;
    const CSVEventHandlerOptions read = OmbrixTest::roundTrip(sample, kind, flagOff);
    EXPECT_EQ(read, sample);
    EXPECT_TRUE(read.useFullEntityNames);
    EXPECT_EQ(OmbrixTest::roundTrip(CSVEventHandlerOptions{}, kind, sample), CSVEventHandlerOptions{});
  }
  OmbrixTest::expectCutsFail(streamed(sample, DataStreamKind::Binary), sample);
  // The trivial handler's group is empty, and no CSV options group.
  EXPECT_EQ(streamed(TrivialEventHandlerOptions{}, DataStreamKind::Text),
            "<TrivialEventHandlerOptions>\n</TrivialEventHandlerOptions>\n");
  OmbrixTest::roundTrip(TrivialEventHandlerOptions{}, DataStreamKind::Text);
  FileSystem::DataIStream in(streamed(TrivialEventHandlerOptions{}, DataStreamKind::Binary));
  CSVEventHandlerOptions read;
  in >> read;
  EXPECT_FALSE(in.good());
}

TEST(AIEventHandlerOptions, EqualityIsThatOfTheFunctorsInOrderAndACutStreamLeavesThem)
{
  const AIEventHandlerOptions base = aiSample();
  AIEventHandlerOptions other = base;
  // A run-time binding only: never compared or dereferenced.
  other.modules = reinterpret_cast<AISystem::AIModuleCollection*>(&other);
  EXPECT_TRUE(base == other);
  std::swap(other.functors[0], other.functors[1]);
  EXPECT_TRUE(base != other);
  other.functors.pop_back();
  EXPECT_FALSE(base == other);

  AIEventHandlerOptions one = aiSample();
  one.functors.pop_back();
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    SCOPED_TRACE(static_cast<int>(kind));
    EXPECT_EQ(OmbrixTest::roundTrip(aiSample(), kind, one), aiSample());
    EXPECT_EQ(OmbrixTest::roundTrip(AIEventHandlerOptions{}, kind, one), AIEventHandlerOptions{});
  }
  EXPECT_EQ(streamed(aiSample(), DataStreamKind::Text).rfind("<AIEventHandlerOptions>\n", 0), 0u);
  OmbrixTest::expectCutsFail(streamed(aiSample(), DataStreamKind::Binary), one);
}
