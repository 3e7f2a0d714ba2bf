// Operating-system services shared by the subsystems: paths of the running
// program, files, processes. Nothing above this layer calls the system
// directly for these.
#pragma once
#include <string>

// Directory of the running program, ending in '/', or "" when unknown.
std::string pl_exedir();
