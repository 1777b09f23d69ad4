// Stored-procedure calls of an entity.
#include "quorda/entity/entity.h"

namespace quorda {

// Procedure calls bind their arguments through the command layer (parameters from the fields, the
// query helpers); until that layer is part of the entity, a named close procedure is reported
// rather than silently skipped.
int TEntity::RunCloseProcedure() {
    EntityError(
        FormatMessage("Can not run procedure %s: procedure calls are not available", GetSP(fetClose)));
}

} // namespace quorda
