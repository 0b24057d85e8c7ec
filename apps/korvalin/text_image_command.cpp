#include "korvalin/commands.h"

namespace korvalin::cli {

int RunTextImageCommand(Args) { return Fail("this command is not available yet"); }

}  // namespace korvalin::cli
