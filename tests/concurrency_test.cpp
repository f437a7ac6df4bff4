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
  // Starts `writers` settings_writer processes at once, each writing `count` values of its own.
  void run_writers(int writers, int count) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int w = 0; w < writers; ++w) {
      auto process = std::make_unique<QProcess>();
      process->setProcessChannelMode(QProcess::ForwardedChannels);
      process->start(QStringLiteral(CFGQ_SETTINGS_WRITER),
                     {QStringLiteral("write"), QStringLiteral("P%1").arg(w), QString::number(count)});
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
  run_writers(writers, count);

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

}  // namespace
