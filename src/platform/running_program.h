#pragma once
// Where the running program's own file is, so an installed program finds the
// files installed beside it however the install was moved.
#include <filesystem>

namespace mv {
// Empty when the system cannot tell.
std::filesystem::path runningProgramPath();
}
