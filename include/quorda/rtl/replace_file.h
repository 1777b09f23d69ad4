#pragma once

#include "quorda/export.h"

#include <functional>
#include <string>

namespace quorda {

// Writes Target through Write, which is given the name of a new file in Target's folder; only when
// Write returns does that file replace Target (one rename), so a failed write leaves Target as it
// was and no half-written file behind. A new file gets the permissions the umask allows, a replaced
// one keeps its own. Raises what Write raises, or EInOutError ("Cannot write file ...", with the
// system's error code) when the file cannot be made or put in place.
QUORDA_API void ReplaceFile(const std::string& Target,
                            const std::function<void(const std::string& TempName)>& Write);

} // namespace quorda
