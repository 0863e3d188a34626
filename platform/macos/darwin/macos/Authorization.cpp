// Finds the calls in the system's library.
#include "platform/macos/darwin/Authorization.h"

#include <dlfcn.h>

#include <optional>

namespace vantory::darwin {

namespace {

template <class Call>
bool find(void* library, const char* name, Call& call) {
  call = reinterpret_cast<Call>(dlsym(library, name));
  return call != nullptr;
}

std::optional<AuthorizationCalls> load() {
  void* const library = dlopen("/System/Library/Frameworks/Security.framework/Security", RTLD_LAZY | RTLD_LOCAL);
  AuthorizationCalls calls{};
  const bool isWhole = library && find(library, "AuthorizationCreate", calls.create) &&
                       find(library, "AuthorizationCopyRights", calls.copyRights) &&
                       find(library, "AuthorizationExecuteWithPrivileges", calls.executeWithPrivileges) &&
                       find(library, "AuthorizationCopyPrivilegedReference", calls.copyPrivilegedReference) &&
                       find(library, "AuthorizationFree", calls.free);
  return isWhole ? std::optional(calls) : std::nullopt;
}

}  // namespace

const AuthorizationCalls* authorizationCalls() {
  static const std::optional<AuthorizationCalls> found = load();
  return found ? &*found : nullptr;
}

}  // namespace vantory::darwin
