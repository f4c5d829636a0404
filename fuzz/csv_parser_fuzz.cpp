// The CSV splitter: any text either splits or is refused with std::runtime_error, and with quoting the
// rows it gives write to a text that splits to the same rows.
#include "ombrix/platform/CSVParser.h"

#include "FuzzSupport.h"

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view text = OmbrixFuzz::asText(data, size);
  if (text.empty())
    return 0;
  // First byte: separator, trimming, empty-row skipping, quoting and CR handling.
  const auto flags = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  static constexpr char separators[] = {',', ';', '\t', '|'};
  const char separator = separators[flags & 3];
  const bool trim = flags & 4, skipEmpty = flags & 8, quoting = !(flags & 16), acceptCRLF = flags & 32;

  FileSystem::CSVParser parser(separator, trim, skipEmpty, '\n', quoting);
  try
  {
    parser.parseText(text, false, false, acceptCRLF);
  }
  catch (const std::runtime_error&)
  {
    return 0;
  }
  if (!quoting)
    return 0;
  const FileSystem::CSVParser::Table rows = parser.rows();
  FileSystem::CSVParser again(separator, trim, skipEmpty, '\n', quoting);
  try
  {
    again.parseText(parser.toText(), false, false, acceptCRLF);
  }
  catch (const std::runtime_error& error)
  {
    OmbrixFuzz::fail(std::string("written rows do not split again: ") + error.what());
  }
  if (again.rows() != rows)
    OmbrixFuzz::fail("written rows split to other rows");
  return 0;
}
