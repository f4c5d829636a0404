// The environment variable OMBRIX_LOG_LEVEL overrides the level a host gives initialize.
#include "ombrix/log/LogManager.h"

#include "log/LogTestSupport.h"

#include <cstdlib>

namespace
{

using Ombrix::LogLevel;
using Ombrix::LogManager;

class LogLevelEnvironmentTest : public OmbrixTest::LogFileFixture
{
protected:
  void TearDown() override
  {
    unsetenv(LogManager::levelVariable.c_str());
    LogFileFixture::TearDown();
  }
};

TEST_F(LogLevelEnvironmentTest, OverridesTheHostsLevelOrReportsABadValue)
{
  const struct
  {
    const char* value;
    LogLevel level;
  } cases[] = {{"Informational", LogLevel::Informational},
               {"2", LogLevel::Warning},
               {"None", LogLevel::None},
               {"informational", LogLevel::Error},
               {"5", LogLevel::Error}};
  for (const auto& test : cases)
  {
    SCOPED_TRACE(test.value);
    setenv(LogManager::levelVariable.c_str(), test.value, 1);
    LogManager::instance().initialize(logPath, LogLevel::Error);
    EXPECT_EQ(LogManager::instance().getLevel(), test.level);
    const std::vector<std::string> written = lines();
    ASSERT_FALSE(written.empty());
    if (test.level == LogLevel::Error)
      EXPECT_EQ(OmbrixTest::withoutStamp(written.back()),
                std::string("\tError\t\tOMBRIX_LOG_LEVEL='") + test.value +
                    "' is no log level (None, Error, Warning, Message, Informational or 0 to 4); the level "
                    "stays Error");
    else
      EXPECT_EQ(written.size(), 1u) << "only the start line";
  }
  unsetenv(LogManager::levelVariable.c_str());
  LogManager::instance().initialize(logPath, LogLevel::Message);
  EXPECT_EQ(LogManager::instance().getLevel(), LogLevel::Message);
}

} // namespace
