// FrameCheck: whether a CSV exchange file has a complete frame (header, content, footer), checked by
// the library's own frame reader without interpreting the content.
#pragma once

#include "ombrix/csv/CSVFileParserBase.h"

#include <string>

namespace Ombrix::Tools
{

class FrameCheck : public CSVFileParserBase
{
public:
  // "" when the frame is complete, otherwise the reader's message ("Missing FileFooter", a NUL byte, ...).
  static std::string problem(const std::string& path);

protected:
  std::pair<RowIterator, bool> readData(RowIterator, RowIterator last) override { return {last, true}; }
  void writeData(RowInserter) const override {}
};

} // namespace Ombrix::Tools
