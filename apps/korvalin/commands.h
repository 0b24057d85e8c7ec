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

// Each command's lines of the general usage, which `korvalin COMMAND --help` also prints.
extern const std::string_view kSettingsUsage;
extern const std::string_view kGeometryUsage;
extern const std::string_view kSubsUsage;
extern const std::string_view kTextImageUsage;
extern const std::string_view kRenderUsage;
extern const std::string_view kGraphUsage;
extern const std::string_view kRegisterUsage;
extern const std::string_view kUnregisterUsage;
extern const std::string_view kDemoUsage;
extern const std::string_view kPlayUsage;

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
int RunPlayCommand(Args args);

}  // namespace korvalin::cli
