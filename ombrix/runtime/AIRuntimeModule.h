// The base of the modules that the AI runtime builds from definitions. It binds a numeric model (rows
// of input values in, rows of output values out) to the attributes of functors: it checks a functor's
// references when the functor is initialised, reads the inputs' values at its input chronology and
// writes the results as internal writes (no access check, nothing logged) at its output chronology,
// both Current unless set otherwise. Problems of one entity come back as entity errors; many functors
// run as one batch of rows through run(). One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/model/AttributeReference.h"
#include "ombrix/model/EntityError.h"
#include "ombrix/platform/AIModule.h"
#include "ombrix/platform/ModuleType.h"
#include "ombrix/sdk/Chronology.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API AIRuntimeModule : public AISystem::AIModule
{
public:
  using Chronology = KorvanSDK::Chronology;

  // One functor's part in a run.
  struct Call
  {
    const std::string* name = nullptr;
    const Model::Attribute* owner = nullptr; // the functor's owner entity, or null
    const References* inputs = nullptr;
    References* outputs = nullptr;
  };

  // An entity error and the position, in the calls of a run, of the call it concerns.
  struct CallError
  {
    std::size_t call = 0;
    Model::EntityError error;
  };

  AIRuntimeModule(const AIRuntimeModule&) = delete;
  AIRuntimeModule& operator=(const AIRuntimeModule&) = delete;
  ~AIRuntimeModule() override;

  AISystem::ModuleType getType() const { return m_type; }
  // The identifier of the definition the module was built from, once its collection has set it.
  const std::optional<std::size_t>& getDefinitionId() const { return m_definitionId; }
  void setDefinitionId(const std::optional<std::size_t>& id) { m_definitionId = id; }
  // "module 3 (NeuralNetwork)", or "NeuralNetwork module" without identifier: how messages name it.
  std::string describe() const;

  Chronology getInputChronology() const { return m_inputChronology; }
  Chronology getOutputChronology() const { return m_outputChronology; }
  void setChronologies(Chronology input, Chronology output);

  // Does nothing but what the module type needs (the flag is not used); an UnavailableModule throws
  // here why it cannot run.
  void initialise(bool flag) override;
  // Runs one functor: see run(). Throws std::runtime_error when the model itself fails.
  std::vector<Model::EntityError> execute(const std::string& name, Model::Entity* owner,
                                          const References& inputs, References& outputs) override;
  void terminate() override;
  // Throws std::invalid_argument, naming this module and what it expected against what it found,
  // when the number of inputs does not suit the module, the number of outputs is not the number the
  // module gives for them, a reference is unresolved, or an attribute's kind does not suit (numeric
  // modules read Int, Bool, Float and Double inputs and write Int, Float and Double outputs; shortcuts
  // count as the kind they stand for).
  void checkReferences(const std::string& name, Model::Entity* owner, const References& inputs,
                       const References& outputs) override;

  // Runs `calls` (each checked by checkReferences) together: the inputs of all calls become the rows of
  // one evaluation of the model, whose rows are written back to each call's outputs, so that the results
  // are those of running the calls one at a time. A problem of one call is appended to `errors`, tagged
  // with the call's position: an input that cannot be read (its entity's error; the call's outputs are
  // then left alone), a result that is not finite or does not fit its output (the output's entity's
  // error, with the model's text as AIModelError; that output is left alone), or an output that cannot
  // be written. Throws std::runtime_error when the model fails as a whole.
  void run(std::span<const Call> calls, std::vector<CallError>& errors);

  // The numeric face, also used by a module that wraps another.
  // The number of values per row that the module gives for `inputs` values per row. Throws
  // std::invalid_argument ("expects 4 inputs, the functor has 3") when it cannot take that many.
  std::size_t outputCount(std::size_t inputs) { return do_outputCount(inputs); }
  // Evaluates `rows` rows of `inputs` values (row-major) into `rows` rows of outputCount(inputs)
  // values. Throws std::runtime_error when the model fails.
  void compute(const double* in, std::size_t rows, std::size_t inputs, double* out)
  {
    do_compute(in, rows, inputs, out);
  }

protected:
  explicit AIRuntimeModule(AISystem::ModuleType type);

  virtual std::size_t do_outputCount(std::size_t inputs) = 0;
  virtual void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) = 0;
  virtual void do_initialise() {}
  // Throws std::invalid_argument ("input 2 (1-1:Name) is a String attribute, expected ...") when a
  // resolved reference's kind does not suit the module; the default wants numbers.
  virtual void do_checkKinds(const References& inputs, const References& outputs) const;
  // Moves the calls' values through the model; the default goes through compute().
  virtual void do_run(std::span<const Call> calls, std::vector<CallError>& errors);

  // "input 2 (1-1:Results.Name)": how messages name a reference.
  static std::string place(const char* side, std::size_t index,
                           const Model::AttributeReference<Model::Attribute>& reference);
  // The entity an error about `reference` is filed under: the one holding the attribute, else the
  // call's owner, else 0-0.
  static Model::EntityID entityOf(const Model::AttributeReference<Model::Attribute>& reference,
                                  const Call& call);

private:
  void runGroup(std::span<const Call> calls, std::span<const std::size_t> group, std::size_t inputs,
                std::vector<CallError>& errors);

  AISystem::ModuleType m_type;
  std::optional<std::size_t> m_definitionId;
  Chronology m_inputChronology = Chronology::Current;
  Chronology m_outputChronology = Chronology::Current;
  // Storage kept between runs, so that a run allocates nothing once the sizes are known.
  std::vector<double> m_in;
  std::vector<double> m_out;
  std::vector<std::size_t> m_rowCall;
  std::vector<std::size_t> m_group;
};

} // namespace Ombrix
