// Test entry: every test process gets a private temporary directory as TMPDIR and HOME before
// the library computes its first path, so no test ever touches the real profile or /tmp.
#include <cstdlib>

#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  QTemporaryDir process_dir;
  if (!process_dir.isValid()) return 1;
  const QByteArray dir = process_dir.path().toLocal8Bit();
  setenv("TMPDIR", dir.constData(), 1);
  setenv("HOME", dir.constData(), 1);
  return RUN_ALL_TESTS();
}
