#include "korvalin/commands.h"

namespace korvalin::cli {

int RunSubsCommand(Args) { return Fail("this command is not available yet"); }

}  // namespace korvalin::cli
