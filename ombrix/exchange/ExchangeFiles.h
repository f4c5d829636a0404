// ExchangeFiles: the full paths of every file in an exchange directory, for hosts that drive the files
// themselves (InterfaceCSVCommon keeps these getters for the classes built on it). A plain value; one
// thread at a time.
//
//   Ombrix::ExchangeFiles files(directory);
//   definition.saveAs(files.getDefFile());   // <directory>/def.csv
//   data.parseFile(files.getOutFile());      // <directory>/out.csv, or out<n>.csv in sequential mode
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/InterfaceCSVCommon.h"

namespace Ombrix
{

class OMBRIX_API ExchangeFiles final : public InterfaceCSVCommon
{
public:
  using InterfaceCSVCommon::InterfaceCSVCommon;
  // The paths of `files`, a solver's included (its directory may come from the environment).
  explicit ExchangeFiles(const InterfaceCSVCommon& files) : InterfaceCSVCommon(files) {}

  using InterfaceCSVCommon::getDefFile;
  using InterfaceCSVCommon::getFile;
  using InterfaceCSVCommon::getInAliveFile;
  using InterfaceCSVCommon::getInFile;
  using InterfaceCSVCommon::getInitFile;
  using InterfaceCSVCommon::getInStateFile;
  using InterfaceCSVCommon::getOmbrixPath;
  using InterfaceCSVCommon::getOutAliveFile;
  using InterfaceCSVCommon::getOutFile;
  using InterfaceCSVCommon::getOutStateFile;
};

} // namespace Ombrix
