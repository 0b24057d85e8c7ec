#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvalin::cli {

using Args = std::span<const std::string_view>;

// Exit statuses of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;  // the command ran but its result is a failure
inline constexpr int kExitUsage = 2;   // bad arguments or an error, reported on stderr

// Prints "korvalin: <message>" to stderr and returns kExitUsage.
int Fail(std::string_view message);

// Each subcommand gets the arguments after its own name.
int RunSettingsCommand(Args args);
int RunGeometryCommand(Args args);
int RunSubsCommand(Args args);
int RunTextImageCommand(Args args);
int RunRenderCommand(Args args);
int RunDemoCommand(Args args);
int RunGraphCommand(Args args);
int RunRegisterCommand(Args args);
int RunUnregisterCommand(Args args);

}  // namespace korvalin::cli
