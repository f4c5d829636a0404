// Writes the seed corpus of neural_network_fuzz into the directory given as the only argument: small
// networks of every activation, and a Transformed definition that wraps one.
#include "ombrix/runtime/NeuralNetworkFormat.h"
#include "ombrix/runtime/TransformedFormat.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

bool save(const std::string& path, const Utilities::bytearray& bytes)
{
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}

} // namespace

int main(int argc, char** argv)
{
  if (argc != 2)
  {
    std::fprintf(stderr, "usage: neural_network_seeds <corpus directory>\n");
    return 2;
  }
  using Ombrix::Activation;
  using Ombrix::DenseLayer;
  const std::string directory = argv[1];
  std::filesystem::create_directories(directory);
  const Ombrix::DenseNetwork single({DenseLayer{1, 1, Activation::Identity, {2.0}, {0.5}}});
  const Ombrix::DenseNetwork layered(
      {DenseLayer{2, 3, Activation::Relu, {1, -1, 0.5, 2, -0.25, 0}, {0, 1, -1}},
       DenseLayer{3, 2, Activation::Tanh, {1, 2, 3, -1, -2, -3}, {0.1, -0.1}},
       DenseLayer{2, 1, Activation::Sigmoid, {0.5, 0.5}, {0}}});
  Ombrix::TransformedFormat::Content transformed;
  transformed.inputs = {Ombrix::Transformation(Ombrix::TransformationType::MeanStdDevScaling, {300, 20}),
                        Ombrix::Transformation(Ombrix::TransformationType::Curve, {0, 0, 1, 2, 3, 5})};
  transformed.outputs = {Ombrix::Transformation(Ombrix::TransformationType::SimpleScaling, {0.001, 0})};
  transformed.innerType = AISystem::ModuleType::NeuralNetwork;
  transformed.innerData = Ombrix::NeuralNetworkFormat::write(layered);
  const bool written = save(directory + "/single.bin", Ombrix::NeuralNetworkFormat::write(single)) &&
                       save(directory + "/layered.bin", transformed.innerData) &&
                       save(directory + "/transformed.bin", Ombrix::TransformedFormat::write(transformed));
  if (!written)
  {
    std::fprintf(stderr, "neural_network_seeds: cannot write into %s\n", directory.c_str());
    return 1;
  }
  return 0;
}
