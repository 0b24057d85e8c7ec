#pragma once

#include "base/dyn_string.h"

namespace korvalin {

// Replaces the character entities of caption text and trims its ends: a few named Latin
// entities become their Windows-1252 bytes, "&#n;" becomes byte n below 256 and the system
// code page's character for n below 65536 (nothing otherwise), and "&amp;" becomes "&" last.
// Every other entity stays as written.
DynString DecodeEntities(const char* source);

}  // namespace korvalin
