// Version stand-in: the running suite version and the installed versions.
//
// KORVEL_VERSION names the running version; KORVEL_VERSIONS lists the installed versions,
// ';'-separated, in migration preference order (set but empty: no versions). Both are read once
// per process; unset, they take the build's defaults.
#pragma once

#include <string>
#include <vector>

std::string ver_get_version();

const std::vector<std::string>& ver_get_all_versions();
