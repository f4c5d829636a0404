#include "ombrix/runtime/UnavailableModule.h"

#include <stdexcept>

namespace Ombrix
{

UnavailableModule::UnavailableModule(AISystem::ModuleType type, std::string reason)
    : AIRuntimeModule(type), m_reason(std::move(reason))
{
}

void UnavailableModule::do_initialise()
{
  throw std::runtime_error(describe() + ": " + m_reason);
}

std::size_t UnavailableModule::do_outputCount(std::size_t)
{
  throw std::invalid_argument("cannot run: " + m_reason);
}

void UnavailableModule::do_compute(const double*, std::size_t, std::size_t, double*)
{
  throw std::runtime_error(describe() + ": " + m_reason);
}

} // namespace Ombrix
