#include "ombrix/exchange/InFileReader.h"

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/ExchangeClock.h"
#include "ombrix/log/LogSection.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace Ombrix
{

InFileReader::InFileReader(ReadFailureHandling handling, int tryAttempts, int retryPause)
    : m_handling(handling), m_tryAttempts(tryAttempts), m_retryPause(std::max(0, retryPause))
{
}

InFileReader::InFileReader(const CSVEventHandlerOptions& options)
    : InFileReader(options.readFailureHandling, options.inFileTryAttempts)
{
}

int InFileReader::getAttempts() const
{
  return m_handling == ReadFailureHandling::Retry ? std::max(1, m_tryAttempts) : 1;
}

bool InFileReader::read(CSVDataFileParser& parser, const std::string& path) const
{
  parser.setFatalErrors(isFatal(m_handling));
  const LogSection log("Exchange : " + path);
  const int attempts = getAttempts();
  for (int attempt = 1;; ++attempt)
  {
    try
    {
      std::error_code error;
      const auto status = std::filesystem::status(path, error);
      if (!std::filesystem::exists(status))
        throw std::runtime_error("Missing incoming file " + path);
      // The parser would only see a file it cannot read, and report it as missing.
      if (std::filesystem::is_directory(status))
        throw std::runtime_error("Incoming file " + path + " is a directory, not a data file");
      if (!std::filesystem::is_regular_file(status))
        throw std::runtime_error("Incoming file " + path + " is not a regular file");
      return parser.parseFile(path);
    }
    catch (const std::exception& error)
    {
      if (m_handling == ReadFailureHandling::LogAndContinue)
      {
        log.addToLog(LogLevel::Error, "%s", error.what());
        return false;
      }
      if (attempt >= attempts)
        throw;
      log.addToLog(LogLevel::Warning, "Attempt %d of %d failed, reading again: %s", attempt, attempts,
                   error.what());
    }
    ExchangeClock::sleep(std::chrono::milliseconds(m_retryPause));
  }
}

} // namespace Ombrix
