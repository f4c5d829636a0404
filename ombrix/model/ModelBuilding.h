// ModelBuilding: shorthand for building a model in code: value attributes created with the composites
// on their path, and the solution-control entity with every quantity of its definition. One thread at a
// time, as the model itself.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/AttributePath.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/model/SolutionControlDefinition.h"
#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"

#include <memory>
#include <string>

namespace Ombrix::Model
{

// Creates the attribute of `kind` at `path` below `parent`, and the composites leading to it that do not
// exist yet (access ReadOnly, so that only the leaf's access governs writes); sets `unit` when it is not
// empty. Throws std::invalid_argument naming the path when it is empty, when an attribute of that name
// already ends it, or when a segment on the way is not a composite.
OMBRIX_API Attribute& addAttributeAt(CompositeAttribute& parent, const AttributePath& path,
                                     KorvanSDK::AttributeType kind, KorvanSDK::AccessType access,
                                     const std::string& unit = "");

// A solution-control entity for `definition`: its type and name, and one attribute at each path of the
// definition, valued at Initial: iteration 0 and the two numbers of iterations 0 (Int); time, time step
// and total simulation time 0 with unit "s" (Double); every flag false (Bool), but is-first-iteration and
// is-first-time-step true. All ReadOnly (the solver's to set), except stop-on-convergence, ReadWrite: the
// client may ask for it. The entity gets `id` (stable across runs, as the data files name entities by
// ID). Throws what addAttributeAt throws when two paths of the definition collide.
OMBRIX_API std::unique_ptr<Entity> makeSolutionControlEntity(const SolutionControlDefinition& definition,
                                                             const EntityID& id = EntityID(1, 1));

} // namespace Ombrix::Model
