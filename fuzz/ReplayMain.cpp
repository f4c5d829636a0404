// Runs a fuzz target over saved inputs without libFuzzer, so that every build's tests replay the corpus:
// `<target>_replay DIR|FILE...` feeds each file (directories in name order) to LLVMFuzzerTestOneInput.
// A crash or a broken property aborts, as under the fuzzer; no input at all is an error, so that a
// missing corpus cannot pass unnoticed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  for (int i = 1; i < argc; ++i)
  {
    const fs::path argument(argv[i]);
    if (fs::is_regular_file(argument))
      files.push_back(argument);
    else if (!fs::is_directory(argument))
    {
      std::fprintf(stderr, "no such corpus: %s\n", argv[i]);
      return 2;
    }
    else
    {
      const auto first = files.size();
      for (const auto& entry : fs::directory_iterator(argument))
        if (entry.is_regular_file())
          files.push_back(entry.path());
      std::sort(files.begin() + static_cast<std::ptrdiff_t>(first), files.end());
    }
  }
  for (const auto& file : files)
  {
    std::ifstream in(file, std::ios::binary);
    if (!in)
    {
      std::fprintf(stderr, "cannot read %s\n", file.c_str());
      return 2;
    }
    // A copy in its own allocation, so that AddressSanitizer sees a read past the input's end.
    const std::vector<std::uint8_t> input((std::istreambuf_iterator<char>(in)),
                                          std::istreambuf_iterator<char>());
    // Named first, so that a crash's report says which input caused it.
    std::fprintf(stderr, "%s\n", file.c_str());
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  if (files.empty())
  {
    std::fprintf(stderr, "no input to replay\n");
    return 2;
  }
  std::printf("replayed %zu inputs\n", files.size());
  return 0;
}
