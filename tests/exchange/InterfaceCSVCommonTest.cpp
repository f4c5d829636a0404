#include "ombrix/exchange/InterfaceCSVCommon.h"

#include "ombrix/exchange/InterfaceCSVCommonSolver.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>

using Ombrix::CSVFileMode;
using Ombrix::InterfaceCSVCommon;

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

} // namespace

TEST(InterfaceCSVCommon, FileNamesAndPaths)
{
  // The paths are made from the names, which the fixed mode gives unnumbered.
  Interface exchange("C:/exchange/", CSVFileMode::Fixed);
  const std::pair<std::string, std::string> cases[] = {
      {InterfaceCSVCommon::inFile(), "in.csv"},
      {InterfaceCSVCommon::inFile(0), "in0.csv"},
      {InterfaceCSVCommon::inFile(1234567), "in1234567.csv"},
      {InterfaceCSVCommon::outFile(10), "out10.csv"},
      {InterfaceCSVCommon::outFile(SIZE_MAX), "out" + std::to_string(SIZE_MAX) + ".csv"},
      {exchange.getOmbrixPath(), "C:/exchange"},
      {exchange.getOutFile(), "C:/exchange/out.csv"},
      {exchange.getInFile(), "C:/exchange/in.csv"},
      {exchange.getOutStateFile(), "C:/exchange/out.state"},
      {exchange.getInStateFile(), "C:/exchange/in.state"},
      {exchange.getOutAliveFile(), "C:/exchange/out.alive"},
      {exchange.getInAliveFile(), "C:/exchange/in.alive"},
      {exchange.getDefFile(), "C:/exchange/def.csv"},
      {exchange.getInitFile(), "C:/exchange/init.csv"},
      {exchange.getFile("any name"), "C:/exchange/any name"},
      // The separator is always a forward slash, and the root is kept.
      {Interface().getDefFile(), "/def.csv"},
      {Interface("dir//").getDefFile(), "dir/def.csv"},
      {Interface("C:\\exchange\\").getDefFile(), "C:\\exchange/def.csv"},
      {Interface("//").getDefFile(), "/def.csv"},
      {Interface("//").getOmbrixPath(), "/"},
  };
  for (const auto& [name, expected] : cases)
    EXPECT_EQ(name, expected);
}

TEST(InterfaceCSVCommon, OnlyTheConstructorsModeSetsTheCounterAndTheAutomaticFlag)
{
  // {mode constructed with, mode set later, counter step, in file, out file, automatic}
  const std::tuple<int, std::optional<int>, std::size_t, const char*, const char*, bool> cases[] = {
      {2, {}, 0, "/x/in0.csv", "/x/out0.csv", false}, {2, {}, 3, "/x/in3.csv", "/x/out3.csv", false},
      {2, 1, 2, "/x/in2.csv", "/x/out2.csv", false},  {1, 2, 5, "/x/in.csv", "/x/out.csv", false},
      {1, -1, 0, "/x/in.csv", "/x/out.csv", false},   {-1, 1, 4, "/x/in.csv", "/x/out.csv", true},
      {0, {}, 4, "/x/in.csv", "/x/out.csv", false},   {3, {}, 4, "/x/in.csv", "/x/out.csv", false},
      {-2, {}, 4, "/x/in.csv", "/x/out.csv", false},
  };
  for (const auto& [mode, setLater, step, in, out, automatic] : cases)
  {
    SCOPED_TRACE(testing::Message() << mode << " then " << setLater.value_or(mode) << ", +" << step);
    Interface exchange("/x", static_cast<CSVFileMode>(mode));
    if (setLater)
      exchange.setFileMode(static_cast<CSVFileMode>(*setLater));
    exchange.increaseSequentialFileCounter(step);
    EXPECT_EQ(exchange.getFileMode(), static_cast<CSVFileMode>(setLater.value_or(mode)));
    EXPECT_EQ(exchange.isAutoFileMode(), automatic);
    EXPECT_EQ(exchange.getInFile(), in);
    EXPECT_EQ(exchange.getOutFile(), out);
  }
  EXPECT_EQ(Interface().getFileMode(), CSVFileMode::Fixed);

  Interface sequential("/x", CSVFileMode::Sequential);
  for (std::size_t step : {3, 1, 0})
    sequential.increaseSequentialFileCounter(step);
  EXPECT_EQ(sequential.getInFile(), "/x/in4.csv");
  sequential.resetSequentialFileCounter();
  EXPECT_EQ(sequential.getInFile(), "/x/in0.csv");
  EXPECT_EQ(sequential.getOutFile(), "/x/out0.csv");
}

TEST(InterfaceCSVCommonSolver, TheEnvironmentOverridesTheDirectory)
{
  using SolverInterface = Exposed<Ombrix::InterfaceCSVCommonSolver>;
  const char* const variable = "ZQ_KORVANOMBRIXDIRECTORY";
  const std::pair<std::optional<std::string>, const char*> cases[] = {
      {"/from/env/", "/from/env"}, {"", ""}, {std::nullopt, "/from/argument"}};
  for (const auto& [value, directory] : cases)
  {
    SCOPED_TRACE(value.value_or("unset"));
    if (value)
      ::setenv(variable, value->c_str(), 1);
    else
      ::unsetenv(variable);
    SolverInterface exchange("/from/argument/", CSVFileMode::Sequential);
    EXPECT_EQ(exchange.getOmbrixPath(), directory);
    EXPECT_EQ(exchange.getInFile(), directory + std::string("/in0.csv"));
  }
  EXPECT_EQ(SolverInterface().getOmbrixPath(), "");
  // The variable is left unset: no other test of this program reads it.
  EXPECT_TRUE(SolverInterface("", CSVFileMode::Automatic).isAutoFileMode());
}
