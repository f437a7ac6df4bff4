// Internals of the settings store shared by the library's sources.
#pragma once

#include "cfgq_location.h"
