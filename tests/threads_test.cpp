// Views on several threads at once, each thread in a section of its own.
#include <string>
#include <thread>
#include <vector>

#include <QString>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

class ThreadsTest : public cfgq_test::SettingsTest {};

TEST_F(ThreadsTest, ViewsOnEightThreadsKeepTheirOwnSections) {
  constexpr int thread_count = 8;
  constexpr int rounds = 25;
  // The first view of the process comes before views on other threads.
  { const Key first(Key::NO_MAIN_KEY, nullptr, nullptr); }

  std::vector<int> failures(thread_count, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < thread_count; ++t) {
    threads.emplace_back([t, &failures] {
      const std::string section = "Thread_" + std::to_string(t);
      for (int round = 0; round < rounds; ++round) {
        {
          Key writer(section.c_str(), "25.1", nullptr);
          writer.set_value("Round", round);
          writer.set_value("Owner", t);
        }
        Key reader(section.c_str(), "25.1", nullptr);
        QVariant owner;
        if (reader.group() != QString::fromStdString("25.1_pro/" + section) ||
            !reader.get_value("Owner", &owner) || owner.toInt() != t ||
            reader.childKeys().size() != 2) {
          ++failures[t];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  for (int t = 0; t < thread_count; ++t) {
    SCOPED_TRACE(t);
    EXPECT_EQ(failures[t], 0);
    const QString section = QString("25.1_pro/Thread_%1/").arg(t);
    EXPECT_EQ(raw_value(section + "Round").toInt(), rounds - 1);
    EXPECT_EQ(raw_value(section + "Owner").toInt(), t);
  }
  const Key main_key(Key::NO_SUB_KEY, "25.1", nullptr);
  EXPECT_EQ(main_key.childGroups().size(), thread_count);
}

}  // namespace
