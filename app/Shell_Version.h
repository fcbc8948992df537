// The version and build the About box and the start banner show; the build
// system passes them in.
#pragma once

#ifndef PELLUCIDA_VERSION
#define PELLUCIDA_VERSION "0.0"
#endif
#ifndef PELLUCIDA_BUILD
#define PELLUCIDA_BUILD "unknown"
#endif

inline constexpr const char* kPellucidaVersion = PELLUCIDA_VERSION;
inline constexpr const char* kPellucidaBuild = PELLUCIDA_BUILD;
