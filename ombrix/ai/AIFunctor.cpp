#include "ombrix/ai/AIFunctor.h"

#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix
{

AIFunctor::AIFunctor(const std::string& name, Model::Entity* owner, const References& inputs,
                     const References& outputs, AIModuleDefinition* definition)
    : m_owner(owner), m_name(name), m_inputs(inputs), m_outputs(outputs), m_model(definition)
{
}

AIFunctor::~AIFunctor() = default;

namespace
{

// Runs a call into the module; what it throws comes back as "Error in AI Model : <name> - <what>".
template <typename Call> decltype(auto) callModule(const std::string& name, Call&& call)
{
  try
  {
    return call();
  }
  catch (const std::exception& error)
  {
    throw std::runtime_error("Error in AI Model : " + name + " - " + error.what());
  }
  catch (...)
  {
    throw std::runtime_error("Error in AI Model : " + name + " - Unknown Error");
  }
}

} // namespace

void AIFunctor::initialize(AISystem::AIModuleCollection& modules, Model::EntityCollection& entities,
                           bool moduleFlag, bool outputsOnly)
{
  if (m_initialized)
    return;
  m_owner.reattach(entities);
  if (!outputsOnly)
  {
    m_model.reattach(modules);
    if (m_model)
    {
      try
      {
        callModule(m_name, [&] { m_model->initialise(moduleFlag); });
      }
      catch (...)
      {
        m_model.clear();
        throw;
      }
    }
    for (auto& input : m_inputs)
      input.reattach(entities);
  }
  for (auto& output : m_outputs)
    output.reattach(entities);
  if (!outputsOnly && m_model)
  {
    try
    {
      callModule(m_name, [&] { m_model->checkReferences(m_name, owner(), m_inputs, m_outputs); });
    }
    catch (...)
    {
      // The module was initialised for this functor: give it back before refusing.
      m_model->terminate();
      m_model.clear();
      throw;
    }
  }
  m_initialized = true;
}

Model::Entity* AIFunctor::owner()
{
  return dynamic_cast<Model::Entity*>(m_owner.get());
}

std::vector<Model::EntityError> AIFunctor::execute()
{
  return execute(m_inputs, m_outputs);
}

std::vector<Model::EntityError> AIFunctor::execute(const References& inputs, References& outputs)
{
  if (!m_model)
    throw std::runtime_error("Error in AI Model : " + m_name + " No Model");
  return callModule(m_name, [&] { return m_model->execute(m_name, owner(), inputs, outputs); });
}

void AIFunctor::terminate()
{
  if (!m_initialized)
    return;
  m_initialized = false;
  if (m_model)
    m_model->terminate();
  m_model.clear();
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AIFunctor& functor)
{
  out.beginSection("AIFunctor");
  out.key("Name");
  out << functor.getName();
  out.key("Owner");
  out << functor.getOwner();
  out.beginSection("Inputs");
  out << functor.getInputs();
  out.endSection();
  out.beginSection("Ouptuts");
  out << functor.getOutputs();
  out.endSection();
  out.beginSection("Model");
  out << functor.getModel();
  out.endSection();
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIFunctor& functor)
{
  AIFunctor read;
  in.beginSection("AIFunctor");
  in.key("Name");
  in >> read.m_name;
  in.key("Owner");
  in >> read.m_owner;
  in.beginSection("Inputs");
  in >> read.m_inputs;
  in.endSection();
  in.beginSection("Ouptuts");
  in >> read.m_outputs;
  in.endSection();
  in.beginSection("Model");
  in >> read.m_model;
  in.endSection();
  in.endSection();
  if (in)
    functor = std::move(read);
  return in;
}

} // namespace Ombrix
