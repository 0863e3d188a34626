// The system's service for administrator rights, as far as the program uses it. Declared here because no framework is
// linked: its library is loaded when a right is asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace vantory::darwin {

using AuthorizationStatus = std::int32_t;
using AuthorizationHandle = const struct OpaqueAuthorization*;
using AuthorizationFlags = std::uint32_t;

inline constexpr AuthorizationStatus kGranted = 0;
inline constexpr AuthorizationStatus kCancelled = -60006;
inline constexpr AuthorizationStatus kNobodyToAsk = -60007;

inline constexpr AuthorizationFlags kDefaults = 0;
inline constexpr AuthorizationFlags kInteractionAllowed = 1U << 0;
inline constexpr AuthorizationFlags kExtendRights = 1U << 1;
inline constexpr AuthorizationFlags kDestroyRights = 1U << 3;
inline constexpr AuthorizationFlags kPreAuthorize = 1U << 4;

struct AuthorizationItem {
  const char* name;
  std::size_t valueLength;
  void* value;
  AuthorizationFlags flags;
};

struct AuthorizationItems {
  std::uint32_t count;
  AuthorizationItem* items;
};

// Each with the meaning of the function behind "Authorization" of that name.
struct AuthorizationCalls {
  AuthorizationStatus (*create)(const AuthorizationItems* rights, const AuthorizationItems* environment,
                                AuthorizationFlags flags, AuthorizationHandle* made);
  AuthorizationStatus (*copyRights)(AuthorizationHandle authorization, const AuthorizationItems* rights,
                                    const AuthorizationItems* environment, AuthorizationFlags flags,
                                    AuthorizationItems** granted);
  AuthorizationStatus (*executeWithPrivileges)(AuthorizationHandle authorization, const char* tool,
                                               AuthorizationFlags options, char* const* arguments, FILE** stream);
  AuthorizationStatus (*copyPrivilegedReference)(AuthorizationHandle* handedDown, AuthorizationFlags flags);
  AuthorizationStatus (*free)(AuthorizationHandle authorization, AuthorizationFlags flags);
};

// Null where the system lacks any of them.
const AuthorizationCalls* authorizationCalls();

}  // namespace vantory::darwin
