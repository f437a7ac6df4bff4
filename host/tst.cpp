#include "tst.h"

#include <cstdlib>
#include <cstring>

bool tst_is_regtest_mode() {
  const char* value = std::getenv("KORVEL_REGTEST");
  return value != nullptr && std::strcmp(value, "1") == 0;
}
