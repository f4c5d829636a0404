#include "ombrix/ai/AIModuleDefinitionCollection.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <algorithm>

namespace Ombrix
{

AIModuleDefinitionCollection::AIModuleDefinitionCollection(const AIModuleDefinitionCollection& other)
    : m_nextId(other.m_nextId)
{
  m_definitions.reserve(other.m_definitions.size());
  for (const auto& definition : other.m_definitions)
    m_definitions.push_back(definition ? std::make_unique<AIModuleDefinition>(*definition) : nullptr);
}

AIModuleDefinitionCollection&
AIModuleDefinitionCollection::operator=(const AIModuleDefinitionCollection& other)
{
  if (this != &other)
  {
    AIModuleDefinitionCollection copy(other);
    *this = std::move(copy);
  }
  return *this;
}

AIModuleDefinitionCollection::~AIModuleDefinitionCollection() = default;

std::pair<AIModuleDefinition*, bool>
AIModuleDefinitionCollection::insertDefinition(std::unique_ptr<AIModuleDefinition>&& definition)
{
  if (!definition)
    return {nullptr, false};
  auto found = std::find_if(m_definitions.begin(), m_definitions.end(),
                            [&](const auto& stored) { return stored && *stored == *definition; });
  if (found != m_definitions.end())
    return {found->get(), false};
  definition->assignId(static_cast<std::size_t>(m_nextId));
  ++m_nextId;
  m_definitions.push_back(std::move(definition));
  return {m_definitions.back().get(), true};
}

AIModuleDefinition* AIModuleDefinitionCollection::getDefinition(std::size_t id)
{
  return const_cast<AIModuleDefinition*>(std::as_const(*this).getDefinition(id));
}

const AIModuleDefinition* AIModuleDefinitionCollection::getDefinition(std::size_t id) const
{
  for (const auto& definition : m_definitions)
  {
    if (definition && definition->getId() == id)
      return definition.get();
  }
  return nullptr;
}

bool AIModuleDefinitionCollection::hasPython() const
{
  return std::any_of(m_definitions.begin(), m_definitions.end(),
                     [](const auto& definition)
                     { return definition && definition->getType() == AISystem::ModuleType::Python; });
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                    const AIModuleDefinitionCollection& collection)
{
  out.beginSection("AIModuleDefinitionCollection");
  out << static_cast<std::uint64_t>(collection.size());
  for (const auto& definition : collection)
  {
    out << static_cast<bool>(definition);
    if (definition)
      out << *definition;
  }
  out << collection.getNextId();
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIModuleDefinitionCollection& collection)
{
  in.beginSection("AIModuleDefinitionCollection");
  std::uint64_t count = 0;
  in >> count;
  // Every entry takes at least one byte of the stream, so a larger count can only be corrupt.
  if (in && count > in.remaining())
    in.setFailed();
  if (!in)
    return in;
  collection.m_definitions.clear();
  collection.m_definitions.reserve(static_cast<std::size_t>(count));
  for (std::uint64_t i = 0; i < count && in; ++i)
  {
    bool present = false;
    in >> present;
    if (!in)
      break;
    if (!present)
    {
      collection.m_definitions.push_back(nullptr);
      continue;
    }
    auto definition = std::make_unique<AIModuleDefinition>();
    in >> *definition;
    collection.m_definitions.push_back(std::move(definition));
  }
  std::uint64_t nextId = 0;
  in >> nextId;
  if (in)
    collection.m_nextId = nextId;
  in.endSection();
  return in;
}

} // namespace Ombrix
