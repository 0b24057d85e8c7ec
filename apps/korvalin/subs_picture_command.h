#pragma once

#include "korvalin/commands.h"

namespace korvalin::cli {

// korvalin subs picture FILE INDEX -o OUT.png [--lang NAME]: loads FILE as `subs dump` does
// and writes the picture of entry INDEX (counted from 0, in the order dump prints) as an
// 8-bit grey PNG with alpha: grey = the picture's luma, alpha 0 where the picture is 0 and
// 255 elsewhere. args are those after "picture".
int RunSubsPictureCommand(Args args);

}  // namespace korvalin::cli
