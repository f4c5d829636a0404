#include "ombrix/runtime/TorchScriptModule.h"

#include "ombrix/runtime/AIModuleBuilder.h"
#include "ombrix/runtime/NeuralNetworkModule.h"

#include "runtime/RuntimeTestSupport.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::Activation;
using Ombrix::TorchScriptModule;

class TorchScriptModuleTest : public ::testing::Test
{
protected:
  void SetUp() override
  {
    if (TorchScriptModule::available())
      return;
    // Built without libtorch, or its plugin does not load: the type is refused with the reason.
    const std::string reason = TorchScriptModule::unavailableReason();
    EXPECT_EQ(reason.rfind("this build has no runtime for module type \"TorchScript\" (", 0), 0u) << reason;
    EXPECT_THROW_MSG(Ombrix::AIModuleBuilder::build(AISystem::ModuleType::TorchScript, {}),
                     std::invalid_argument, reason);
    GTEST_SKIP() << reason;
  }

  const Ombrix::DenseNetwork network =
      OmbrixTest::makeNetwork({4, 5, 3}, {Activation::Tanh, Activation::Sigmoid}, 3);
};

TEST_F(TorchScriptModuleTest, ComputesWhatTheSameNetworkComputes)
{
  auto module = Ombrix::AIModuleBuilder::build(AISystem::ModuleType::TorchScript,
                                               TorchScriptModule::fromNetwork(network));
  Ombrix::NeuralNetworkModule reference(network);
  EXPECT_EQ(module->outputCount(4), 3u);
  const std::size_t rows = 9;
  std::vector<double> in(rows * 4), out(rows * 3), expected(rows * 3);
  for (std::size_t i = 0; i < in.size(); ++i)
    in[i] = static_cast<double>(i % 7) - 3.0;
  module->compute(in.data(), rows, 4, out.data());
  reference.compute(in.data(), rows, 4, expected.data());
  for (std::size_t i = 0; i < out.size(); ++i)
    EXPECT_NEAR(out[i], expected[i], 1e-14) << i;
  double single[3];
  module->compute(in.data() + 4, 1, 4, single);
  for (std::size_t o = 0; o < 3; ++o)
    EXPECT_EQ(single[o], out[3 + o]);
}

TEST_F(TorchScriptModuleTest, RefusesWhatLibtorchCannotRun)
{
  EXPECT_THROW_MSG(
      TorchScriptModule(Utilities::bytearray{'n', 'o', 't'}), std::invalid_argument,
      "TorchScript data: not a TorchScript archive (the zip archive that torch.jit.save writes)");
  const auto archive = TorchScriptModule::fromNetwork(network);
  EXPECT_THROW_MSG(
      TorchScriptModule(std::span(archive.data(), archive.size() / 2)), std::invalid_argument,
      "TorchScript data: libtorch cannot load it: PytorchStreamReader failed reading zip archive: failed "
      "finding central directory");
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // A damaged archive is refused or, where only numbers changed, loaded: never a crash. (Some damage
  // makes libtorch ask for tens of gigabytes, which malloc refuses with std::bad_alloc but the
  // sanitizers' allocators treat as fatal.)
  for (std::size_t at = 4; at < archive.size(); at += 61)
  {
    auto damaged = archive;
    damaged[at] ^= 0x5A;
    try
    {
      TorchScriptModule{damaged}.outputCount(4);
    }
    catch (const std::invalid_argument&)
    {
    }
  }
#endif
  TorchScriptModule module(TorchScriptModule::fromNetwork(network));
  EXPECT_THROW_MSG(module.outputCount(3), std::invalid_argument,
                   "cannot run on 3 inputs: mat1 and mat2 shapes cannot be multiplied (1x3 and 4x5)");
}

} // namespace
