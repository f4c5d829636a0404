#include "ombrix/model/EntityID.h"

#include "ombrix/model/ValueText.h"

#include <climits>
#include <ctime>
#include <mutex>
#include <random>

namespace Ombrix::Model
{
namespace
{

struct IdGenerator
{
  IdGenerator() : engine(std::random_device{}()), distribution(0, 2147483647), counter(distribution(engine))
  {
  }
  std::mt19937 engine;
  std::uniform_int_distribution<int> distribution;
  int counter;
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
  IdGenerator& g = generator();
  m_id[0] = g.counter;
  // The counter wraps to 0 past INT_MAX; computed unsigned so that the wrap is defined behaviour.
  const unsigned next = static_cast<unsigned>(g.counter) + 1u;
  g.counter = next > static_cast<unsigned>(INT_MAX) ? 0 : static_cast<int>(next);
  m_id[1] = static_cast<int>(static_cast<std::uint32_t>(std::clock()));
}

std::string toString(const EntityID& id)
{
  return std::to_string(id[0]) + "-" + std::to_string(id[1]);
}

} // namespace Ombrix::Model
