// Configuration stand-in: KORVEL_CONFIG_ON holds the comma-separated names of the switches that
// are on. Read at every call.
#pragma once

#include <string>

bool cfg_is_on(const std::string& name);
