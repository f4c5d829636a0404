// The environment variable OMBRIX_LOG_LEVEL overrides the level a host gives initialize.
#include "log/LogTestSupport.h"

#include <cstdlib>

using Ombrix::LogLevel;
using Ombrix::LogManager;

class LogLevelEnvironment : public OmbrixTest::LogFileFixture
{
};

TEST_F(LogLevelEnvironment, LevelFromTheEnvironmentOrABadValueReported)
{
  const std::pair<const char*, LogLevel> cases[] = {{"Informational", LogLevel::Informational},
                                                    {"2", LogLevel::Warning},
                                                    {"informational", LogLevel::Error},
                                                    {"5", LogLevel::Error}};
  for (const auto& [value, level] : cases)
  {
    SCOPED_TRACE(value);
    setenv(LogManager::levelVariable.c_str(), value, 1);
    LogManager::instance().initialize(logPath, LogLevel::Error);
    unsetenv(LogManager::levelVariable.c_str());
    EXPECT_EQ(LogManager::instance().getLevel(), level);
    const std::vector<std::string> written = lines();
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(written.size() == 1 ? "" : OmbrixTest::withoutStamp(written.back()),
              level != LogLevel::Error
                  ? ""
                  : std::string("\tError\t\tOMBRIX_LOG_LEVEL='") + value +
                        "' is no log level (None, Error, Warning, Message, Informational "
                        "or 0 to 4); the level stays Error");
  }
}
