// The data file, applied to a model with every attribute kind: any text is applied or refused with an
// exception, and the values it leaves write a file that, applied to a fresh model, writes the same file.
// First byte: full entity names (bit 0), ignoring unknown rows (bit 1), the value columns (at least one).
#include "ombrix/csv/CSVDataFileParser.h"

#include "FuzzSupport.h"

namespace
{

Ombrix::CSVDataFileParser::ChronologySet chronologies(unsigned flags)
{
  auto set = OmbrixFuzz::chronologiesOf(flags);
  if (set.empty())
    set.insert(KorvanSDK::Chronology::Current);
  return set;
}

struct Side
{
  static constexpr const char* file = "data file";
  Ombrix::Model::EntityCollection model;
  Ombrix::CSVDataFileParser parser;

  Side(unsigned flags, bool fatal) : parser(model, chronologies(flags))
  {
    OmbrixFuzz::buildModel(model);
    parser.setUseFullEntityNames(flags & 1);
    parser.setIgnoreNonExisting(flags & 2);
    parser.setKorvanSDK(true);
    parser.setFatalErrors(fatal);
  }
  bool read(std::string_view text) { return parser.parseData(OmbrixFuzz::csvRows(text)); }
  std::string write() const { return OmbrixFuzz::csvText(parser.generateData()); }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view text = OmbrixFuzz::asText(data, size);
  if (!text.empty())
  {
    const unsigned flags = OmbrixFuzz::takeFlags(text);
    OmbrixFuzz::csvRoundTrip<Side>(text, flags, false);
  }
  return 0;
}
