// How the emulated volumes, and the session, of a Mac behave, for a test to change.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace vantory::darwin {

struct AuthorizationCalls;

struct Volume {
  bool clones = true;  // whether it shares blocks between files
  bool renamesExclusively = true;
  bool exchanges = true;
  bool locksFiles = true;                 // at the moment that they are made
  bool findsAnyForm = false;              // of a name: in other cases and normal forms, to look at and to open
  std::vector<std::string> flushes = {};  // "order", "drive" and "volume", as they came
  std::set<std::string> ports = {};       // who can be reached by messages
  const AuthorizationCalls* authorization = nullptr;
};

Volume& volume();

}  // namespace vantory::darwin
