#include "ombrix/runtime/TransformedFormat.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::Transformation;
using Ombrix::TransformationType;
using Ombrix::TransformedFormat;
using Bytes = Utilities::bytearray;

TransformedFormat::Content sample()
{
  return {{Transformation(TransformationType::MeanStdDevScaling, {300.0, 20.0}), Transformation()},
          {Transformation(TransformationType::Curve, {0.0, 1.0, 1.0, 3.0})},
          AISystem::ModuleType::Trivial,
          {}};
}

TEST(TransformedFormat, WritesTheDocumentedLayoutAndReadsItBack)
{
  TransformedFormat::Content content;
  content.innerType = AISystem::ModuleType::NeuralNetwork;
  content.innerData = {7, 8};
  content.outputs = {Transformation(TransformationType::Inverse, {})};
  EXPECT_EQ(TransformedFormat::write(content),
            (Bytes{'O',  'M', 'T', 'R', 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFF,
                   0xFF, 0,   0,   0,   0, 3, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0,    7,    8}));
  for (const auto& original : {content, sample()})
    EXPECT_EQ(TransformedFormat::read(TransformedFormat::write(original)), original);
}

TEST(TransformedFormat, RefusesMalformedDataWithItsReason)
{
  const Bytes good = TransformedFormat::write(sample());
  Bytes badType = good;
  badType[12] = 9; // the first input transformation's type
  Bytes badInner = good;
  badInner[badInner.size() - 8] = 1; // an inner size of 1 with no byte left
  const std::pair<Bytes, const char*> cases[] = {
      {{'O', 'M', 'N', 'N'}, "Transformed data: does not start with the signature \"OMTR\""},
      {Bytes(good.begin(), good.begin() + 6),
       "Transformed data: ends at byte 6 in the version (4 bytes needed from byte 4)"},
      {badType,
       "Transformed data: input transformation 0: transformation type 9 has no name (Inverse -1, Identity 1, "
       "Curve 2, PowerLaw 3, SimpleScaling 4, MeanStdDevScaling 5)"},
      {badInner,
       "Transformed data: ends at byte 100 in the inner module's data (1 bytes needed from byte 100)"},
  };
  for (const auto& [bytes, message] : cases)
    EXPECT_THROW_MSG(TransformedFormat::read(bytes), std::invalid_argument, message);
  for (std::size_t size = 0; size < good.size(); ++size)
    EXPECT_THROW(TransformedFormat::read(std::span(good.data(), size)), std::invalid_argument) << size;
}

} // namespace
