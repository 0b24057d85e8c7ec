#pragma once

#include <string>

#include <gst/gst.h>

namespace korvalin::gst {

// The local file the film upstream of `sinkPad` comes from: the URI query upstream, else
// the `current-uri` of an enclosing playbin. "" when it is not a local file or nobody says.
std::string FilmFileUpstream(GstPad* sinkPad);

// The film's length in seconds as upstream tells it, 0 when unknown.
double FilmDurationUpstream(GstPad* sinkPad);

}  // namespace korvalin::gst
