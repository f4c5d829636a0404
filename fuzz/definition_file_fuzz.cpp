// The definition file: any text is read into a collection or refused with an exception, and a model read
// from it writes a file that reads back to a model writing the same file (read, write, read, write).
// First byte: full entity names (bit 0), fatal content errors (bit 1), the value columns written back.
#include "ombrix/csv/CSVDefinitionFileParser.h"

#include "FuzzSupport.h"

namespace
{

struct Side
{
  static constexpr const char* file = "definition file";
  Ombrix::Model::EntityCollection model;
  Ombrix::CSVDefinitionFileParser parser{model};

  Side(unsigned flags, bool fatal)
  {
    parser.setUseFullEntityNames(flags & 1);
    parser.setFatalErrors(fatal || (flags & 2));
    parser.setChronologies(OmbrixFuzz::chronologiesOf(flags));
  }
  bool read(std::string_view text) { return parser.parseData(OmbrixFuzz::csvRows(text)); }
  std::string write()
  {
    // A writer of its own: the reader's state must not leak into what is written.
    Ombrix::CSVDefinitionFileParser writer(model);
    writer.setChronologies(parser.getChronologies());
    writer.setUseFullEntityNames(parser.getUseFullEntityNames());
    return OmbrixFuzz::csvText(writer.generateData());
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view text = OmbrixFuzz::asText(data, size);
  if (!text.empty())
  {
    const unsigned flags = OmbrixFuzz::takeFlags(text);
    OmbrixFuzz::csvRoundTrip<Side>(text, flags, true); // the writer refuses what the format cannot carry
  }
  return 0;
}
