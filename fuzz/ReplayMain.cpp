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
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

bool replay(const std::filesystem::path& file)
{
  std::ifstream in(file, std::ios::binary);
  if (!in)
  {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    return false;
  }
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  // A copy in its own allocation, so that AddressSanitizer sees a read past the input's end.
  std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  // Named first, so that a crash's report says which input caused it.
  std::fprintf(stderr, "%s\n", file.c_str());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

} // namespace

int main(int argc, char** argv)
{
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i)
  {
    const std::filesystem::path argument(argv[i]);
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(argument))
    {
      for (const auto& entry : std::filesystem::directory_iterator(argument))
        if (entry.is_regular_file())
          files.push_back(entry.path());
      std::sort(files.begin(), files.end());
    }
    else if (std::filesystem::is_regular_file(argument))
      files.push_back(argument);
    else
    {
      std::fprintf(stderr, "no such corpus: %s\n", argv[i]);
      return 2;
    }
    for (const auto& file : files)
    {
      if (!replay(file))
        return 2;
      ++count;
    }
  }
  if (count == 0)
  {
    std::fprintf(stderr, "no input to replay\n");
    return 2;
  }
  std::printf("replayed %zu inputs\n", count);
  return 0;
}
