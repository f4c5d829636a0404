#include "ombrix/ai/AIModuleDefinition.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <gtest/gtest.h>

namespace
{

using AISystem::ModuleType;
using Ombrix::AIModuleDefinition;

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

TEST(AIModuleDefinition, BinaryLayoutWithoutIdentifier)
{
  FileSystem::DataOStream out;
  out << AIModuleDefinition(ModuleType::TorchScript, {0xAB, 0x00});

  FileSystem::DataOStream expected;
  expected.beginSection("AIModuleDefinition");
  expected << false << std::int32_t(16) << std::uint64_t(2) << std::uint8_t(0xAB) << std::uint8_t(0x00);
  expected.endSection();
  EXPECT_EQ(out.data(), expected.data());
}

TEST(AIModuleDefinition, BinaryLayoutWithIdentifier)
{
  AIModuleDefinition definition(ModuleType::Python, {7});
  definition.assignId(9);
  FileSystem::DataOStream out;
  out << definition;

  FileSystem::DataOStream expected;
  expected.beginSection("AIModuleDefinition");
  expected << true << std::uint64_t(9) << std::int32_t(48) << std::uint64_t(1) << std::uint8_t(7);
  expected.endSection();
  EXPECT_EQ(out.data(), expected.data());
}

TEST(AIModuleDefinition, StreamRoundTrip)
{
  AIModuleDefinition withId(ModuleType::Transformed, {0, 255, 128});
  withId.assignId(0);
  const AIModuleDefinition cases[] = {AIModuleDefinition(), withId, AIModuleDefinition(ModuleType::ONNX, {})};
  for (const auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    for (const auto& original : cases)
    {
      FileSystem::DataOStream out(kind);
      out << original;
      AIModuleDefinition read(ModuleType::Trivial, {9, 9, 9, 9});
      read.assignId(77);
      FileSystem::DataIStream in(out.data(), kind);
      in >> read;
      ASSERT_TRUE(in.good());
      EXPECT_EQ(read, original);
      EXPECT_EQ(read.getId(), original.getId());
    }
  }
}

TEST(AIModuleDefinition, StreamEndingInsideTheBytesKeepsWhatWasRead)
{
  // In the text kind the remaining data can hold the count while the third byte is missing.
  const auto text = FileSystem::DataStreamKind::Text;
  FileSystem::DataOStream out(text);
  out.beginSection("AIModuleDefinition");
  out << false << std::int32_t(32) << std::uint64_t(3) << std::uint8_t(5) << std::uint8_t(6);

  AIModuleDefinition read;
  FileSystem::DataIStream in(out.data(), text);
  in >> read;
  EXPECT_FALSE(in.good());
  EXPECT_EQ(read.getType(), ModuleType::ONNX);
  EXPECT_EQ(read.getData(), (Utilities::bytearray{5, 6, 0}));
}

TEST(AIModuleDefinition, CountBeyondTheRestOfTheStreamKeepsTheBytesRead)
{
  for (const std::uint64_t count : {std::uint64_t(3), std::uint64_t(1) << 60})
  {
    SCOPED_TRACE(count);
    FileSystem::DataOStream out;
    out.beginSection("AIModuleDefinition");
    out << false << std::int32_t(32) << count << std::uint8_t(5) << std::uint8_t(6);

    AIModuleDefinition read(ModuleType::Python, {1, 2, 3});
    FileSystem::DataIStream in(out.data());
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(read.getType(), ModuleType::ONNX);
    EXPECT_EQ(read.getData(), (Utilities::bytearray{5, 6}));
  }
}

TEST(AIModuleDefinition, StreamFailingBeforeTheBytesEmptiesTheData)
{
  FileSystem::DataOStream out;
  out.beginSection("AIModuleDefinition");
  out << false << std::int32_t(1);

  AIModuleDefinition read(ModuleType::Python, {1, 2});
  FileSystem::DataIStream in(out.data());
  in >> read;
  EXPECT_FALSE(in.good());
  EXPECT_EQ(read.getType(), ModuleType::Trivial);
  EXPECT_TRUE(read.getData().empty());
}

} // namespace
