// InterfaceCSVCommonSolver: InterfaceCSVCommon as the solver builds it, whose exchange directory the
// environment variable "ZQ_KORVANOMBRIXDIRECTORY" overrides. One thread at a time, like its base.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"

namespace Ombrix
{

class OMBRIX_API InterfaceCSVCommonSolver : public InterfaceCSVCommon
{
public:
  // The directory is the value of "ZQ_KORVANOMBRIXDIRECTORY" when that variable is set (even to ""),
  // otherwise `directory`; kept without its trailing slash. Mode, counter and flag as for the base.
  explicit InterfaceCSVCommonSolver(const std::string& directory = "", CSVFileMode mode = CSVFileMode::Fixed);
};

} // namespace Ombrix
