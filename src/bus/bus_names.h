#pragma once

namespace korvalin::bus {

// The names of Korvalin's session-bus protocol, shared by the player side, the tools and the
// desktop program.
inline constexpr const char* kPlayerNamePrefix = "org.korvalin.Player.p";  // + process id
inline constexpr const char* kStreamRoot = "/org/korvalin/Stream";
inline constexpr const char* kStreamInterface = "org.korvalin.Stream1";
inline constexpr const char* kDesktopName = "org.korvalin.Desktop";
inline constexpr const char* kDesktopPath = "/org/korvalin/Desktop";
inline constexpr const char* kDesktopInterface = "org.korvalin.Desktop1";

inline constexpr const char* kErrorLoadFailed = "org.korvalin.Error.LoadFailed";
inline constexpr const char* kErrorBadPath = "org.korvalin.Error.BadPath";
inline constexpr const char* kErrorTooLong = "org.korvalin.Error.TooLong";
inline constexpr const char* kErrorBadSetting = "org.korvalin.Error.BadSetting";

}  // namespace korvalin::bus
