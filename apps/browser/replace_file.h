#pragma once

#include <functional>
#include <string>

namespace quorda::browser {

// Writes Target through Write, which is given the name of a new file in Target's folder; only when
// Write returns does that file replace Target (one rename), so a failed write leaves Target as it
// was and no half-written file behind. A new file gets the permissions the umask allows, a replaced
// one keeps its own. Raises what Write raises, or std::filesystem::filesystem_error.
void ReplaceFile(const std::string& Target, const std::function<void(const std::string& TempName)>& Write);

} // namespace quorda::browser
