#include "ombrix/exchange/InterfaceCSVCommon.h"

#include "ombrix/exchange/InterfaceCSVCommonSolver.h"

#include "support/TestSupport.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>

using Ombrix::CSVFileMode;
using Ombrix::InterfaceCSVCommon;
using Ombrix::InterfaceCSVCommonSolver;

namespace
{

// Host classes reach the paths by deriving; so do the tests.
template <typename Base> class Exposed : public Base
{
public:
  using Base::Base;
  using Base::getDefFile;
  using Base::getFile;
  using Base::getInAliveFile;
  using Base::getInFile;
  using Base::getInitFile;
  using Base::getInStateFile;
  using Base::getOmbrixPath;
  using Base::getOutAliveFile;
  using Base::getOutFile;
  using Base::getOutStateFile;
};

using Interface = Exposed<InterfaceCSVCommon>;
using SolverInterface = Exposed<InterfaceCSVCommonSolver>;

const char* const directoryVariable = "ZQ_KORVANOMBRIXDIRECTORY";

// Sets or clears the exchange-directory variable for one test and puts the old value back afterwards.
class DirectoryVariable
{
public:
  explicit DirectoryVariable(const std::optional<std::string>& value)
  {
    if (const char* old = std::getenv(directoryVariable))
      m_saved = old;
    if (value)
      ::setenv(directoryVariable, value->c_str(), 1);
    else
      ::unsetenv(directoryVariable);
  }
  ~DirectoryVariable()
  {
    if (m_saved)
      ::setenv(directoryVariable, m_saved->c_str(), 1);
    else
      ::unsetenv(directoryVariable);
  }
  DirectoryVariable(const DirectoryVariable&) = delete;
  DirectoryVariable& operator=(const DirectoryVariable&) = delete;

private:
  std::optional<std::string> m_saved;
};

} // namespace

TEST(InterfaceCSVCommon, BareFileNames)
{
  const std::pair<std::string, std::string> cases[] = {
      {InterfaceCSVCommon::initFile(), "init.csv"},
      {InterfaceCSVCommon::defFile(), "def.csv"},
      {InterfaceCSVCommon::inFile(std::nullopt), "in.csv"},
      {InterfaceCSVCommon::inFile(), "in.csv"},
      {InterfaceCSVCommon::inFile(0), "in0.csv"},
      {InterfaceCSVCommon::inFile(7), "in7.csv"},
      {InterfaceCSVCommon::inFile(1234567), "in1234567.csv"},
      {InterfaceCSVCommon::outFile(std::nullopt), "out.csv"},
      {InterfaceCSVCommon::outFile(10), "out10.csv"},
      {InterfaceCSVCommon::outFile(SIZE_MAX), "out" + std::to_string(SIZE_MAX) + ".csv"},
      {InterfaceCSVCommon::inStateFile(), "in.state"},
      {InterfaceCSVCommon::outStateFile(), "out.state"},
      {InterfaceCSVCommon::inAliveFile(), "in.alive"},
      {InterfaceCSVCommon::outAliveFile(), "out.alive"},
  };
  for (const auto& [name, expected] : cases)
  {
    SCOPED_TRACE(expected);
    EXPECT_EQ(name, expected);
  }
}

TEST(InterfaceCSVCommon, PathsInFixedMode)
{
  Interface exchange("C:/exchange/", CSVFileMode::Fixed);
  EXPECT_EQ(exchange.getOmbrixPath(), "C:/exchange");
  const std::pair<std::string, const char*> cases[] = {
      {exchange.getOutFile(), "C:/exchange/out.csv"},
      {exchange.getInFile(), "C:/exchange/in.csv"},
      {exchange.getOutStateFile(), "C:/exchange/out.state"},
      {exchange.getInStateFile(), "C:/exchange/in.state"},
      {exchange.getOutAliveFile(), "C:/exchange/out.alive"},
      {exchange.getInAliveFile(), "C:/exchange/in.alive"},
      {exchange.getDefFile(), "C:/exchange/def.csv"},
      {exchange.getInitFile(), "C:/exchange/init.csv"},
      {exchange.getFile("any name"), "C:/exchange/any name"},
  };
  for (const auto& [path, expected] : cases)
  {
    SCOPED_TRACE(expected);
    EXPECT_EQ(path, expected);
  }
  exchange.increaseSequentialFileCounter(3);
  EXPECT_EQ(exchange.getOutFile(), "C:/exchange/out.csv");
}

TEST(InterfaceCSVCommon, SeparatorIsAlwaysForwardSlash)
{
  const std::pair<const char*, const char*> cases[] = {
      {"", "/def.csv"},         {"dir", "dir/def.csv"},
      {"dir//", "dir/def.csv"}, {"C:\\exchange\\", "C:\\exchange/def.csv"},
      {"/", "/def.csv"},        {"//", "/def.csv"},
  };
  for (const auto& [directory, expected] : cases)
  {
    SCOPED_TRACE(directory);
    EXPECT_EQ(Interface(directory).getDefFile(), expected);
  }
  EXPECT_EQ(Interface("//").getOmbrixPath(), "/");
}

TEST(InterfaceCSVCommon, DefaultsAreEmptyDirectoryAndFixedMode)
{
  Interface exchange;
  EXPECT_EQ(exchange.getOmbrixPath(), "");
  EXPECT_EQ(exchange.getFileMode(), CSVFileMode::Fixed);
  EXPECT_FALSE(exchange.isAutoFileMode());
  EXPECT_EQ(exchange.getInFile(), "/in.csv");
}

TEST(InterfaceCSVCommon, SequentialModeNumbersBothDataFiles)
{
  Interface exchange("/x", CSVFileMode::Sequential);
  EXPECT_EQ(exchange.getInFile(), "/x/in0.csv");
  EXPECT_EQ(exchange.getOutFile(), "/x/out0.csv");
  exchange.increaseSequentialFileCounter(3);
  EXPECT_EQ(exchange.getInFile(), "/x/in3.csv");
  EXPECT_EQ(exchange.getOutFile(), "/x/out3.csv");
  exchange.increaseSequentialFileCounter(1);
  exchange.increaseSequentialFileCounter(0);
  EXPECT_EQ(exchange.getInFile(), "/x/in4.csv");
  EXPECT_EQ(exchange.getOutStateFile(), "/x/out.state");
  EXPECT_EQ(exchange.getDefFile(), "/x/def.csv");
  exchange.resetSequentialFileCounter();
  EXPECT_EQ(exchange.getInFile(), "/x/in0.csv");
  EXPECT_EQ(exchange.getOutFile(), "/x/out0.csv");
}

TEST(InterfaceCSVCommon, SetFileModeLeavesCounterAndFlagAlone)
{
  Interface fixed("/x", CSVFileMode::Fixed);
  fixed.setFileMode(CSVFileMode::Sequential);
  EXPECT_EQ(fixed.getFileMode(), CSVFileMode::Sequential);
  fixed.increaseSequentialFileCounter(5);
  EXPECT_EQ(fixed.getInFile(), "/x/in.csv");
  EXPECT_EQ(fixed.getOutFile(), "/x/out.csv");
  fixed.setFileMode(CSVFileMode::Automatic);
  EXPECT_FALSE(fixed.isAutoFileMode());

  Interface sequential("/x", CSVFileMode::Sequential);
  sequential.increaseSequentialFileCounter(2);
  sequential.setFileMode(CSVFileMode::Fixed);
  EXPECT_EQ(sequential.getFileMode(), CSVFileMode::Fixed);
  EXPECT_EQ(sequential.getInFile(), "/x/in2.csv");

  Interface automatic("/x", CSVFileMode::Automatic);
  automatic.setFileMode(CSVFileMode::Fixed);
  EXPECT_TRUE(automatic.isAutoFileMode());
}

TEST(InterfaceCSVCommon, AutomaticAndOtherModesUseFixedNames)
{
  const std::pair<int, bool> cases[] = {{-1, true}, {0, false}, {1, false}, {3, false}, {-2, false}};
  for (const auto& [mode, automatic] : cases)
  {
    SCOPED_TRACE(mode);
    Interface exchange("/x", static_cast<CSVFileMode>(mode));
    EXPECT_EQ(exchange.isAutoFileMode(), automatic);
    EXPECT_EQ(exchange.getFileMode(), static_cast<CSVFileMode>(mode));
    exchange.increaseSequentialFileCounter(4);
    EXPECT_EQ(exchange.getInFile(), "/x/in.csv");
    EXPECT_EQ(exchange.getOutFile(), "/x/out.csv");
  }
}

TEST(InterfaceCSVCommonSolver, EnvironmentOverridesDirectory)
{
  DirectoryVariable variable(std::string("/from/env/"));
  SolverInterface exchange("/from/argument", CSVFileMode::Sequential);
  EXPECT_EQ(exchange.getOmbrixPath(), "/from/env");
  EXPECT_EQ(exchange.getInFile(), "/from/env/in0.csv");
  EXPECT_EQ(exchange.getOutStateFile(), "/from/env/out.state");
}

TEST(InterfaceCSVCommonSolver, EmptyVariableStillCounts)
{
  DirectoryVariable variable(std::string(""));
  SolverInterface exchange("/from/argument");
  EXPECT_EQ(exchange.getOmbrixPath(), "");
  EXPECT_EQ(exchange.getDefFile(), "/def.csv");
}

TEST(InterfaceCSVCommonSolver, WithoutVariableUsesArgument)
{
  DirectoryVariable variable(std::nullopt);
  SolverInterface exchange("/from/argument/", CSVFileMode::Automatic);
  EXPECT_EQ(exchange.getOmbrixPath(), "/from/argument");
  EXPECT_TRUE(exchange.isAutoFileMode());
  EXPECT_EQ(exchange.getOutFile(), "/from/argument/out.csv");
  EXPECT_EQ(SolverInterface().getOmbrixPath(), "");
}
