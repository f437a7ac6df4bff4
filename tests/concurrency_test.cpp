// Several processes writing the same settings file at once, as the suite's tools do.
#include <vector>

#include <QProcess>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include "test_support.h"

namespace {

class ConcurrentWritersTest : public cfgq_test::SettingsTest {
 protected:
  // Starts `writers` settings_writer processes at once in `mode` ("write" or "count"), each
  // with `count` steps on values of its own.
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

TEST_F(ConcurrentWritersTest, FourProcessesLoseNoneOfTwoThousandValues) {
  constexpr int writers = 4;
  constexpr int count = 500;
  run_writers("write", writers, count);

  QSettings file(profile_file(), QSettings::IniFormat);
  ASSERT_EQ(file.status(), QSettings::NoError);
  file.beginGroup(QStringLiteral("25.1_pro/General"));
  int lost = 0;
  for (int w = 0; w < writers; ++w) {
    for (int i = 0; i < count; ++i) {
      const QString key = QStringLiteral("P%1_%2").arg(w).arg(i);
      if (file.value(key).toString() != QStringLiteral("P%1:%2").arg(w).arg(i)) ++lost;
    }
  }
  EXPECT_EQ(lost, 0);
  EXPECT_EQ(file.childKeys().size(), writers * count);
  // Nothing of the writers' temporaries or locks stays behind.
  const QStringList leftovers =
      QDir(home()).entryList({QStringLiteral("korvel2.kreg.*")}, QDir::Files | QDir::System);
  EXPECT_TRUE(leftovers.isEmpty()) << leftovers.join(QLatin1Char(' ')).toStdString();
}

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
