#include "support/TestSupport.h"

#include <atomic>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace OmbrixTest
{

TempDir::TempDir()
{
  static std::atomic<int> counter{0};
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = "ombrix-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
  if (info)
    name += std::string("-") + info->name();
  for (char& c : name)
  {
    if (c == '/' || c == ' ')
      c = '_';
  }
  m_path = std::filesystem::temp_directory_path() / name;
  std::filesystem::remove_all(m_path);
  std::filesystem::create_directories(m_path);
}

TempDir::~TempDir()
{
  std::error_code error;
  std::filesystem::remove_all(m_path, error);
}

std::string readFile(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

void writeFile(const std::string& path, const std::string& content)
{
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

} // namespace OmbrixTest
