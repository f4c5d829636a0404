#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/TrivialEventHandlerOptions.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "ai/RecordingModules.h"
#include "support/GroupingLocale.h"

#include <gtest/gtest.h>

using namespace Ombrix;
using FileSystem::DataStreamKind;

namespace
{

CSVEventHandlerOptions sample()
{
  CSVEventHandlerOptions options;
  options.ombrixDirectory = "C:/exchange dir/\"quoted\"\\tail";
  options.inFileTryAttempts = 7;
  options.fileMode = CSVFileMode::Sequential;
  options.syncMode = SyncMode::TimeStep;
  options.syncStartIteration = 3;
  options.syncIterationInterval = 5;
  options.useFullEntityNames = true;
  options.stateFileMode = StateFileMode::WriteOnly;
  options.readFailureHandling = ReadFailureHandling::Retry;
  options.solverHeartBeatInterval = 2;
  options.clientHeartBeatGracePeriod = 9;
  return options;
}

CSVEventHandlerOptions roundTrip(const CSVEventHandlerOptions& options, DataStreamKind kind)
{
  FileSystem::DataOStream out(kind);
  out << options;
  EXPECT_TRUE(out.good());
  FileSystem::DataIStream in(out.data(), kind);
  CSVEventHandlerOptions read;
  read.useFullEntityNames = !options.useFullEntityNames;
  in >> read;
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(in.atEnd());
  return read;
}

} // namespace

TEST(CSVEventHandlerOptions, EqualityIgnoresOnlyTheFullNameFlag)
{
  const CSVEventHandlerOptions base = sample();
  CSVEventHandlerOptions other = base;
  other.useFullEntityNames = !base.useFullEntityNames;
  EXPECT_EQ(base, other);

  // Every other field takes part.
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
    EXPECT_NE(base, changed);
  }
}

TEST(CSVEventHandlerOptions, RoundTripsInBothStreamKindsWithTheFlag)
{
  // A host's locale changes no number of the record.
  const OmbrixTest::GroupingLocale grouping;
  for (auto kind : {DataStreamKind::Binary, DataStreamKind::Text})
  {
    SCOPED_TRACE(static_cast<int>(kind));
    CSVEventHandlerOptions options = sample();
    options.syncStartIteration = 1234567;
    const CSVEventHandlerOptions read = roundTrip(options, kind);
    EXPECT_EQ(read, options);
    EXPECT_EQ(read.useFullEntityNames, options.useFullEntityNames);

    CSVEventHandlerOptions empty;
    empty.ombrixDirectory.clear();
    EXPECT_EQ(roundTrip(empty, kind).ombrixDirectory, "");
  }
}

TEST(CSVEventHandlerOptions, OptionsDifferingInTheFlagAreWrittenDifferently)
{
  CSVEventHandlerOptions a = sample();
  CSVEventHandlerOptions b = a;
  b.useFullEntityNames = !a.useFullEntityNames;
  FileSystem::DataOStream outA(DataStreamKind::Text);
  FileSystem::DataOStream outB(DataStreamKind::Text);
  outA << a;
  outB << b;
  EXPECT_NE(outA.data(), outB.data());
  EXPECT_NE(outA.data().find("<CSVEventHandlerOptions>"), std::string::npos);
  EXPECT_NE(outA.data().find("</CSVEventHandlerOptions>"), std::string::npos);
  EXPECT_NE(outA.data().find("ClientHeartBeatGracePeriod"), std::string::npos);
}

TEST(CSVEventHandlerOptions, TruncatedOrForeignStreamsFail)
{
  FileSystem::DataOStream out(DataStreamKind::Binary);
  out << sample();
  const std::string bytes = out.data();
  for (std::size_t length = 0; length < bytes.size(); ++length)
  {
    FileSystem::DataIStream in(bytes.substr(0, length), DataStreamKind::Binary);
    CSVEventHandlerOptions read;
    in >> read;
    EXPECT_FALSE(in.good()) << "prefix of " << length << " bytes";
  }
  FileSystem::DataOStream trivial(DataStreamKind::Binary);
  trivial << TrivialEventHandlerOptions{};
  FileSystem::DataIStream in(trivial.data(), DataStreamKind::Binary);
  CSVEventHandlerOptions read;
  in >> read;
  EXPECT_FALSE(in.good());
}

TEST(TrivialEventHandlerOptions, EmptyGroupRoundTrips)
{
  EXPECT_EQ(TrivialEventHandlerOptions{}, TrivialEventHandlerOptions{});
  FileSystem::DataOStream out(DataStreamKind::Text);
  out << TrivialEventHandlerOptions{};
  EXPECT_EQ(out.data(), "<TrivialEventHandlerOptions>\n</TrivialEventHandlerOptions>\n");
  FileSystem::DataIStream in(out.data(), DataStreamKind::Text);
  TrivialEventHandlerOptions read;
  in >> read;
  EXPECT_TRUE(in.good());
}

TEST(ExchangeModes, TextsRoundTripAndUnknownFallsBack)
{
  for (auto mode : {SyncMode::Iteration, SyncMode::TimeStep, SyncMode::Disabled})
    EXPECT_EQ(syncModeFromString(syncModeToString(mode), SyncMode::Disabled), mode);
  for (auto mode : {StateFileMode::Off, StateFileMode::WriteOnly, StateFileMode::WriteAndWait})
    EXPECT_EQ(stateFileModeFromString(stateFileModeToString(mode), StateFileMode::Off), mode);
  for (auto h : {ReadFailureHandling::LogAndContinue, ReadFailureHandling::Fail, ReadFailureHandling::Retry})
    EXPECT_EQ(readFailureHandlingFromString(readFailureHandlingToString(h), ReadFailureHandling::Fail), h);
  EXPECT_EQ(syncModeToString(static_cast<SyncMode>(9)), "");
  EXPECT_EQ(stateFileModeFromString("writeonly", StateFileMode::Off), StateFileMode::Off);
  EXPECT_FALSE(isFatal(ReadFailureHandling::LogAndContinue));
  EXPECT_TRUE(isFatal(ReadFailureHandling::Fail));
  EXPECT_TRUE(isFatal(ReadFailureHandling::Retry));
}

namespace
{

Ombrix::AIEventHandlerOptions aiSample()
{
  using Reference = Ombrix::Model::AttributeReference<Ombrix::Model::Attribute>;
  Ombrix::AIEventHandlerOptions options;
  for (const char* name : {"surrogate", "drag"})
  {
    Reference input(Ombrix::Model::EntityID(1, 2), Ombrix::Model::AttributePath("In"));
    Reference output(Ombrix::Model::EntityID(3, 4), Ombrix::Model::AttributePath(std::string("Out.") + name));
    options.functors.emplace_back(name, nullptr, AIFunctor::References{input}, AIFunctor::References{output},
                                  nullptr);
  }
  return options;
}

} // namespace

TEST(AIEventHandlerOptions, EqualityIsThatOfTheFunctorListInOrder)
{
  const AIEventHandlerOptions base = aiSample();
  AIEventHandlerOptions other = base;
  OmbrixTest::RecordingModuleCollection loaded;
  other.modules = &loaded; // a run-time binding only: not compared
  EXPECT_EQ(base, other);
  std::swap(other.functors[0], other.functors[1]);
  EXPECT_NE(base, other);
  other.functors.pop_back();
  EXPECT_NE(base, other);
  EXPECT_EQ(AIEventHandlerOptions{}, AIEventHandlerOptions{});
}

TEST(AIEventHandlerOptions, RoundTripsInBothStreamKinds)
{
  for (auto kind : {DataStreamKind::Binary, DataStreamKind::Text})
  {
    SCOPED_TRACE(static_cast<int>(kind));
    for (const AIEventHandlerOptions& options : {aiSample(), AIEventHandlerOptions{}})
    {
      FileSystem::DataOStream out(kind);
      out << options;
      FileSystem::DataIStream in(out.data(), kind);
      AIEventHandlerOptions read = aiSample();
      read.functors.pop_back();
      in >> read;
      EXPECT_TRUE(in.good());
      EXPECT_TRUE(in.atEnd());
      EXPECT_EQ(read, options);
    }
  }
  FileSystem::DataOStream text(DataStreamKind::Text);
  text << aiSample();
  EXPECT_EQ(text.data().rfind("<AIEventHandlerOptions>\n", 0), 0u);
}

TEST(AIEventHandlerOptions, ATruncatedStreamFailsAndLeavesTheFunctors)
{
  FileSystem::DataOStream out(DataStreamKind::Binary);
  out << aiSample();
  const std::string bytes = out.data();
  for (std::size_t length = 0; length < bytes.size(); ++length)
  {
    FileSystem::DataIStream in(bytes.substr(0, length), DataStreamKind::Binary);
    AIEventHandlerOptions read;
    in >> read;
    EXPECT_FALSE(in.good()) << "prefix of " << length << " bytes";
    EXPECT_TRUE(read.functors.empty()) << "prefix of " << length << " bytes";
  }
}
