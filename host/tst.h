// Test-mode stand-in: a regression-test run has KORVEL_REGTEST set to "1". Read at every call.
#pragma once

bool tst_is_regtest_mode();
