// Reads the incoming data file of an exchange (in.csv on the solver's side, the solver's out.csv on the
// client's) into a CSVDataFileParser as the exchange's read-failure handling says. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/ExchangeModes.h"

#include <string>

namespace Ombrix
{

class CSVDataFileParser;
struct CSVEventHandlerOptions;

class OMBRIX_API InFileReader
{
public:
  // `tryAttempts` counts only under Retry (at least one attempt is made); `retryPause` in milliseconds.
  explicit InFileReader(ReadFailureHandling handling, int tryAttempts = 1, int retryPause = 100);
  // Handling and attempts from the options ("ReadFailureHandling", "InFileTryAttempts").
  explicit InFileReader(const CSVEventHandlerOptions& options);

  ReadFailureHandling getHandling() const { return m_handling; }
  int getAttempts() const;

  // Sets the parser's fatal flag from the handling and reads `path` into it:
  // - LogAndContinue: one attempt; faulty rows are logged and passed over, the others applied. Returns
  //   false, without throwing, when a row failed, the frame is broken or the file is missing or not a
  //   regular file (all logged).
  // - Fail: one attempt; a missing file throws std::runtime_error "Missing incoming file <path>", a
  //   directory "Incoming file <path> is a directory, not a data file", another kind of non-regular file
  //   "Incoming file <path> is not a regular file"; a broken frame or a faulty row throws the parser's
  //   error, and then no value of the file is applied.
  // - Retry: as Fail, but a missing or failing file (one still being written, say) is read again after
  //   the pause, up to the attempts; the last attempt's error is thrown.
  // Returns true when the whole file was applied.
  bool read(CSVDataFileParser& parser, const std::string& path) const;

private:
  ReadFailureHandling m_handling;
  int m_tryAttempts;
  int m_retryPause;
};

} // namespace Ombrix
