// Views on eight threads at once, reading and writing their own sections of one settings file,
// each through a view per operation as the suite's tools do. Run under ThreadSanitizer by
// `scripts/test.sh tsan` (label "threads").
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <QSettings>
#include <QString>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

constexpr int thread_count = 8;
constexpr int values_per_thread = 40;

QString section_of(int thread) { return QStringLiteral("Thread_section_%1").arg(thread); }
QString value_of(int thread, int i) { return QStringLiteral("t%1:v%2").arg(thread).arg(i); }

class SharedFileThreadsTest : public cfgq_test::SettingsTest {
 protected:
  // Every thread writes its values one view at a time, reading back through a new view each
  // time; a value not read back, or another thread's value in its section, counts as a fault.
  int run_threads() {
    // The first view of the process comes before views on other threads.
    { const Key first(Key::NO_MAIN_KEY, nullptr, nullptr); }
    std::atomic<int> faults{0};
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
      threads.emplace_back([t, &faults, &ready] {
        const QByteArray section = section_of(t).toUtf8();
        ready.fetch_add(1);
        while (ready.load() < thread_count) std::this_thread::yield();
        for (int i = 0; i < values_per_thread; ++i) {
          const QString name = QStringLiteral("Value_%1").arg(i);
          {
            Key writer(section.constData(), "25.1", nullptr);
            writer.set_value(name, value_of(t, i));
          }
          Key reader(section.constData(), "25.1", nullptr);
          QVariant read;
          if (!reader.get_value(name, &read) || read.toString() != value_of(t, i)) ++faults;
          if (reader.childKeys().size() != i + 1) ++faults;
          if (reader.group() != QStringLiteral("25.1_pro/") + section_of(t)) ++faults;
          if (i % 8 == 7) {
            // Now and then a look at the whole main key, as a settings dialog would take.
            const Key main_key(Key::NO_SUB_KEY, "25.1", nullptr);
            (void)main_key.allKeys();
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    return faults.load();
  }

  // Values missing from the file, or not as written, once every view is gone; a section other
  // than the threads' own counts too.
  int lost_values(const QString& path) const {
    QSettings file(path, QSettings::IniFormat);
    file.beginGroup(QStringLiteral("25.1_pro"));
    int lost = file.childGroups().size() == thread_count ? 0 : 1;
    file.endGroup();
    for (int t = 0; t < thread_count; ++t) {
      file.beginGroup(QStringLiteral("25.1_pro/") + section_of(t));
      for (int i = 0; i < values_per_thread; ++i) {
        if (file.value(QStringLiteral("Value_%1").arg(i)).toString() != value_of(t, i)) ++lost;
      }
      if (file.childKeys().size() != values_per_thread) ++lost;
      file.endGroup();
    }
    return lost;
  }
};

TEST_F(SharedFileThreadsTest, EightThreadsOnTheProfileFileLoseNothing) {
  EXPECT_EQ(run_threads(), 0);
  EXPECT_EQ(lost_values(profile_file()), 0);
}

TEST_F(SharedFileThreadsTest, EightThreadsOnTheTemporaryFileLoseNothing) {
  // Isolated runs share the process's temporary file, which every view checks before opening.
  const cfgq_test::EnvGuard regtest("KORVEL_REGTEST", "1");
  EXPECT_EQ(run_threads(), 0);
  const Key any(Key::NO_MAIN_KEY, nullptr, nullptr);
  EXPECT_EQ(lost_values(any.fileName()), 0);
}

}  // namespace
