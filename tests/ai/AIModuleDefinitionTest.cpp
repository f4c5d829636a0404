#include "ombrix/ai/AIModuleDefinition.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

namespace
{

using AISystem::ModuleType;
using Ombrix::AIModuleDefinition;
using Bytes = Utilities::bytearray;

// The start of a definition's stream as written by hand: its section, identifier flag and type.
FileSystem::DataOStream begun(std::int32_t type,
                              FileSystem::DataStreamKind kind = FileSystem::DataStreamKind::Binary)
{
  FileSystem::DataOStream out(kind);
  out.beginSection("AIModuleDefinition");
  out << false << type;
  return out;
}

TEST(AIModuleDefinition, EqualityIgnoresTheIdentifier)
{
  AIModuleDefinition a(ModuleType::ONNX, {1, 2, 3});
  AIModuleDefinition b(ModuleType::ONNX, {1, 2, 3});
  b.assignId(4);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, AIModuleDefinition(ModuleType::Python, {1, 2, 3}));
  EXPECT_NE(a, AIModuleDefinition(ModuleType::ONNX, {1, 2}));
  EXPECT_NE(a, AIModuleDefinition(ModuleType::ONNX, {1, 2, 4}));
  EXPECT_FALSE(AIModuleDefinition().getId().has_value());
}

TEST(AIModuleDefinition, BinaryLayoutWithAndWithoutIdentifier)
{
  FileSystem::DataOStream expected = begun(16);
  expected << std::uint64_t(2) << std::uint8_t(0xAB) << std::uint8_t(0x00);
  expected.endSection();
  EXPECT_EQ(OmbrixTest::streamed(AIModuleDefinition(ModuleType::TorchScript, {0xAB, 0x00}),
                                 FileSystem::DataStreamKind::Binary),
            expected.data());

  AIModuleDefinition definition(ModuleType::Python, {7});
  definition.assignId(9);
  FileSystem::DataOStream withId;
  withId.beginSection("AIModuleDefinition");
  withId << true << std::uint64_t(9) << std::int32_t(48) << std::uint64_t(1) << std::uint8_t(7);
  withId.endSection();
  EXPECT_EQ(OmbrixTest::streamed(definition, FileSystem::DataStreamKind::Binary), withId.data());
}

TEST(AIModuleDefinition, StreamRoundTrip)
{
  AIModuleDefinition withId(ModuleType::Transformed, {0, 255, 128});
  withId.assignId(0);
  AIModuleDefinition target(ModuleType::Trivial, {9, 9, 9, 9});
  target.assignId(77);
  for (const auto kind : OmbrixTest::kStreamKinds)
    for (const auto& original : {AIModuleDefinition(), withId, AIModuleDefinition(ModuleType::ONNX, {})})
    {
      const AIModuleDefinition read = OmbrixTest::roundTrip(original, kind, target);
      EXPECT_EQ(read, original);
      EXPECT_EQ(read.getId(), original.getId());
    }
}

TEST(AIModuleDefinition, StreamEndingEarlyKeepsWhatWasRead)
{
  // Type ONNX (32) or 1; a count, then fewer bytes than it says. In the text kind the remaining data can
  // hold the count while the third byte is missing; a stream failing before the bytes empties the data.
  const auto text = FileSystem::DataStreamKind::Text;
  FileSystem::DataOStream textCut = begun(32, text), shortOfThree = begun(32), shortOfHuge = begun(32),
                          beforeBytes = begun(1);
  textCut << std::uint64_t(3) << std::uint8_t(5) << std::uint8_t(6);
  shortOfThree << std::uint64_t(3) << std::uint8_t(5) << std::uint8_t(6);
  shortOfHuge << (std::uint64_t(1) << 60) << std::uint8_t(5) << std::uint8_t(6);
  const std::tuple<FileSystem::DataOStream*, ModuleType, Bytes> cases[] = {
      {&textCut, ModuleType::ONNX, {5, 6, 0}},
      {&shortOfThree, ModuleType::ONNX, {5, 6}},
      {&shortOfHuge, ModuleType::ONNX, {5, 6}},
      {&beforeBytes, ModuleType::Trivial, {}},
  };
  for (const auto& [out, type, data] : cases)
  {
    SCOPED_TRACE(data.size());
    AIModuleDefinition read(ModuleType::Python, {1, 2, 3});
    FileSystem::DataIStream in(out->data(), out == &textCut ? text : FileSystem::DataStreamKind::Binary);
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(read.getType(), type);
    EXPECT_EQ(read.getData(), data);
  }
}

} // namespace
