// Several processes writing the same settings file at once, as the suite's tools do.
#include <vector>

#include <QProcess>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include "test_support.h"

namespace {

class ConcurrentWritersTest : public cfgq_test::SettingsTest {
 protected:
  // Starts `writers` settings_writer processes at once in `mode`, each with `count` steps on
  // values of its own. (Many short-lived writers of every kind: FileOwnerTest.)
  void run_writers(const char* mode, int writers, int count) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int w = 0; w < writers; ++w) {
      auto process = std::make_unique<QProcess>();
      process->setProcessChannelMode(QProcess::ForwardedChannels);
      process->start(
          QStringLiteral(CFGQ_SETTINGS_WRITER),
          {QString::fromUtf8(mode), QStringLiteral("P%1").arg(w), QString::number(count)});
      processes.push_back(std::move(process));
    }
    for (int w = 0; w < writers; ++w) {
      SCOPED_TRACE(w);
      QProcess& process = *processes[w];
      ASSERT_TRUE(process.waitForFinished(300'000));
      EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
      EXPECT_EQ(process.exitCode(), 0);
    }
  }
};

TEST_F(ConcurrentWritersTest, SameSizeUpdatesFromFourProcessesLoseNoStep) {
  // Every step leaves the file the same size, so Qt tells another process's write only by the
  // file's modification time; each writer checks before every step that its last one is there.
  constexpr int writers = 4;
  constexpr int steps = 100;
  run_writers("count", writers, steps);
  for (int w = 0; w < writers; ++w) {
    SCOPED_TRACE(w);
    EXPECT_EQ(raw_value(QStringLiteral("25.1_pro/General/P%1").arg(w)).toInt(), steps - 1);
  }
}

}  // namespace
