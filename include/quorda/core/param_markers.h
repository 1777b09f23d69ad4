#pragma once

#include "quorda/export.h"

#include <functional>
#include <string>

namespace quorda {

class TODBCParams;

// Called once per `:name` marker, in order of appearance, with the marker's name (quotes around a
// quoted name already removed).
using TParamMarkerHandler = std::function<void(const std::string& Name)>;

// Rewrites every `:name` marker of Text into "?" in place (the text only ever gets shorter) and
// reports each name to OnMarker (which may be empty).
//
// Rules: a colon outside a quoted literal starts a marker unless another colon follows ("::" outside a
// literal collapses to one literal colon). A name ends at line feed, carriage return, blank, ")", ","
// or ";" (outside quotes) or at the end of the text; every other byte belongs to it. Single and double
// quotes toggle one shared literal flag. Outside literals, "--" line comments (up to the line feed)
// and "/* */" block comments are kept as they are: no marker, colon or quote inside them counts. The text is
// handled byte by byte and ends at its first zero byte, if any; bytes after that zero are kept but never
// examined.
QUORDA_API void ScanParamMarkers(std::string& Text, const TParamMarkerHandler& OnMarker);

// The dataset's marker scan: creates one ftUnknown parameter per marker in Params (when not null), in
// order of appearance and without a duplicate check, and rewrites Text as ScanParamMarkers does.
QUORDA_API void CreateParams(TODBCParams* Params, std::string& Text);

} // namespace quorda
