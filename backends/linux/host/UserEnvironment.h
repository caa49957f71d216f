#pragma once

#include <string>
#include <vector>

namespace backends {

// The environment that the user's programs expect, as in "NAME=value". A bundle that carries its own libraries
// ("APPDIR") keeps the user's values beside its own, under the names with "_ORIG"; where it keeps none, what it has put
// into lists of folders is taken out again.
std::vector<std::string> environmentOfUser(char const* const* environment);

// Where a program is in the PATH of such an environment. Empty when it is nowhere; a name with a slash is a path.
std::string pathOfProgram(std::string const& name, std::vector<std::string> const& environment);

} // namespace backends
