// Test entry: every test process gets a private temporary directory as TMPDIR and HOME before
// the library computes its first path, so no test ever touches the real profile or /tmp.
#include <cstdlib>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "test_support.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  QTemporaryDir process_dir;
  if (!process_dir.isValid()) return 1;
  const std::string dir = process_dir.path().toStdString();
  cfgq_test::set_env("TMPDIR", dir);
  cfgq_test::set_env("HOME", dir);
  return RUN_ALL_TESTS();
}
