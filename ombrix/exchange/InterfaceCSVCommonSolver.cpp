#include "ombrix/exchange/InterfaceCSVCommonSolver.h"

#include "ombrix/platform/SystemEnvironmentVariables.h"

namespace Ombrix
{

InterfaceCSVCommonSolver::InterfaceCSVCommonSolver(const std::string& directory, CSVFileMode mode)
    : InterfaceCSVCommon(
          FileSystem::SystemEnvironmentVariables::instance().get("ZQ_KORVANOMBRIXDIRECTORY", directory), mode)
{
}

} // namespace Ombrix
