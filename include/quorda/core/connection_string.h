#pragma once

#include "quorda/export.h"

#include <string>
#include <string_view>

namespace quorda {

// The connection string with the value of every password attribute (PWD, Password; keys compared
// case-insensitively, braced values with "}}" escapes included) replaced by "****", for anything that
// shows or logs a connection string. Empty passwords stay empty.
QUORDA_API std::string MaskConnectionPassword(std::string_view Text);

} // namespace quorda
