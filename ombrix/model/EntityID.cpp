#include "ombrix/model/EntityID.h"

#include "ombrix/model/ValueText.h"

#include <atomic>
#include <climits>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <random>

namespace Ombrix::Model
{
namespace
{

struct IdGenerator
{
  IdGenerator()
      : engine(std::random_device{}()), distribution(0, INT_MAX),
        counter(static_cast<std::uint32_t>(distribution(engine)))
  {
  }
  std::mt19937 engine;
  std::uniform_int_distribution<int> distribution;
  // Atomic, so that threads that build their own models never draw the same ID. Only the low 31 bits are
  // handed out: counting on past INT_MAX gives 0 again, which is the wrap the IDs need.
  std::atomic<std::uint32_t> counter;
};

IdGenerator& generator()
{
  static IdGenerator instance; // thread-safe one-time initialisation
  return instance;
}

// Keeps the first character (it may be a sign) and drops every later '-'.
std::string withoutInnerMinus(const std::string& text)
{
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i)
  {
    if (i == 0 || text[i] != '-')
      result += text[i];
  }
  return result;
}

} // namespace

EntityID::EntityID() : m_id{0, 0}
{
  generateNew();
}

EntityID EntityID::fromString(const std::string& text)
{
  EntityID id(0, 0);
  const std::size_t separator = text.size() > 1 ? text.find('-', 1) : std::string::npos;
  if (separator != std::string::npos)
  {
    id.m_id[0] = parseInt(withoutInnerMinus(text.substr(0, separator)));
    id.m_id[1] = parseInt(withoutInnerMinus(text.substr(separator + 1)));
  }
  else if (!text.empty())
  {
    const int n = parseInt(text);
    id.m_id = {n, n};
  }
  return id;
}

void EntityID::generateNew()
{
  m_id[0] = static_cast<int>(generator().counter.fetch_add(1, std::memory_order_relaxed) & 0x7fffffffu);
  m_id[1] = static_cast<int>(static_cast<std::uint32_t>(std::clock()));
}

std::string toString(const EntityID& id)
{
  return std::to_string(id[0]) + "-" + std::to_string(id[1]);
}

} // namespace Ombrix::Model
